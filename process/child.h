// The only fork, execv, _exit and waitpid of the system. The ways of running a program on top of
// them are in netif/run_and_wait, firewall/iptables and process/runner.

#pragma once

#include <string_view>

#include <sys/types.h>

#include "lib/exit_status.h"

namespace zelta {

// What a child writes, and the status it ends with, when its program cannot be executed: with a
// line where the tool reports on the program, without one where only its output or its end counts.
struct child_ending {
    std::string_view line;
    int status;
};
inline constexpr child_ending exec_failed_aloud = {"child exit???\n", exit_failed};
inline constexpr child_ending exec_failed_silently = {"", 1};

// fork(2), after flushing standard output: lines appear once, and before those of the program.
pid_t child_fork();

// In the child: takes away what the child must not inherit from the tool (prepare_child) and
// executes the program at path, without a search, with a vector that ends in a null pointer.
// Returns only when the program could not be executed.
void child_exec(const char *path, const char *const argv[]);

// In the child: writes the line, unbuffered, and ends without exit handlers.
[[noreturn]] void child_end(const child_ending &ending);

// Starts the program in a child, which ends as given when the program cannot be executed. The
// child's process id, or -1 with errno when the fork failed.
pid_t child_start(const char *path, const char *const argv[], const child_ending &ending);

// Waits for this child, however long; never retried. True when it ended, with its raw wait status
// (wait(2), not an exit status); false when the wait failed, with errno saying why.
bool child_wait(pid_t pid, int *status);

} // namespace zelta
