// Settings files: lines of key=value, read into a fixed table of pairs. What the keys mean is
// settings/ip_settings' business. A line is split at its first "=", nothing is trimmed, there are
// no comments, and a last line without its newline is no entry.

#pragma once

#include <cstddef>

namespace zelta {

inline constexpr size_t config_pairs = 20;

// The strings are copies that live until the process ends.
struct config_pair {
    char *key;
    char *value;
};

// A null key ends the entries; a table that is full has no such end.
using config_table = config_pair[config_pairs];

extern config_table ip_config; // the IP settings file that the user names
extern config_table if_config; // the link's own fixed file

// Reads the file into the table: exit_ok, also when a line could not be stored, which ends reading
// as the end of the file does; exit_no_file, after perror, when the file cannot be opened, and the
// table is as it was.
int parse_config_file(const char *path, config_table &table);

// The value of the first entry with this key, not a copy; null for none.
const char *config_lookup(const config_table &table, const char *key);

} // namespace zelta
