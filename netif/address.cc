#include "netif/address.h"

#include "lib/exit_status.h"
#include "netif/run_and_wait.h"
#include "process/privilege.h"
#include "settings/ip_settings.h"

namespace zelta {

unsigned exec_ifconfig(const char *interface) {
    become_root();
    const char *const argv[] = {"ifconfig", interface,         in_config.address,
                                "netmask",  in_config.netmask, nullptr};
    return run_for_status("/sbin/ifconfig", argv);
}

unsigned exec_route(const char *interface, const char *verb) {
    become_root();
    const char *const argv[] = {
        "route",           verb,      "default", "netmask", in_config.netmask, "gw",
        in_config.gateway, interface, nullptr};
    return run_for_status("/sbin/route", argv);
}

unsigned release_ip(unsigned index) {
    become_root();
    if (index >= std::size(net_links))
        return exit_invalid;
    const char *const argv[] = {"ifconfig", net_links[index].interface, "down", nullptr};
    return run_for_status("/sbin/ifconfig", argv);
}

} // namespace zelta
