// Reading and validating the IP settings file of a link: starts and stops share it.

#pragma once

namespace zelta {

// Reads the file of this name in the settings directory and validates it into in_config. The name
// is used unchanged; one with a "/" can name any file, and is looked at and opened with the rights
// of the real user id, without its supplementary groups. own_file, if not null, must exist before
// anything is read. parse_line announces the reading. exit_ok; exit_no_file for a file that is
// missing or cannot be opened, after its message; exit_invalid as val_ip_config_file gives it;
// exit_failed, silent, without memory for the path.
int load_settings(const char *name, const char *own_file, const char *parse_line);

} // namespace zelta
