// Files that several operations on links share.

#pragma once

// Joined to literals, which only a macro can be.
#define SETTINGS_DIR "/home/main-user/.ip_config/"

namespace zelta {

inline constexpr char wlan_config[] = SETTINGS_DIR "wlan-config"; // the supplicant's own format
inline constexpr char gprs_config[] = SETTINGS_DIR "gprs-config";

// A daemon counts as running while its file is readable by the real ids of that moment (access(2)).
inline constexpr char dhclient_pid[] = "/var/run/dhclient.pid";
inline constexpr char ppp0_pid[] = "/var/run/ppp0.pid";
inline constexpr char supplicant_socket[] = "/var/run/wpa_supplicant/wlan0";

} // namespace zelta
