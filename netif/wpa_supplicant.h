// The WPA supplicant for wlan0, wpa_supplicant(8).

#pragma once

namespace zelta {

// True while the supplicant's control socket is readable for the real ids (access(2)), which are the
// caller's until become_root.
bool supplicant_runs();

// Becomes root and starts the supplicant in the background, the Wi-Fi settings file being its
// configuration. What run_for_status gives.
unsigned start_wpa_supplicant();

// Starts the supplicant in the background for the length of a scan, without a configuration. What
// zelta_system gives; the caller has become root before.
int start_scan_supplicant();

// Asks a running supplicant to end, through wpa_cli(8). exit_ok, also when none runs; exit_failed,
// after its line, when no child could be created or waited for.
int stop_wpa_supplicant();

// Command handler: ends a running supplicant with killall(1) and starts it again a second later.
// exit_ok, also, with a line, when none runs; exit_invalid, after its line, when no child could be
// created or waited for; exit_failed when the start failed.
int restart_wpa_supplicant(int argc, char *argv[]);

} // namespace zelta
