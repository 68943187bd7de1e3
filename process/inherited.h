// What a caller hands down to a set-user-ID root program, and through it to the programs that it
// runs as root: environment, descriptors, signals, terminal, limits, priorities, groups, directory,
// umask. After setuid(0) neither the loader nor those programs see a reason for distrust, so it has
// to happen here. None of it changes a message, an argument vector or an exit status, and no
// failure of it is a reason to refuse service. In main the steps stand in this order, the access
// check before distrust_caller.

#pragma once

namespace zelta {

// Opens /dev/null on each of the descriptors 0, 1 and 2 that is closed, so that no file opened
// later becomes standard output.
void keep_standard_descriptors();

// A reader of our output that goes away never stops a command half way.
void ignore_broken_pipe();

// Writing to a terminal that stops background writers (stty tostop) does not stop the tool.
void ignore_terminal_stop();

// For a caller other than root: the limits and priorities of a fresh login, /dev/null as standard
// input, no descriptors but the standard ones, default signals, umask 022, the root directory, no
// supplementary groups, and an environment of PATH alone. From here on the tool ignores the signals
// by which a terminal or an alarm could end or stop it half way.
void distrust_caller();

// In a child, before its program is executed: a session of its own after distrust_caller, so that
// the keys of the caller's terminal do not reach the program, and default dispositions for the
// signals that the tool alone ignores.
void prepare_child();

} // namespace zelta
