// The one record of validated settings, and the two validations that fill it.

#pragma once

#include "settings/config_file.h"

namespace zelta {

inline constexpr int ip_mode_auto = 1;   // address by DHCP
inline constexpr int ip_mode_manual = 2; // address, netmask and gateway from the file

enum secrets_kind { secrets_pap, secrets_chap, secrets_srp };
inline constexpr int secrets_kinds = secrets_srp + 1;

// Texts belong to the table that they came from; a missing key leaves null. Values are not tested
// for their form.
struct ip_settings {
    int ip_mode; // 0 until a validation succeeded
    const char *address;
    const char *netmask;
    const char *gateway; // of the default route
    const char *routes;  // "default"
    const char *dns;     // optional
    const char *device;  // the modem's serial device
    const char *user;    // optional
    const char *password;
    int secrets_type;    // secrets_kind: which secrets file the password goes to
    const char *connect; // chat scripts, files of the settings directory
    const char *disconnect;
};

extern ip_settings in_config;

// Both store what is there in in_config and return exit_ok, or exit_invalid at the first fault,
// after its line on standard output; a mode that is missing or unknown has none. Fields stored
// before a fault keep what they got; ip_mode changes on success alone.
int val_ip_config_file(const config_table &table);
int val_gprs_config_file(const config_table &table);

} // namespace zelta
