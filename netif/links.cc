#include "netif/links.h"

#include <cstring>

namespace zelta {

const net_link *find_link(const char *interface) {
    for (const net_link &link : net_links)
        if (strcmp(link.interface, interface) == 0)
            return &link;
    return nullptr;
}

} // namespace zelta
