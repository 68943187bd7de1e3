// The command that lists the Wi-Fi networks in reach.

#pragma once

namespace zelta {

// Command handler: scans with iwlist(8), starting a supplicant for the length of the scan when none
// runs, and prints a header and one line for each network with an SSID; nothing at all for a
// listing without networks. exit_ok when the listing was read to its end; exit_failed, after a
// message, when the supplicant or the scan could not be run, or the listing not be read.
int wifi_scan(int argc, char *argv[]);

} // namespace zelta
