#include "tests/device.h"

using namespace zelta::test;

namespace {

const std::string as_500 = "setpriv --reuid 500 --regid 500 --clear-groups";

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
)"
                          "    --wifi-scan              \n"
                          "    --restart-dhclient       \n"
                          "    --restart-wpa-supplicant    \n"
                          R"(    --open-port              <tcp|udp> <port> <in|out> [<addr range>]
    --close-port             <tcp|udp> <port> <in|out> [<addr range>]
    --open-ping              <in|out> [<addr range>]
    --close-ping             <in|out> [<addr range>]
status 1
)";

using FrontEnd = DeviceTest;

TEST_F(FrontEnd, ListsItsCommandsForWhateverItDoesNotServe) {
    for (const char *arguments : {"", "--host", "--hostname a b", "--wifi-scan x", "--start-usb-eth-if",
                                  "--open-port tcp 80", "--close-ping in ::/0 x"})
        expect_transcripts({{arguments, usage}});
    const std::string each = "for link in gprs wifi bluetooth-pan usb-eth; do for words in '' 'a b'; do"
                             "    zelta-ip --start-$link-if $words; zelta-ip --stop-$link-if $words;"
                             "done; done | grep -c Usage";
    EXPECT_EQ(device_shell(each), "16\n");
    expect_transcripts({{"--HOSTNAME", usage, {.launcher = as_500}}});
}

TEST_F(FrontEnd, RefusesStrangersBeforeItLooksAtArguments) {
    const device strangers = {.after = "hostname", .launcher = "setpriv --reuid 501 --regid 501 --clear-groups"};
    expect_transcripts({{"", "Access denied.\nstatus 3\nzelta\n", strangers},
                        {"--hostname owned", "Access denied.\nstatus 3\nzelta\n", strangers}});
}

TEST_F(FrontEnd, ShowsAndSetsTheKernelsNames) {
    const std::string longest(255, 'a'), kernels_longest(64, 'a');
    const device host = {.before = "domainname home", .after = "hostname; domainname"};
    device user = host;
    user.launcher = as_500;
    expect_transcripts({
        {"--hostname", "zelta\nstatus 0\n", {.launcher = as_500}},
        {"--domainname", "(none)\nstatus 0\n"},
        {"--hostname", "status 4\n", {.faults = fails("gethostname", EFAULT)}},
        {"--hostname a-1.B", "status 0\na-1.B\nhome\n", user},
        {"--domainname lan.example", "status 0\nzelta\nlan.example\n", user},
        {"--hostname ''", "status 0\n\nhome\n", host},
        {"--hostname -.-", "status 0\n-.-\nhome\n", host},
        {"--hostname " + kernels_longest, "status 0\n" + kernels_longest + "\nhome\n", host},
        {"--hostname " + longest, "status 1\nzelta\nhome\n", host},
        {"--domainname a" + longest, "status 1\nzelta\nhome\n", host},
        {"--hostname under_score", "status 1\nzelta\nhome\n", host},
        {"--hostname b\xE4r", "status 1\nzelta\nhome\n", host},
        {"--domainname a/b", "status 1\nzelta\nhome\n", host},
        {"--domainname 'a b'", "status 1\nzelta\nhome\n", host},
    });
}

TEST_F(FrontEnd, ProgramsGetThreeDescriptors) {
    auto row = [](const std::string &faults, const std::string &launcher, here where = here::current()) {
        const device in = {.replies = "iptables report",
                           .after = "sed -n 's/^fd //p' /run/sim/report | xargs",
                           .faults = faults,
                           .launcher = launcher};
        const std::string rule = "-A INPUT -p icmp --icmp-type 8 -j ACCEPT";
        return tool_run{"--open-ping in", filter_run(rule) + "status 0\n0 1 2\n", in, where};
    };
    expect_transcripts({
        // A kernel that cannot close a range: each descriptor is closed.
        row(fails("syscall", ENOSYS), "bash -c 'exec 3</ 3000</; exec \"$@\"' - " + as_500),
        row(fails("poll", EINVAL),
            R"(bash -c 'for fd in /proc/$$/fd/*; do ((${fd##*/} < 3)) || eval "exec ${fd##*/}>&-"; done; exec "$@"' -)"),
    });
}

// Whatever the first step of a command is, the ids are root's before it.
TEST_F(FrontEnd, ProgramsAreRootsForUser500) {
    if (only_root())
        GTEST_SKIP() << "skipped: an ordinary user's device has no user 500";
    const std::string script = R"(
programs='dhclient ifconfig iptables iwlist killall mount pppd ps route wpa_cli wpa_supplicant zelta-net'
for name in $programs; do echo report >/run/sim/reply/$name; done
sed -i 's#^ctrl_interface=.*#& GROUP=500#' /home/main-user/.ip_config/wlan-config
for command in 'start-usb-eth-if usb-auto' restart-dhclient 'stop-usb-eth-if usb-auto' 'start-usb-eth-if usb-manual' \
    'stop-usb-eth-if usb-manual' 'start-wifi-if wifi-manual' restart-wpa-supplicant wifi-scan \
    'stop-wifi-if wifi-manual' wifi-scan 'start-gprs-if gprs-auto' 'stop-gprs-if gprs-auto' 'open-ping in'; do
    $USER zelta-ip --$command >/run/out 2>/dev/null || cat /run/out
done
[[ $(sed -n 's/^report //p' /run/sim/report | sort -u | xargs) == "$programs" ]] && echo all
awk '/^report/ { program = $2 } /^[ug]id/ && $2 + $3 + $4 > 0 { print program, $0 }' /run/sim/report)";
    EXPECT_EQ(device_shell("rm /run/sim/trace; USER='" + as_500 + "'" + script), "all\n");
}

} // namespace
