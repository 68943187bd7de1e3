// What surrounds the product in the fuzz targets. The linker sends its calls of fork, execv,
// waitpid, fdopen, kill, getpid, access, setuid and setgid here, so that a target starts no
// program, signals no process and stays who it is.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace zelta::fuzz {

struct signalled_process {
    pid_t pid;
    int signal;
    friend bool operator==(const signalled_process &, const signalled_process &) = default;
};

struct surroundings {
    std::string_view listing;                      // what a program prints that zelta_popen starts
    bool reading_fails = false;                    // behind the listing, in place of its end
    bool files_there = false;                      // what access tells of every file
    std::vector<signalled_process> signalled = {}; // by kill, which fails for odd process ids
};

extern surroundings around;

inline constexpr pid_t own_pid = 1234;

// What the action prints on standard output.
std::string printed(const std::function<void()> &action);

// The argument vector, without its end, that the action passes to execv in the child that it forks;
// nothing when it does not get as far as that. The action does not return from execv, so that what
// it owns is lost.
std::optional<std::vector<const char *>> executed(const std::function<void()> &action);

} // namespace zelta::fuzz
