#include "firewall/ports.h"

#include <cerrno>
#include <cstring>

#include "firewall/iptables.h"
#include "lib/exit_status.h"
#include "lib/report_error.h"
#include "lib/strtol.h"

namespace zelta {

namespace {

constexpr unsigned long port_limit = 65536;
constexpr unsigned long first_open_port = 1024; // lower incoming ports belong to the device itself
constexpr char ping_type[] = "8";               // echo request

// What a rule lets through; without a chain it is refused.
struct hole {
    const char *chain, *protocol, *port, *range;
};

// The chain of a direction; null for a word that is none.
const char *chain_of(const char *direction) {
    if (strcmp(direction, "in") == 0)
        return "INPUT";
    return strcmp(direction, "out") == 0 ? "OUTPUT" : nullptr;
}

// The value of the digits that the text begins with, 0 without any; the packet filter judges the
// whole text. Prints its line and returns port_limit for a number that is negative or too large.
unsigned long port_value(const char *text) {
    errno = 0;
    unsigned long value = static_cast<unsigned long>(any_strtol(text, nullptr, 10));
    // A negative number has become a large one. EINVAL, which some C libraries set for a text
    // without digits, does not count.
    if (errno != ERANGE && value < port_limit)
        return value;
    report_error("Destination port conversion failed");
    return port_limit;
}

hole port_hole(int argc, char *argv[], unsigned long first_incoming) {
    const char *protocol = argv[2];
    if (strcmp(protocol, "tcp") != 0 && strcmp(protocol, "udp") != 0)
        return {};
    unsigned long port = port_value(argv[3]);
    if (port == port_limit)
        return {};
    const char *chain = chain_of(argv[4]);
    if (chain == nullptr || (strcmp(chain, "INPUT") == 0 && port < first_incoming))
        return {};
    return {chain, protocol, argv[3], argc == 6 ? argv[5] : nullptr};
}

hole ping_hole(int argc, char *argv[]) {
    return {chain_of(argv[2]), "icmp", ping_type, argc == 4 ? argv[3] : nullptr};
}

int open_hole(const hole &wanted) {
    if (wanted.chain == nullptr)
        return exit_invalid;
    return open_iptables_hole(wanted.chain, wanted.protocol, wanted.port, wanted.range);
}

int close_hole(const hole &wanted) {
    if (wanted.chain == nullptr)
        return exit_invalid;
    return close_iptables_hole(wanted.chain, wanted.protocol, wanted.port, wanted.range);
}

} // namespace

int open_port(int argc, char *argv[]) {
    return open_hole(port_hole(argc, argv, first_open_port));
}

int close_port(int argc, char *argv[]) {
    return close_hole(port_hole(argc, argv, 0));
}

int open_ping(int argc, char *argv[]) {
    return open_hole(ping_hole(argc, argv));
}

int close_ping(int argc, char *argv[]) {
    return close_hole(ping_hole(argc, argv));
}

} // namespace zelta
