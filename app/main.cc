// One run serves one command: banner, access check, dispatch. What stands before the access check
// is reached by every user of the device, as root.

#include <cstdio>
#include <cstring>

#include <unistd.h>

#include "app/commands.h"
#include "lib/exit_status.h"
#include "process/inherited.h"

namespace zelta {

namespace {

constexpr uid_t root = 0;
constexpr uid_t device_user = 500;

int show_usage(const char *program) {
    printf("\nUsage: %s <option> <parameters>\n", program != nullptr ? program : "");
    puts("Where:");
    puts("    <option>                 <parameters>");
    for (const cmd_entry &cmd : cmds)
        if (cmd.hidden == 0)
            printf("    %-21s    %s\n", cmd.name, cmd.help);
    return exit_invalid;
}

int dispatch(int argc, char *argv[]) {
    if (argc > 1)
        for (const cmd_entry &cmd : cmds)
            if (strcmp(cmd.name, argv[1]) == 0 && cmd.min_argc <= argc && argc <= cmd.max_argc)
                return cmd.handler(argc, argv);
    return show_usage(argv[0]);
}

int serve(int argc, char *argv[]) {
    keep_standard_descriptors();
    ignore_broken_pipe();
    uid_t caller = getuid();
    if (caller != root)
        ignore_terminal_stop();
    puts("\nZelta IP Tool");
    if (caller != root && caller != device_user) {
        puts("Access denied.");
        return exit_denied;
    }
    if (caller != root)
        distrust_caller();
    return dispatch(argc, argv);
}

} // namespace

} // namespace zelta

int main(int argc, char *argv[]) {
    return zelta::serve(argc, argv);
}
