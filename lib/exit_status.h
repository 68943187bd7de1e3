// The exit statuses of the tool; the results of most operations are the same numbers. The firewall
// commands end with the exit code of the packet filter program, or the signal that ended it.

#pragma once

namespace zelta {

inline constexpr int exit_ok = 0;
inline constexpr int exit_invalid = 1; // parameters, settings, a name, usage text; see each command
inline constexpr int exit_no_file = 2; // a file of settings, options or secrets cannot be opened
inline constexpr int exit_denied = 3;  // the caller may not use the tool
inline constexpr int exit_failed = 4;  // a system operation failed

} // namespace zelta
