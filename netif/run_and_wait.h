// The way in which operations on links run a program: to its end, with its raw wait status.

#pragma once

namespace zelta {

// A program killed by signal 4 has the raw status 4, which is also the number for a program that
// could not be run; who has to tell the two apart looks at ran.
struct run_result {
    bool ran;   // the program's end was waited for
    int status; // its raw wait status (wait(2)), no exit status; exit_failed when it did not run
};

// Runs the program at path with a vector that ends in a null pointer. Nothing is printed when it
// ran. "fork fail" or "parent exit" say why not; a program that cannot be executed says "child
// exit???" and ends with exit_failed. The caller has become root before.
run_result run_and_wait(const char *path, const char *const argv[]);

// The same for operations that promise one number: 0 for success, exit_failed, or the raw status.
unsigned run_for_status(const char *path, const char *const argv[]);

} // namespace zelta
