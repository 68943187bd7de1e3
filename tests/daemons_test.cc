#include "tests/device.h"

using namespace zelta::test;

namespace {

using Daemons = DeviceTest;

// A client that runs in the background, and its process-id file.
const std::string client = "SIM_DAEMON=1 dhclient usb0 >/var/run/dhclient.pid; ";

TEST_F(Daemons, DhclientRestartServesTheSameInterface) {
    const std::string script =
        client + "old=$(cat /var/run/dhclient.pid); zelta-ip --restart-dhclient; echo status $?;"
                 "new=$(cat /var/run/dhclient.pid); timeout 60 tail --pid $old -f /dev/null || echo it lives;"
                 "tr '\\0' ' ' </proc/$new/cmdline; head -1 /etc/dhclient.conf";
    EXPECT_EQ(device_shell(script), "\nZelta IP Tool\nStopping the dhcp client: \n$ dhclient -r\n$ ps\n"
                                    "Starting the dhcp client: \n$ dhclient usb0\nstatus 0\n"
                                    "dhclient usb0 interface \"usb0\" {\n");
}

TEST_F(Daemons, DhclientRestartStopsAClientItCannotRestart) {
    auto restart = [](const std::string &before, const std::string &outcome, const std::string &faults = "",
                      const std::string &dhclient = "0", here where = here::current()) {
        return tool_run{"--restart-dhclient",
                        outcome,
                        {.replies = "dhclient exit " + dhclient + ", ps exit 0",
                         .before = before,
                         .after = "ls /var/run/dhclient.pid 2>/dev/null",
                         .faults = faults},
                        where};
    };
    const std::string pid_file = " >/var/run/dhclient.pid";
    const std::string stopped = "$ ps\nstatus 4\n", kept = "status 4\n/var/run/dhclient.pid\n";
    const std::string internal = "Internal error - ", own = "echo $$" + pid_file;
    const std::string badly = internal + "/var/run/dhclient.pid badly formatted.\n";
    const std::string nowhere = internal + "dhclient command line not accessible.\n";
    const std::string no_interface = internal + "dhclient interface parameter not found.\n";
    const std::string released = "Stopping the dhcp client: \n$ dhclient -r\n";
    expect_transcripts({
        restart("", "The dhcp client is not running.\nstatus 4\n"),
        restart(own, internal + "couldn't open /var/run/dhclient.pid.\n" + kept, fails("fopen", EACCES)),
        restart(":" + pid_file, internal + "/var/run/dhclient.pid is empty.\n" + stopped),
        restart("echo 123456" + pid_file, badly + stopped),
        restart("echo 12345" + pid_file, nowhere + stopped),
        restart("echo not-a-number" + pid_file, badly + stopped),
        restart("printf 1x" + pid_file, no_interface + stopped), // the last character counts as the line end: process 1
        restart(own, no_interface + stopped),
        restart(own, internal + "dhclient command line couldn't be read.\n" + stopped, fails("fopen", EIO, 2)),
        restart(client, released + "... failed.\n" + stopped, "", "1"),
        restart(client, released + "$ ps\nStarting the dhcp client: \n... failed.\n" + stopped,
                fails("open", ENOSPC, 2)),
        restart(client, released + "$ ps\nStarting the dhcp client: \n$ dhclient usb0\nstatus 0\n"),
    });
}

TEST_F(Daemons, SupplicantRestart) {
    auto restart = [](const std::string &before, const std::string &outcome, const std::string &faults = no_sleep,
                      const std::string &start = "exit 0", here where = here::current()) {
        const device in = {.replies = "killall exit 1, wpa_supplicant " + start, .before = before, .faults = faults};
        return tool_run{"--restart-wpa-supplicant", outcome, in, where};
    };
    const std::string stopping = "Stopping the WPA supplicant: \n";
    const std::string started = stopping + "$ killall wpa_supplicant\n$ sleep 1\n"
                                           "Starting the WPA supplicant: \n"
                                           "$ wpa_supplicant -iwlan0 -c" SETTINGS "wlan-config -B\n";
    expect_transcripts({
        restart("", "The WPA supplicant is not running.\nstatus 0\n"),
        restart(supplicant_runs, started + "status 0\n"),
        restart(supplicant_runs, started + "status 4\n", no_sleep, "signal 9"),
        restart(supplicant_runs,
                stopping + "Call to fork failed in zelta_system_argv, error 11"
                           "Failed to stop the WPA supplicant.\nstatus 1\n",
                fails("fork", EAGAIN)),
    });
}

} // namespace
