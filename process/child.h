// The only fork, execv, _exit and waitpid of the system. Four steps without modes; the ways of
// running a program that stand above them (netif/run_and_wait, firewall/iptables, process/runner)
// each state what they print and return.

#pragma once

#include <string_view>

#include <sys/types.h>

namespace zelta {

// What a child says, and the status it ends with, when its program cannot be executed: audible
// where the tool reports on the program, silent where only its output or its end counts.
inline constexpr std::string_view exec_failed_line = "child exit???\n";
inline constexpr int exec_failed_silently = 1;

// fork(2), after flushing standard output: lines appear once, and before those of the program.
pid_t child_fork();

// In the child: gives back the signal dispositions that the tool changed for itself and executes
// the program at path, without a search, with a vector that ends in a null pointer. Returns only
// when that failed; a reader that has gone away still cannot end the child with another status.
void child_exec(const char *path, const char *const argv[]);

// In the child: writes the text to standard output, unbuffered, and ends without exit handlers.
[[noreturn]] void child_end(std::string_view text, int status);

// Waits for this child, however long; never retried. True when it ended, with its raw wait status
// (wait(2), not an exit status); false when the wait failed, with errno saying why.
bool child_wait(pid_t pid, int *status);

} // namespace zelta
