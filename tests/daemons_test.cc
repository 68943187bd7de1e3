#include "tests/device.h"

using namespace zelta::test;

namespace {

using Daemons = DeviceTest;

// A client that runs in the background, and its process-id file.
const std::string client = "SIM_DAEMON=1 dhclient usb0 >/var/run/dhclient.pid; ";
const std::string marker = "mkdir -p /var/run/wpa_supplicant; touch /var/run/wpa_supplicant/wlan0; ";

TEST_F(Daemons, DhclientRestartServesTheSameInterface) {
    const std::string script = client + "old=$(cat /var/run/dhclient.pid); zelta-ip --restart-dhclient; echo status $?;"
                                        "new=$(cat /var/run/dhclient.pid); while kill -0 $old; do :; done 2>/dev/null;"
                                        "tr '\\0' ' ' </proc/$new/cmdline; head -1 /etc/dhclient.conf";
    EXPECT_EQ(device_shell(script), "\nZelta IP Tool\nStopping the dhcp client: \n$ dhclient -r\n$ ps\n"
                                    "Starting the dhcp client: \n$ dhclient usb0\nstatus 0\n"
                                    "dhclient usb0 interface \"usb0\" {\n");
}

TEST_F(Daemons, DhclientRestartStopsAClientItCannotRestart) {
    auto restart = [](const std::string &before, const std::string &outcome, const std::string &faults = "",
                      const std::string &dhclient = "0") {
        return tool_run{"--restart-dhclient",
                        outcome,
                        {.replies = "dhclient exit " + dhclient + ", ps exit 0",
                         .before = before,
                         .after = "ls /var/run/dhclient.pid 2>/dev/null",
                         .faults = faults}};
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
        restart(own, internal + "couldn't open /var/run/dhclient.pid.\n" + kept, "fopen 1 13"),
        restart(":" + pid_file, internal + "/var/run/dhclient.pid is empty.\n" + stopped),
        restart("echo 123456" + pid_file, badly + stopped),
        restart("echo 12345" + pid_file, nowhere + stopped),
        restart("echo not-a-number" + pid_file, badly + stopped),
        restart("printf 1x" + pid_file, no_interface + stopped), // process 1, by losing the last one
        restart(own, no_interface + stopped),
        restart(own, internal + "dhclient command line couldn't be read.\n" + stopped, "fopen 2 5"),
        restart(client, released + "... failed.\n" + stopped, "", "1"),
        restart(client, released + "$ ps\nStarting the dhcp client: \n... failed.\n" + stopped, "open 2 28"),
        restart(client, released + "$ ps\nStarting the dhcp client: \n$ dhclient usb0\nstatus 0\n"),
    });
}

TEST_F(Daemons, SupplicantRestart) {
    auto restart = [](const std::string &before, const std::string &outcome, const std::string &faults = "none 1 1",
                      const std::string &start = "exit 0") {
        const std::string replies = "killall exit 1, wpa_supplicant " + start;
        return tool_run{"--restart-wpa-supplicant", outcome, {.replies = replies, .before = before, .faults = faults}};
    };
    const std::string stopping = "Stopping the WPA supplicant: \n";
    const std::string started = stopping + "$ killall wpa_supplicant\n$ sleep 1\n"
                                           "Starting the WPA supplicant: \n"
                                           "$ wpa_supplicant -iwlan0 -c" SETTINGS "wlan-config -B\n";
    expect_transcripts({
        restart("", "The WPA supplicant is not running.\nstatus 0\n"),
        restart(marker, started + "status 0\n"),
        restart(marker, started + "status 4\n", "none 1 1", "signal 9"),
        restart(marker,
                stopping + "Call to fork failed in zelta_system_argv, error 11"
                           "Failed to stop the WPA supplicant.\nstatus 1\n",
                "fork 1 11"),
    });
}

// What became of five processes when a stop interrupts clients by name. The listing is padded so that
// one line has exactly as many characters, its end included, as the last parameter says.
TEST_F(Daemons, InterruptsByName) {
    const std::string script = R"(
for i in 1 2 3 4 5; do
    env --default-signal=INT sleep 1000 & pids[i]=$!
    until [[ $(<"/proc/$!/comm") == sleep ]]; do :; done
done
line() { printf '%7s ? 00:00:00 %s\n' "$1" "$2"; }
{   echo print
    echo '  PID TTY TIME dhclient'
    line "${pids[1]}" 'dhclient usb0'
    line "${pids[2]}" 'less dhclient.log'
    line "${pids[3]}" 'bystander'
    line 0 dhclient; line -1 dhclient; line 4294967297 dhclient; line 99999999999999999999 dhclient
    echo 'dhclient-without-a-blank'
    line 999999 dhclient
    long=$(line "${pids[4]}" dhclient)
    printf '%s%*s\n' "$long" $((LENGTH - ${#long} - 1)) ''
    line "${pids[5]}" 'dhclient wlan0'
} >/run/sim/reply/ps
echo config=auto >)" SETTINGS R"(s
zelta-ip --stop-usb-eth-if s | grep -A1 '^Could not'
for i in 1 2 3 4 5; do
    kill "${pids[i]}"; wait "${pids[i]}"
    how=$(kill -l $?)
    echo "$i $how" # of two signals the interrupt comes first
done 2>/dev/null
)";
    const std::string gone = "Could not kill process - 999999 because of No such process\n";
    auto outcome = [&](const std::string &length) {
        std::string output = device_shell("LENGTH=" + length + script, {.replies = "dhclient exit 0"});
        return output.substr(output.find("Could not"));
    };
    const std::string next = "terminated normally status=0\n";
    EXPECT_EQ(outcome("256"), gone + next + "1 INT\n2 INT\n3 TERM\n4 INT\n5 INT\n");
    EXPECT_EQ(outcome("257"), gone + next + "1 INT\n2 INT\n3 TERM\n4 TERM\n5 TERM\n");
}

} // namespace
