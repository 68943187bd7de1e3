// The PPP daemon pppd(8), which carries the GPRS link ppp0.

#pragma once

namespace zelta {

// Becomes root, writes the daemon's options file and, with a password, the one line of its secrets
// file from in_config, starts it, and moves the name-server file that it leaves into place as
// /etc/resolv.conf, waiting up to ten seconds for it. exit_ok; exit_no_file, after perror, when one
// of the files it writes cannot be opened, or exit_failed, and nothing is started, when the secrets
// line cannot be written whole; exit_failed for every other failure, after its message. The
// daemon's own exit status is not looked at: the name-server file tells.
int start_pppd();

// Interrupts a running daemon. exit_ok, also when none runs (/var/run/ppp0.pid is not readable);
// exit_failed, after a text without line end, when kill_proc fails.
int stop_pppd();

} // namespace zelta
