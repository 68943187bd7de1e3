// Settings files: lines of key=value, read into a fixed table of pairs. settings/ip_settings knows
// what the keys mean. A line is split at its first "=". Nothing is trimmed, there are no comments,
// and a last line that lacks its line end is not read.

#pragma once

#include <cstddef>

namespace zelta {

inline constexpr size_t config_pairs = 20;

// The strings are copies that live until the process ends.
struct config_pair {
    char *key;
    char *value;
};

// A null key follows the last entry, unless the table is full.
using config_table = config_pair[config_pairs];

extern config_table ip_config; // the IP settings file that the user names
extern config_table if_config; // the link's own fixed file

// Reads the file into the table: exit_ok. Reading ends at the end of the file, when the table is
// full, and at a line that cannot be read or stored; none of these is an error. exit_no_file, after
// perror, when the file cannot be opened; then the table is as it was.
int parse_config_file(const char *path, config_table &table);

// The value of the first entry with this key, not a copy; null for none.
const char *config_lookup(const config_table &table, const char *key);

} // namespace zelta
