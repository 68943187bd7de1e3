#include "netif/bring_up.h"

#include <cstdio>

#include <unistd.h>

#include "firewall/iptables.h"
#include "lib/exit_status.h"
#include "netif/address.h"
#include "netif/dhclient.h"
#include "netif/links.h"
#include "netif/load_settings.h"
#include "netif/pppd.h"
#include "netif/wpa_supplicant.h"
#include "settings/ip_settings.h"

namespace zelta {

namespace {

// A running client counts for every link, because its process-id file does not name the interface
// that it serves. Only ppp0 has no use for a client: its addresses come from the PPP daemon.
bool dhcp_client_runs(const char *interface) {
    const net_link *link = find_link(interface);
    return link != nullptr && link->daemon != link_daemon::pppd && access(dhclient_pid, R_OK) == 0;
}

bool start_dhcp(const char *interface) {
    bool sent = open_iptables_hole("OUTPUT", "udp", "67", nullptr) == 0;
    bool answered = open_iptables_hole("INPUT", "udp", "68", nullptr) == 0;
    bool started = exec_dhclient(interface) == 0;
    return sent && answered && started;
}

bool set_static_address(const char *interface) {
    bool addressed = exec_ifconfig(interface) == 0;
    bool routed = exec_route(interface, "add") == 0;
    return addressed && routed;
}

int finish_with_address(const net_link &link) {
    int result = static_cast<int>(init_network_if(link.interface));
    puts(result == exit_ok ? "init_network_if successful" : "init_network_if unsuccessful");
    return result;
}

// The result of the supplicant's start is not looked at: a supplicant that runs already makes the
// start fail, and serves the link all the same.
int finish_with_supplicant(const net_link &link) {
    start_wpa_supplicant();
    return finish_with_address(link);
}

// In automatic mode the daemon itself sets address, route and name servers.
int finish_with_pppd(const net_link &link) {
    puts("Validate GPRS config file");
    int result = val_gprs_config_file(if_config);
    if (result != exit_ok)
        return result;
    result = start_pppd();
    if (result != exit_ok) {
        puts("start_pppd failed");
        return result;
    }
    if (in_config.ip_mode == ip_mode_manual)
        return static_cast<int>(init_network_if(link.interface));
    puts("start_gprs_if successful");
    return exit_ok;
}

int bring_up(link_index index, const char *settings_name) {
    const net_link &link = net_links[index];
    int result = load_settings(settings_name, link.own_file, link.parse_line);
    if (result == exit_ok && link.own_file != nullptr) {
        puts(link.own_parse_line);
        result = parse_config_file(link.own_file, if_config);
    }
    if (result != exit_ok)
        return result;
    switch (link.daemon) {
    case link_daemon::supplicant:
        return finish_with_supplicant(link);
    case link_daemon::pppd:
        return finish_with_pppd(link);
    case link_daemon::none:
        break;
    }
    return finish_with_address(link);
}

} // namespace

unsigned init_network_if(const char *interface) {
    bool done = true;
    if (in_config.ip_mode == ip_mode_auto) {
        puts("Auto IP config");
        done = dhcp_client_runs(interface) || start_dhcp(interface);
    } else if (in_config.ip_mode == ip_mode_manual) {
        puts("Manual IP config");
        done = set_static_address(interface);
    }
    return done ? exit_ok : exit_failed;
}

int start_usb_eth_if(int, char *argv[]) {
    return bring_up(link_usb0, argv[2]);
}

int start_bluetooth_pan_if(int, char *argv[]) {
    return bring_up(link_bnep0, argv[2]);
}

int start_wifi_if(int, char *argv[]) {
    return bring_up(link_wlan0, argv[2]);
}

int start_gprs_if(int, char *argv[]) {
    return bring_up(link_ppp0, argv[2]);
}

} // namespace zelta
