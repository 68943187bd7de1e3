#include "app/commands.h"

#include <string_view>

#include "app/names.h"
#include "firewall/ports.h"
#include "netif/bring_up.h"
#include "netif/dhclient.h"
#include "netif/tear_down.h"
#include "netif/wpa_supplicant.h"
#include "wifi/scan.h"

namespace zelta {

namespace {

constexpr char settings_help[] = "<config file>";
constexpr char port_help[] = "<tcp|udp> <port> <in|out> [<addr range>]";
constexpr char ping_help[] = "<in|out> [<addr range>]";

} // namespace

// name, hidden, min_argc, max_argc, help, handler
// clang-format off
constexpr cmd_entry cmds[cmd_count] = {
    {"--domainname", 0, 2, 3, "<domain name>", domainname},
    {"--hostname", 0, 2, 3, "<host name>", hostname},
    {"--start-gprs-if", 0, 3, 3, settings_help, start_gprs_if},
    {"--start-wifi-if", 0, 3, 3, settings_help, start_wifi_if},
    {"--start-bluetooth-pan-if", 0, 3, 3, settings_help, start_bluetooth_pan_if},
    {"--start-usb-eth-if", 0, 3, 3, settings_help, start_usb_eth_if},
    {"--stop-gprs-if", 0, 3, 3, settings_help, stop_gprs_if},
    {"--stop-wifi-if", 0, 3, 3, settings_help, stop_wifi_if},
    {"--stop-bluetooth-pan-if", 0, 3, 3, settings_help, stop_bluetooth_pan_if},
    {"--stop-usb-eth-if", 0, 3, 3, settings_help, stop_usb_eth_if},
    {"--wifi-scan", 0, 2, 2, "", wifi_scan},
    {"--restart-dhclient", 0, 2, 2, "", restart_dhclient},
    {"--restart-wpa-supplicant", 0, 2, 2, "", restart_wpa_supplicant},
    {"--open-port", 0, 5, 6, port_help, open_port},
    {"--close-port", 0, 5, 6, port_help, close_port},
    {"--open-ping", 0, 3, 4, ping_help, open_ping},
    {"--close-ping", 0, 3, 4, ping_help, close_ping},
};
// clang-format on

// Dispatch takes the first row that fits, and a wrong count ends in the usage text, because no
// option word stands twice.
static_assert([] {
    for (const cmd_entry &row : cmds)
        for (const cmd_entry *earlier = cmds; earlier != &row; earlier++)
            if (std::string_view(row.name) == earlier->name)
                return false;
    return true;
}());

} // namespace zelta
