#include "tests/device.h"

using namespace zelta::test;

namespace {

using Firewall = DeviceTest;

const std::string range_error = "Destination port conversion failed: Success\nstatus 1\n";
const std::string overflow_error = "Destination port conversion failed: Numerical result out of range\nstatus 1\n";

expected_run command(std::vector<std::string> arguments, const std::string &outcome) {
    return {{.arguments = std::move(arguments)}, outcome};
}

TEST_F(Firewall, TakesPortsAndPingOneRuleAtATime) {
    auto rule = [](const std::string &arguments, int status = 0) {
        return filter(arguments, status) + "status " + std::to_string(status) + "\n";
    };
    expect_transcripts({
        command({"--open-port", "tcp", "80", "out"}, rule("-A OUTPUT -p tcp --dport 80 -j ACCEPT")),
        command({"--open-port", "udp", "1024", "in", "10.0.0.0/8"},
                rule("-A INPUT -p udp --dport 1024 -j ACCEPT -s 10.0.0.0/8")),
        command({"--open-port", "tcp", "65535", "in"}, rule("-A INPUT -p tcp --dport 65535 -j ACCEPT")),
        command({"--open-ping", "in"}, rule("-A INPUT -p icmp --icmp-type 8 -j ACCEPT")),
        command({"--open-ping", "out", "10.1.0.0/16"},
                rule("-A OUTPUT -p icmp --icmp-type 8 -j ACCEPT -s 10.1.0.0/16")),
        // No such rule: the filter's own words and exit code.
        command({"--close-port", "tcp", "80", "in"},
                "$ iptables -D INPUT -p tcp --dport 80 -j ACCEPT\n"
                "iptables: Bad rule (does a matching rule exist in that chain?).\n"
                "terminated normally status=1\nparent exit, res=1, pid=N\nstatus 1\n"),
        {{.arguments = {"--close-ping", "in"},
          .before = "for chain in INPUT OUTPUT; do /usr/lib/sim/iptables -A $chain -p icmp "
                    "--icmp-type 8 -j ACCEPT; done",
          .after = "/usr/lib/sim/iptables -S"},
         rule("-D INPUT -p icmp --icmp-type 8 -j ACCEPT") + "-A OUTPUT -p icmp --icmp-type 8 -j ACCEPT\n"},
    });
}

TEST_F(Firewall, JudgesProtocolThenPortThenDirection) {
    expect_transcripts({
        command({"--open-port", "TCP", "x", "in"}, "status 1\n"),
        command({"--open-port", "icmp", "-1", "in"}, "status 1\n"),
        command({"--open-port", "tcp", "65536", "sideways"}, range_error),
        command({"--open-port", "tcp", "-1", "out"}, range_error),
        command({"--close-port", "udp", "4294967376", "out"}, tool_bits() == 32 ? overflow_error : range_error),
        command({"--open-port", "tcp", "99999999999999999999", "out"}, overflow_error),
        command({"--open-port", "tcp", "2000", "IN"}, "status 1\n"),
        command({"--open-port", "tcp", "1023", "in"}, "status 1\n"),
        command({"--open-port", "tcp", "", "in"}, "status 1\n"),
        command({"--open-ping", "both"}, "status 1\n"),
        // What follows the digits is the packet filter's to judge.
        command({"--open-port", "tcp", "2000x", "in"},
                "$ iptables -A INPUT -p tcp --dport 2000x -j ACCEPT\n"
                "iptables: invalid port/service `2000x' specified\n"
                "terminated normally status=2\nparent exit, res=2, pid=N\nstatus 2\n"),
    });
}

TEST_F(Firewall, ReportsHowTheFilterEnded) {
    const std::vector<std::string> open = {"--open-ping", "in"};
    const std::string vector = "$ iptables -A INPUT -p icmp --icmp-type 8 -j ACCEPT\n";
    expect_transcripts({
        {{.arguments = open, .files = {{REPLY "iptables", "exit 7\nbusy\n"}}},
         vector + "busy\nterminated normally status=7\nparent exit, res=7, pid=N\nstatus 7\n"},
        {{.arguments = open, .replies = "iptables signal 9"},
         vector + "terminated by signal 9\nparent exit, res=9, pid=N\nstatus 9\n"},
        {{.arguments = open, .replies = "iptables missing"},
         "child exit???\nterminated normally status=4\nparent exit, res=4, pid=N\nstatus 4\n"},
        {{.arguments = open, .faults = "fork 1 11"}, "fork fail\nstatus 4\n"},
        {{.arguments = open, .faults = "waitpid 1 10"}, vector + "parent exit, res=4, pid=N\nstatus 4\n"},
    });
}

} // namespace
