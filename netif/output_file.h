// Files written for the programs that are run.

#pragma once

#include <cstdio>

namespace zelta {

// Creates or empties a file for writing. No child inherits it, and it is unbuffered, so that on a
// full disk each write says what became of it. Null when it cannot be opened, with errno. With
// secret, nobody but its owner may read it: it is made so, and an existing file loses the group's
// and the others' rights, before its first byte is written.
FILE *open_output_file(const char *path, bool secret);

} // namespace zelta
