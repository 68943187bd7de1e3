#include "tests/device.h"

using namespace zelta::test;

namespace {

using Firewall = DeviceTest;

// A rule that the packet filter takes.
tool_run rule(const std::string &arguments, const std::string &vector, const device &in = {},
              here where = here::current()) {
    return {arguments, filter_run(vector) + "status 0\n", in, where};
}

TEST_F(Firewall, TakesPortsAndPingOneRuleAtATime) {
    expect_transcripts({
        rule("--open-port tcp 80 out", "-A OUTPUT -p tcp --dport 80 -j ACCEPT"),
        rule("--open-port udp 1024 in 10.0.0.0/8", "-A INPUT -p udp --dport 1024 -j ACCEPT -s 10.0.0.0/8"),
        rule("--open-port tcp 65535 in", "-A INPUT -p tcp --dport 65535 -j ACCEPT"),
        rule("--close-port tcp 80 in", "-D INPUT -p tcp --dport 80 -j ACCEPT", {.replies = "iptables exit 0"}),
        rule("--open-ping in", "-A INPUT -p icmp --icmp-type 8 -j ACCEPT"),
        rule("--open-ping out 10.1.0.0/16", "-A OUTPUT -p icmp --icmp-type 8 -j ACCEPT -s 10.1.0.0/16"),
        rule("--close-ping in", "-D INPUT -p icmp --icmp-type 8 -j ACCEPT", {.replies = "iptables exit 0"}),
        // What follows the digits is the packet filter's to judge, whose words and status are its own.
        {"--open-port tcp 2000x in", "$ iptables -A INPUT -p tcp --dport 2000x -j ACCEPT\n"
                                     "iptables: invalid port/service `2000x' specified\n"
                                     "terminated normally status=2\nparent exit, res=2, pid=N\nstatus 2\n"},
    });
}

TEST_F(Firewall, JudgesProtocolThenPortThenDirection) {
    const std::string failure = "Destination port conversion failed: ", out_of_range = failure + "Success\nstatus 1\n";
    expect_transcripts({
        {"--open-port TCP x in", "status 1\n"},
        {"--open-port icmp -1 in", "status 1\n"},
        {"--open-port tcp 65536 sideways", out_of_range},
        {"--open-port tcp -1 out", out_of_range, {.faults = fails("poll", EINVAL)}}, // an earlier error is no reason
        {"--open-port tcp 99999999999999999999 out", failure + "Numerical result out of range\nstatus 1\n"},
        // The reason depends on the machine's word.
        {"--close-port udp 4294967376 out 2>&1 | sed s/:.*//", "Destination port conversion failed\nstatus 0\n"},
        {"--open-port tcp 2000 IN", "status 1\n"},
        {"--open-port tcp 1023 in", "status 1\n"},
        {"--open-port tcp '' in", "status 1\n"},
        {"--open-ping both", "status 1\n"},
    });
    // The reason is that of the port also where the lines before it cannot be written.
    EXPECT_EQ(device_shell("zelta-ip --open-port tcp 99999999999999999999 out 2>&1 >/dev/full"),
              failure + "Numerical result out of range\n");
}

TEST_F(Firewall, ReportsHowTheFilterEnded) {
    const std::string open = "--open-ping in", ran = "$ iptables -A INPUT -p icmp --icmp-type 8 -j ACCEPT\n";
    auto ends = [](const std::string &status) {
        return "parent exit, res=" + status + ", pid=N\nstatus " + status + "\n";
    };
    expect_transcripts({
        {open, ran + "terminated normally status=7\n" + ends("7"), {.replies = "iptables exit 7"}},
        {open, ran + "terminated by signal 9\n" + ends("9"), {.replies = "iptables signal 9"}},
        {open, "child exit???\nterminated normally status=4\n" + ends("4"), {.replies = "iptables missing"}},
        {open, "fork fail\nstatus 4\n", {.faults = fails("fork", EAGAIN)}},
        {open, ran + ends("4"), {.faults = fails("waitpid", ECHILD)}},
    });
    // A child that cannot become the filter ends in the same way when nobody reads what it says.
    EXPECT_EQ(device_shell("exec 3>&1 > >(:); wait $!; zelta-ip --open-ping in; echo $? >&3",
                           {.replies = "iptables missing"}),
              "4\n");
}

} // namespace
