// Reading and validating the IP settings file of a link: starts and stops share it.

#pragma once

namespace zelta {

// Reads the file of this name in the settings directory and validates it into in_config. The name
// is used unchanged, "/" and ".." included. own_file, if not null, must exist before anything is
// read. parse_line announces the reading. exit_ok; exit_no_file for a file that is missing or
// cannot be opened; exit_invalid; exit_failed without memory for the path. Each fault but the last
// prints its message.
int load_settings(const char *name, const char *own_file, const char *parse_line);

} // namespace zelta
