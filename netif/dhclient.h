// The DHCP client dhclient(8): starting it, releasing its lease, stopping and restarting it.

#pragma once

namespace zelta {

// Becomes root, writes /etc/dhclient.conf (dhclient.conf(5)) anew and runs the client with the one
// argument: an interface name, or "-r" to release the lease, which then stands in the file too. 0;
// exit_failed, without a message, when the host name cannot be read or the file not be written
// whole, and then no client is run; else what run_for_status gives.
unsigned exec_dhclient(const char *argument);

// Interrupts every running client and removes its process-id file. exit_ok, or exit_failed, after
// its line, and the file stays, when kill_proc fails.
int stop_dhclient();

// Command handler: releases the lease of the running client, stops it and starts one for the same
// interface. exit_ok, else exit_failed after a line that says why; from the reading of the
// process-id file on, a failure stops the client.
int restart_dhclient(int argc, char *argv[]);

} // namespace zelta
