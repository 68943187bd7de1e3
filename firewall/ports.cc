#include "firewall/ports.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "app/exit_status.h"
#include "firewall/iptables.h"
#include "lib/report_error.h"

namespace zelta {

namespace {

constexpr unsigned long port_limit = 65536;
constexpr unsigned long first_open_port = 1024; // lower incoming ports belong to the device itself
constexpr char ping_type[] = "8";               // echo request

using hole_fn = int (*)(const char *chain, const char *protocol, const char *port,
                        const char *range);

// The chain of a direction; null for a word that is none.
const char *chain_of(const char *direction) {
    if (strcmp(direction, "in") == 0)
        return "INPUT";
    return strcmp(direction, "out") == 0 ? "OUTPUT" : nullptr;
}

// The value of the digits that the text begins with; what follows them is the packet filter's to
// judge. Says so and returns port_limit for a text that is no port. A negative number is a large
// one here.
unsigned long port_value(const char *text) {
    errno = 0;
    unsigned long value = static_cast<unsigned long>(strtol(text, nullptr, 10));
    if (errno != ERANGE && value < port_limit) // a text without digits is an error to some systems
        return value;
    report_error("Destination port conversion failed");
    return port_limit;
}

int change_port(int argc, char *argv[], unsigned long first_incoming, hole_fn change) {
    const char *protocol = argv[2];
    if (strcmp(protocol, "tcp") != 0 && strcmp(protocol, "udp") != 0)
        return exit_invalid;
    unsigned long port = port_value(argv[3]);
    if (port == port_limit)
        return exit_invalid;
    const char *chain = chain_of(argv[4]);
    if (chain == nullptr || (strcmp(chain, "INPUT") == 0 && port < first_incoming))
        return exit_invalid;
    return change(chain, protocol, argv[3], argc == 6 ? argv[5] : nullptr);
}

int change_ping(int argc, char *argv[], hole_fn change) {
    const char *chain = chain_of(argv[2]);
    if (chain == nullptr)
        return exit_invalid;
    return change(chain, "icmp", ping_type, argc == 4 ? argv[3] : nullptr);
}

} // namespace

int open_port(int argc, char *argv[]) {
    return change_port(argc, argv, first_open_port, open_iptables_hole);
}

int close_port(int argc, char *argv[]) {
    return change_port(argc, argv, 0, close_iptables_hole);
}

int open_ping(int argc, char *argv[]) {
    return change_ping(argc, argv, open_iptables_hole);
}

int close_ping(int argc, char *argv[]) {
    return change_ping(argc, argv, close_iptables_hole);
}

} // namespace zelta
