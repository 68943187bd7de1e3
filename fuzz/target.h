// What every fuzz target has, and what surrounds the product in it: the linker sends its calls of fork,
// execv, waitpid, fdopen, kill, getpid, access, setuid and setgid to target.cc, so that a target starts
// no program, signals no process and stays who it is. libFuzzer makes up the inputs, or replay.cc takes
// them from files.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/types.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace zelta::fuzz {

// Takes one input; each target has its own.
void take(std::string_view input);

struct surroundings {
    std::string_view listing = {};                     // what a program prints that zelta_popen starts
    bool reading_fails = false;                        // behind the listing, in place of its end
    bool files_there = false;                          // what access tells of every file
    std::vector<std::pair<pid_t, int>> signalled = {}; // process and signal; kill fails for odd ids
};

extern surroundings around; // fresh for each input

inline constexpr pid_t own_pid = 1234;

// The result of the action, and what it prints on standard output.
std::pair<int, std::string> run(const std::function<int()> &action);

// What a function for NUL-terminated text sees of these bytes.
std::string up_to_nul(std::string_view bytes);

// Ends the target, with the words that say what is wrong, unless the condition holds.
void require(bool holds, std::string_view wrong);

} // namespace zelta::fuzz
