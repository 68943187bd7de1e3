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
    ignore_broken_pipe(); // what is left to say and the exit status need no reader
}

void child_end(std::string_view text, int status) {
    [[maybe_unused]] ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    _exit(status);
}

bool child_wait(pid_t pid, int *status) {
    return waitpid(pid, status, 0) == pid;
}

} // namespace zelta
