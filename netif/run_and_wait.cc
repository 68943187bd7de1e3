#include "netif/run_and_wait.h"

#include <cstdio>

#include "lib/exit_status.h"
#include "process/child.h"

namespace zelta {

run_result run_and_wait(const char *path, const char *const argv[]) {
    pid_t pid = child_start(path, argv, exec_failed_aloud);
    if (pid < 0) {
        puts("fork fail");
        return {.ran = false, .status = exit_failed};
    }
    int status;
    if (!child_wait(pid, &status)) {
        puts("parent exit");
        return {.ran = false, .status = exit_failed};
    }
    return {.ran = true, .status = status};
}

unsigned run_for_status(const char *path, const char *const argv[]) {
    return static_cast<unsigned>(run_and_wait(path, argv).status);
}

} // namespace zelta
