// The DHCP client dhclient(8): starting it, releasing its lease, stopping and restarting it.

#pragma once

namespace zelta {

// Becomes root, writes /etc/dhclient.conf (dhclient.conf(5)) anew and runs the client with the one
// argument: an interface name, or "-r" to release the lease; the file names the argument as its
// interface in both cases. 0 for success; exit_failed, without a message and without running the
// client, when the host name cannot be read or the file cannot be written whole; else what
// run_for_status gives.
unsigned exec_dhclient(const char *argument);

// Interrupts every running client and removes the process-id file. exit_ok. When kill_proc fails:
// prints its line, leaves the file, and returns exit_failed.
int stop_dhclient();

// Command handler: releases the lease of the running client, stops it and starts one for the same
// interface. exit_ok, else exit_failed after a line that says why. Once the process-id file has
// been opened, a failure stops the client too.
int restart_dhclient(int argc, char *argv[]);

} // namespace zelta
