// Files written for the programs that are run.

#pragma once

#include <cstdio>

#include <sys/types.h>

namespace zelta {

// Creates or empties a file for writing. No program inherits it, and it is unbuffered, so that on a
// full disk each write says what became of it. Null when it cannot be opened, with errno. mode is
// that of a new file, less the umask. With a mode that gives others nothing (0600), the file, new
// or not, belongs to root and is closed to everybody else before its first byte is written; one
// that cannot be made so is not opened.
FILE *open_output_file(const char *path, mode_t mode);

} // namespace zelta
