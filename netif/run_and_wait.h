// The way in which operations on links run a program: to its end, with its raw wait status.

#pragma once

namespace zelta {

// A program killed by signal 4 has the raw status 4, the number that also says that no program was
// run; ran tells the two apart.
struct run_result {
    bool ran;   // a child was created, and waited for to its end
    int status; // its raw wait status (wait(2)), not an exit status; exit_failed when ran is false
};

// Runs the program at path with a vector that ends in a null pointer, and prints nothing. When no
// child can be created it prints "fork fail", and when the child cannot be waited for "parent
// exit". A child that cannot execute the program prints "child exit???" and ends with exit_failed.
// The caller has become root before.
run_result run_and_wait(const char *path, const char *const argv[]);

// The same for operations that promise one number: 0 for success, exit_failed, or the raw status.
unsigned run_for_status(const char *path, const char *const argv[]);

} // namespace zelta
