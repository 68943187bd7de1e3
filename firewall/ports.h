// The commands that open and close firewall holes: argv[2] on are protocol, port, direction and
// perhaps an address range, for ping direction and perhaps a range.

#pragma once

namespace zelta {

// Command handlers. exit_invalid, without a message but for a port that is no number below 65536,
// for parameters that are refused; else what iptables_rule gives. An incoming hole below port 1024
// can be closed but not opened.
int open_port(int argc, char *argv[]);
int close_port(int argc, char *argv[]);
int open_ping(int argc, char *argv[]);
int close_ping(int argc, char *argv[]);

} // namespace zelta
