// The start commands of the four links.

#pragma once

namespace zelta {

// Gives the interface its IP configuration as in_config has it: by DHCP, with the firewall opened
// for it, unless a client runs already; or a static address and default route. Every step is
// attempted; exit_ok, or exit_failed when one of them failed.
unsigned init_network_if(const char *interface);

// Command handlers; argv[2] names the IP settings file. exit_ok; exit_invalid for settings that are
// not valid; exit_no_file for a file that is missing or cannot be opened; exit_failed.
int start_usb_eth_if(int argc, char *argv[]);
int start_bluetooth_pan_if(int argc, char *argv[]);
int start_wifi_if(int argc, char *argv[]);
int start_gprs_if(int argc, char *argv[]);

} // namespace zelta
