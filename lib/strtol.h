// strtol by the name that every version of the C library has. The headers of glibc 2.38 and later call
// it by another one, with which the program would not start beside an earlier version.

#pragma once

extern "C" long any_strtol(const char *text, char **end, int base) noexcept __asm__("strtol");
