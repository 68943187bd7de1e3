// The stop commands of the four links.

#pragma once

namespace zelta {

// Command handlers; argv[2] names the IP settings file, which tells the link's mode. Every step is
// attempted. One that fails prints its line and makes exit_failed, but for stop_dhclient, which
// prints alone, and zelta_net_init, which does neither. exit_ok; exit_invalid for settings that are
// not valid and exit_no_file for a file that is missing or cannot be opened, nothing being stopped
// then.
int stop_usb_eth_if(int argc, char *argv[]);
int stop_bluetooth_pan_if(int argc, char *argv[]);
int stop_wifi_if(int argc, char *argv[]);
int stop_gprs_if(int argc, char *argv[]);

} // namespace zelta
