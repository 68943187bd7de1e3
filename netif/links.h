// The four links as four rows. They differ in data; what a row cannot say is decided by its daemon.

#pragma once

#include <iterator>
#include <string_view>

#include "netif/paths.h"

namespace zelta {

enum class link_daemon { none, supplicant, pppd };

struct net_link {
    const char *interface;
    const char *parse_line; // announces the reading of the IP settings file
    const char *own_file;   // the link's own settings file, or null
    const char *own_parse_line;
    link_daemon daemon;        // what must run before the link carries IP traffic
    const char *route_failure; // the line for a route that cannot be deleted
};

// Rows of net_links, and the indexes that release_ip takes.
enum link_index : unsigned { link_ppp0, link_wlan0, link_bnep0, link_usb0, link_count };

inline constexpr net_link net_links[] = {
    {"ppp0", "Parsing IP config file", SETTINGS_DIR "gprs-config", "Parsing GPRS config file",
     link_daemon::pppd, "Failed to disable default gateway for ppp0 interface."},
    {"wlan0", "Parsing WLAN IP config file", SETTINGS_DIR "wlan-config", "Parsing WLAN config file",
     link_daemon::supplicant, "Failed to disable default gateway for wlan0 interface."},
    {"bnep0", "Parsing IP config file", nullptr, nullptr, link_daemon::none,
     "Failed to disable default gateway for bnep0 interface."},
    {"usb0", "Parsing IP config file", nullptr, nullptr, link_daemon::none,
     "Failed to disable default gateway for usb0 interface."},
};
static_assert(std::size(net_links) == link_count);
static_assert(std::string_view(net_links[link_ppp0].interface) == "ppp0");
static_assert(std::string_view(net_links[link_wlan0].interface) == "wlan0");
static_assert(std::string_view(net_links[link_bnep0].interface) == "bnep0");
static_assert(std::string_view(net_links[link_usb0].interface) == "usb0");

// The row of an interface name, or null.
const net_link *find_link(const char *interface);

} // namespace zelta
