#include <sstream>

#include "tests/device.h"

using namespace zelta::test;

namespace {

const std::string as_500 = "setpriv --reuid 500 --regid 500 --clear-groups --";
const std::string as_stranger = "setpriv --reuid 501 --regid 501 --clear-groups --";

const std::string usage = R"(
Usage: zelta-ip <option> <parameters>
Where:
    <option>                 <parameters>
    --domainname             <domain name>
    --hostname               <host name>
    --start-gprs-if          <config file>
    --start-wifi-if          <config file>
    --start-bluetooth-pan-if    <config file>
    --start-usb-eth-if       <config file>
    --stop-gprs-if           <config file>
    --stop-wifi-if           <config file>
    --stop-bluetooth-pan-if    <config file>
    --stop-usb-eth-if        <config file>
    --wifi-scan              )"
                          R"(
    --restart-dhclient       )"
                          R"(
    --restart-wpa-supplicant    )"
                          R"(
    --open-port              <tcp|udp> <port> <in|out> [<addr range>]
    --close-port             <tcp|udp> <port> <in|out> [<addr range>]
    --open-ping              <in|out> [<addr range>]
    --close-ping             <in|out> [<addr range>]
status 1
)";

using FrontEnd = DeviceTest;

TEST_F(FrontEnd, ListsItsCommandsForWhateverItDoesNotServe) {
    expect_transcripts({
        {{}, usage},
        {{.arguments = {"--HOSTNAME"}, .launcher = as_500}, usage},
        {{.arguments = {"--host"}}, usage},
        {{.arguments = {"--hostname", "a", "b"}}, usage},
        {{.arguments = {"--wifi-scan", "x"}}, usage},
        {{.arguments = {"--start-usb-eth-if"}}, usage},
        {{.arguments = {"--open-port", "tcp", "80"}}, usage},
        {{.arguments = {"--close-ping", "in", "::/0", "x"}}, usage},
    });
}

TEST_F(FrontEnd, RefusesStrangersBeforeItLooksAtArguments) {
    expect_transcripts({
        {{.launcher = as_stranger}, "Access denied.\nstatus 3\n"},
        {{.arguments = {"--hostname", "owned"}, .after = "cat /proc/sys/kernel/hostname", .launcher = as_stranger},
         "Access denied.\nstatus 3\nzelta\n"},
    });
}

TEST_F(FrontEnd, ShowsAndSetsTheKernelsNames) {
    const std::string show = "cat /proc/sys/kernel/hostname /proc/sys/kernel/domainname";
    const std::string longest(255, 'a'), kernels_longest(64, 'a');
    auto set = [&](const std::string &option, const std::string &name, const std::string &outcome,
                   const std::string &launcher = "") {
        return expected_run{
            {.arguments = {option, name}, .before = "domainname home", .after = show, .launcher = launcher}, outcome};
    };
    expect_transcripts({
        {{.arguments = {"--hostname"}, .launcher = as_500}, "zelta\nstatus 0\n"},
        {{.arguments = {"--domainname"}}, "(none)\nstatus 0\n"},
        {{.arguments = {"--hostname"}, .faults = "gethostname 1 14"}, "status 4\n"},
        set("--hostname", "a-1.B", "status 0\na-1.B\nhome\n", as_500),
        set("--domainname", "lan.example", "status 0\nzelta\nlan.example\n", as_500),
        set("--hostname", "", "status 0\n\nhome\n"),
        set("--hostname", "-.-", "status 0\n-.-\nhome\n"),
        set("--hostname", kernels_longest, "status 0\n" + kernels_longest + "\nhome\n"),
        set("--hostname", longest, "status 1\nzelta\nhome\n"),
        set("--domainname", longest + "a", "status 1\nzelta\nhome\n"),
        set("--hostname", "under_score", "status 1\nzelta\nhome\n"),
        set("--hostname", "b\xE4r", "status 1\nzelta\nhome\n"),
        set("--domainname", "a/b", "status 1\nzelta\nhome\n"),
        set("--domainname", "a b", "status 1\nzelta\nhome\n"),
    });
}

// Whatever the first step of a command is, the ids are root's before it.
TEST_F(FrontEnd, ProgramsAreRootsForUser500) {
    std::string script;
    for (const char *command :
         {"start-usb-eth-if usb-auto", "restart-dhclient", "stop-usb-eth-if usb-auto", "start-usb-eth-if usb-manual",
          "stop-usb-eth-if usb-manual", "start-wifi-if wifi-manual", "restart-wpa-supplicant", "wifi-scan",
          "stop-wifi-if wifi-manual", "wifi-scan", "start-gprs-if gprs-auto", "stop-gprs-if gprs-auto", "open-ping in"})
        script += as_500 + " zelta-ip --" + command + " >/run/out || cat /run/out; ";
    script += "sed -n 's/^report //p' /run/sim/report | sort -u | xargs;"
              "awk '/^report/ { program = $2 } /^[ug]id/ && $2 + $3 + $4 > 0 { print program, $0 }' /run/sim/report";
    const std::string programs = "dhclient ifconfig iptables iwlist killall mount pppd ps route wpa_cli wpa_supplicant "
                                 "zelta-net";
    std::string replies, program;
    for (std::istringstream each(programs); each >> program;)
        replies += program + " report, ";
    EXPECT_EQ(device_shell("rm /run/sim/trace; " + script, {.replies = replies}), programs + "\n");
}

} // namespace
