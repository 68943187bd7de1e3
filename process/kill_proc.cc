#include "process/kill_proc.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>

#include <unistd.h>

#include "lib/exit_status.h"
#include "lib/mstr.h"
#include "lib/strtol.h"
#include "process/privilege.h"
#include "process/runner.h"

namespace zelta {

namespace {

constexpr uint32_t line_room = 256;

// Interrupts the process of one line, whose first field is its id. A number that is no process id
// is passed over: 0 and negative ones would reach groups, larger ones be cut to somebody else's.
void interrupt_process(mstr *line, mstr *id, pid_t self) {
    mstr_strip(line, true, false);
    if (mstr_partition_cstr(id, line, " ") != 1)
        return;
    long number = any_strtol(mstr_get(id), nullptr, 10);
    if (number <= 0 || number == LONG_MAX || number > INT_MAX || number == self)
        return;
    pid_t pid = static_cast<pid_t>(number);
    if (kill(pid, SIGINT) != 0)
        printf("Could not kill process - %d because of %s\n", pid, strerror(errno));
}

} // namespace

int kill_proc(const char *name) {
    become_root();
    FILE *list = zelta_popen("/bin/ps", "ps", nullptr);
    if (list == nullptr)
        return exit_failed;
    char line_data[mstr_storage(line_room)], id_data[mstr_storage(line_room)];
    mstr line = mstr_guarded(line_data, line_room), id = mstr_guarded(id_data, line_room);
    const pid_t self = getpid();
    while (mstr_getline(&line, list) == 0)
        if (mstr_find_cstr(&line, 0, name) >= 0)
            interrupt_process(&line, &id, self);
    zelta_pclose(list);
    return exit_ok;
}

} // namespace zelta
