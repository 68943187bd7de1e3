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

constexpr cmd_entry cmds[cmd_count] = {
    {.name = "--domainname",
     .min_argc = 2,
     .max_argc = 3,
     .help = "<domain name>",
     .handler = domainname},
    {.name = "--hostname",
     .min_argc = 2,
     .max_argc = 3,
     .help = "<host name>",
     .handler = hostname},
    {.name = "--start-gprs-if",
     .min_argc = 3,
     .max_argc = 3,
     .help = settings_help,
     .handler = start_gprs_if},
    {.name = "--start-wifi-if",
     .min_argc = 3,
     .max_argc = 3,
     .help = settings_help,
     .handler = start_wifi_if},
    {.name = "--start-bluetooth-pan-if",
     .min_argc = 3,
     .max_argc = 3,
     .help = settings_help,
     .handler = start_bluetooth_pan_if},
    {.name = "--start-usb-eth-if",
     .min_argc = 3,
     .max_argc = 3,
     .help = settings_help,
     .handler = start_usb_eth_if},
    {.name = "--stop-gprs-if",
     .min_argc = 3,
     .max_argc = 3,
     .help = settings_help,
     .handler = stop_gprs_if},
    {.name = "--stop-wifi-if",
     .min_argc = 3,
     .max_argc = 3,
     .help = settings_help,
     .handler = stop_wifi_if},
    {.name = "--stop-bluetooth-pan-if",
     .min_argc = 3,
     .max_argc = 3,
     .help = settings_help,
     .handler = stop_bluetooth_pan_if},
    {.name = "--stop-usb-eth-if",
     .min_argc = 3,
     .max_argc = 3,
     .help = settings_help,
     .handler = stop_usb_eth_if},
    {.name = "--wifi-scan", .min_argc = 2, .max_argc = 2, .help = "", .handler = wifi_scan},
    {.name = "--restart-dhclient",
     .min_argc = 2,
     .max_argc = 2,
     .help = "",
     .handler = restart_dhclient},
    {.name = "--restart-wpa-supplicant",
     .min_argc = 2,
     .max_argc = 2,
     .help = "",
     .handler = restart_wpa_supplicant},
    {.name = "--open-port", .min_argc = 5, .max_argc = 6, .help = port_help, .handler = open_port},
    {.name = "--close-port",
     .min_argc = 5,
     .max_argc = 6,
     .help = port_help,
     .handler = close_port},
    {.name = "--open-ping", .min_argc = 3, .max_argc = 4, .help = ping_help, .handler = open_ping},
    {.name = "--close-ping",
     .min_argc = 3,
     .max_argc = 4,
     .help = ping_help,
     .handler = close_ping},
};

namespace {

// Dispatch takes the first row that fits, and a wrong count ends in the usage text, because no
// option word stands twice.
constexpr bool names_distinct() {
    for (int i = 0; i < cmd_count; i++)
        for (int j = 0; j < i; j++)
            if (std::string_view(cmds[i].name) == cmds[j].name)
                return false;
    return true;
}
static_assert(names_distinct());

} // namespace

} // namespace zelta
