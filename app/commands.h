// The command table: what the user can ask for, and who does it.

#pragma once

namespace zelta {

struct cmd_entry {
    const char *name; // the option word, compared exactly
    int hidden;       // not 0: served but not listed
    int min_argc;     // argument counts include program name and option word
    int max_argc;
    const char *help;                       // the parameters, as the usage text shows them
    int (*handler)(int argc, char *argv[]); // its result is the exit status
};

inline constexpr int cmd_count = 17;

// In the order of the usage text.
extern const cmd_entry cmds[cmd_count];

} // namespace zelta
