#include "settings/ip_settings.h"

#include <cstdio>
#include <cstring>
#include <iterator>
#include <span>

#include "lib/exit_status.h"

namespace zelta {

ip_settings in_config;

namespace {

// A key, the field that it fills, and the line printed when it is missing; null: optional.
struct setting {
    const char *key;
    const char *ip_settings::*field;
    const char *complaint;
};

constexpr setting manual_settings[] = {
    {"address", &ip_settings::address, "No IP address specified"},
    {"netmask", &ip_settings::netmask, "No IP netmask specified"},
    {"gateway", &ip_settings::gateway, "No IP gateway specified"},
    {"dns", &ip_settings::dns, nullptr},
    {"routes", &ip_settings::routes, "No IP routes specified"},
};

constexpr setting modem_settings[] = {
    {"device", &ip_settings::device, "No serial device specified"},
    {"user", &ip_settings::user, nullptr},
    {"password", &ip_settings::password, nullptr},
};

constexpr setting script_settings[] = {
    {"connect", &ip_settings::connect, "No connect chat script specified"},
    {"disconnect", &ip_settings::disconnect, "No disconnect chat script specified"},
};

// By secrets_kind.
constexpr const char *secrets_types[] = {"pap", "chap", "srp"};
static_assert(std::size(secrets_types) == secrets_kinds);

int store_settings(const config_table &table, std::span<const setting> settings) {
    for (const setting &each : settings) {
        const char *value = config_lookup(table, each.key);
        in_config.*each.field = value;
        if (value == nullptr && each.complaint != nullptr) {
            puts(each.complaint);
            return exit_invalid;
        }
    }
    return exit_ok;
}

int store_secrets_type(const char *name) {
    for (int type = 0; name != nullptr && type < secrets_kinds; type++) {
        if (strcmp(name, secrets_types[type]) == 0) {
            in_config.secrets_type = type;
            return exit_ok;
        }
    }
    printf("Unrecognised secrets file type (%s)\n", name != nullptr ? name : "(null)");
    return exit_invalid;
}

} // namespace

int val_ip_config_file(const config_table &table) {
    const char *mode = config_lookup(table, "config");
    if (mode == nullptr)
        return exit_invalid;
    if (strcmp(mode, "auto") == 0) {
        in_config.ip_mode = ip_mode_auto;
        return exit_ok;
    }
    if (strcmp(mode, "manual") != 0 || store_settings(table, manual_settings) != exit_ok)
        return exit_invalid;
    if (strcmp(in_config.routes, "default") != 0) {
        puts("Default route not specified");
        return exit_invalid;
    }
    in_config.ip_mode = ip_mode_manual;
    return exit_ok;
}

int val_gprs_config_file(const config_table &table) {
    if (store_settings(table, modem_settings) != exit_ok ||
        store_secrets_type(config_lookup(table, "secrets-file")) != exit_ok)
        return exit_invalid;
    return store_settings(table, script_settings);
}

} // namespace zelta
