// Paths that more than one file uses.

#pragma once

// Joined to literals, which only a macro can be.
#define SETTINGS_DIR "/home/main-user/.ip_config/"

namespace zelta {

// The DHCP client counts as running while this is readable for the real ids (access(2)), which are
// the caller's until become_root.
inline constexpr char dhclient_pid[] = "/var/run/dhclient.pid";

} // namespace zelta
