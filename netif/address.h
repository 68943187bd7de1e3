// Static addresses, the default route, and taking an interface down: ifconfig(8) and route(8). Each
// operation becomes root, runs one program and returns 0, exit_failed, or the raw wait status.

#pragma once

#include "netif/links.h"

namespace zelta {

// Gives the interface the address and netmask of in_config.
unsigned exec_ifconfig(const char *interface);

// Adds or deletes (verb "add" or "del") the default route through the gateway of in_config.
unsigned exec_route(const char *interface, const char *verb);

// Takes the interface of this index (link_index) down; exit_invalid, and nothing run, for an index
// outside the table.
unsigned release_ip(unsigned index);

} // namespace zelta
