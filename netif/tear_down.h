// The stop commands of the four links.

#pragma once

namespace zelta {

// Command handlers; argv[2] names the IP settings file, which tells the link's mode.
//   exit_invalid  the settings are not valid: nothing is stopped
//   exit_no_file  the file is missing or cannot be opened: nothing is stopped
//   exit_failed   a step failed, after its line; the others were attempted all the same
//   exit_ok       else; failures of stop_dhclient, which has a line, and of zelta_net_init, which
//                 has none, do not count
int stop_usb_eth_if(int argc, char *argv[]);
int stop_bluetooth_pan_if(int argc, char *argv[]);
int stop_wifi_if(int argc, char *argv[]);
int stop_gprs_if(int argc, char *argv[]);

} // namespace zelta
