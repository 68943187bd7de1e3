// The one record of validated settings, and the two validations that fill it.

#pragma once

#include "settings/config_file.h"

namespace zelta {

inline constexpr int ip_mode_auto = 1;   // address by DHCP
inline constexpr int ip_mode_manual = 2; // address, netmask and gateway from the file

enum secrets_kind { secrets_pap, secrets_chap, secrets_srp };
inline constexpr int secrets_kinds = secrets_srp + 1;

// The texts belong to the table that they came from. A field is null when its key is missing. The
// form of the values (of an address, for example) is not tested.
struct ip_settings {
    int ip_mode; // 0 until a validation succeeded
    const char *address;
    const char *netmask;
    const char *gateway;  // of the default route
    const char *routes;   // "default"
    const char *dns;      // optional
    const char *device;   // the modem's serial device
    const char *user;     // optional
    const char *password; // optional
    int secrets_type;     // secrets_kind: which secrets file the password goes to
    const char *connect;  // chat scripts, files of the settings directory
    const char *disconnect;
};

extern ip_settings in_config;

// Both store the values of the table in in_config and return exit_ok. At the first fault they print
// its line on standard output and return exit_invalid; for a mode that is missing or unknown they
// print nothing. Fields stored before the fault keep their values. ip_mode changes on success only.
int val_ip_config_file(const config_table &table);
int val_gprs_config_file(const config_table &table);

} // namespace zelta
