// What a caller hands down to a set-user-ID root program, and through it to the programs that it
// runs as root: environment, descriptors, signals, limits, groups, directory, umask. After
// setuid(0) neither the loader nor those programs see a reason for distrust, so it has to happen
// here. None of it changes a message, an argument vector or an exit status, and no failure of it is
// a reason to refuse service. In main the steps stand in this order, the access check before
// distrust_caller.

#pragma once

namespace zelta {

// Opens /dev/null on each of the descriptors 0, 1 and 2 that is closed, so that no file opened
// later becomes standard output.
void keep_standard_descriptors();

// A reader of our output that goes away never stops a command half way.
void ignore_broken_pipe();

// For a caller other than root: sane limits, no further descriptors, default signals, umask 022,
// the root directory, no supplementary groups, and an environment of PATH alone. From here on the
// signals by which a terminal or an alarm could end the tool half way are ignored.
void distrust_caller();

// In a child, before its program is executed: the dispositions that the tool changed for itself.
void restore_signals();

} // namespace zelta
