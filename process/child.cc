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
    restore_signals();
    execv(path, const_cast<char *const *>(argv));
}

void child_end(std::string_view text, int status) {
    // Whoever reads standard output may be gone; the status tells all the same.
    [[maybe_unused]] ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    _exit(status);
}

bool child_wait(pid_t pid, int *status) {
    return waitpid(pid, status, 0) == pid;
}

} // namespace zelta
