// The packet filter, driven through iptables(8). Each operation becomes root, runs the program once
// and reports on its end in lines of its own. The result is the program's exit code, the signal
// that ended it, or exit_failed when it could not be run. Texts are borrowed for the call.

#pragma once

namespace zelta {

// Adds or deletes (action "-A" or "-D") the ACCEPT rule for a protocol and its destination port,
// or, with the protocol "icmp", its type, in the chain "INPUT" or "OUTPUT"; range limits the source
// addresses, or is null.
int iptables_rule(const char *action, const char *chain, const char *protocol, const char *port,
                  const char *range);
int open_iptables_hole(const char *chain, const char *protocol, const char *port,
                       const char *range);
int close_iptables_hole(const char *chain, const char *protocol, const char *port,
                        const char *range);

// Deletes every rule of the chain.
int flush_iptables(const char *chain);

} // namespace zelta
