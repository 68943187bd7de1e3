#include "netif/tear_down.h"

#include <cstdio>

#include "firewall/iptables.h"
#include "lib/exit_status.h"
#include "netif/address.h"
#include "netif/dhclient.h"
#include "netif/links.h"
#include "netif/load_settings.h"
#include "netif/net_init.h"
#include "netif/pppd.h"
#include "netif/wpa_supplicant.h"
#include "settings/ip_settings.h"

namespace zelta {

namespace {

// Notes a step that failed, and says so.
void note_failure(bool failed, const char *line, int *result) {
    if (!failed)
        return;
    puts(line);
    *result = exit_failed;
}

void stop_daemon(const net_link &link, int *result) {
    switch (link.daemon) {
    case link_daemon::none:
        return;
    case link_daemon::supplicant:
        return note_failure(stop_wpa_supplicant() != 0, "Failed to stop WPA supplicant.", result);
    case link_daemon::pppd:
        return note_failure(stop_pppd() != 0, "Failed to stop PPP daemon.", result);
    }
}

// Undoes what bring-up did for the mode. stop_dhclient prints its own message when it fails.
void clear_mode(const net_link &link, int *result) {
    if (in_config.ip_mode == ip_mode_auto) {
        puts("Clearing Auto IP config setting");
        note_failure(exec_dhclient("-r") != 0, "Failed to release dhclient.", result);
        stop_dhclient();
    } else if (in_config.ip_mode == ip_mode_manual) {
        puts("Clearing Manual IP config");
        note_failure(exec_route(link.interface, "del") != 0, link.route_failure, result);
    }
}

int tear_down(link_index index, const char *settings_name) {
    const net_link &link = net_links[index];
    int result = load_settings(settings_name, nullptr, link.parse_line);
    if (result != exit_ok)
        return result;
    const bool by_pppd = link.daemon == link_daemon::pppd;
    stop_daemon(link, &result);
    if (!by_pppd)
        clear_mode(link, &result);
    note_failure(flush_iptables("OUTPUT") != 0, "Failed to flush IP table rules for output chain.",
                 &result);
    note_failure(flush_iptables("INPUT") != 0, "Failed to flush IP table rules for input chain.",
                 &result);
    zelta_net_init(); // its result decides nothing
    // In automatic mode the PPP daemon set the address and the route, and took them away when it
    // ended. In manual mode the tool set them, and takes them away after the daemon.
    if (by_pppd && in_config.ip_mode == ip_mode_auto)
        return result;
    if (by_pppd)
        clear_mode(link, &result);
    note_failure(release_ip(index) != 0, "Failed to release IP address.", &result);
    return result;
}

} // namespace

int stop_usb_eth_if(int, char *argv[]) {
    return tear_down(link_usb0, argv[2]);
}

int stop_bluetooth_pan_if(int, char *argv[]) {
    return tear_down(link_bnep0, argv[2]);
}

int stop_wifi_if(int, char *argv[]) {
    return tear_down(link_wlan0, argv[2]);
}

int stop_gprs_if(int, char *argv[]) {
    return tear_down(link_ppp0, argv[2]);
}

} // namespace zelta
