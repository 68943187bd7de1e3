#include "process/child.h"

#include <cstdio>

#include <sys/wait.h>
#include <unistd.h>

#include "process/inherited.h"

namespace zelta {

pid_t child_fork() {
    fflush(stdout);
    return fork();
}

void child_exec(const char *path, const char *const argv[]) {
    prepare_child();
    execv(path, const_cast<char *const *>(argv));
    // The child still has a line to write: a closed pipe must not change its exit status.
    ignore_broken_pipe();
}

void child_end(const child_ending &ending) {
    const std::string_view line = ending.line;
    [[maybe_unused]] ssize_t n = line.empty() ? 0 : write(STDOUT_FILENO, line.data(), line.size());
    _exit(ending.status);
}

pid_t child_start(const char *path, const char *const argv[], const child_ending &ending) {
    pid_t pid = child_fork();
    if (pid == 0) {
        child_exec(path, argv);
        child_end(ending);
    }
    return pid;
}

bool child_wait(pid_t pid, int *status) {
    return waitpid(pid, status, 0) == pid;
}

} // namespace zelta
