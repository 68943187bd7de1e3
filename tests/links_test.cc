#include "tests/device.h"

using namespace zelta::test;

namespace {

using Links = DeviceTest;

constexpr char dhcp[] = "config=auto\n";
constexpr char manual[] = "config=manual\naddress=10.0.0.2\nnetmask=255.0.0.0\ngateway=10.0.0.1\n"
                          "routes=default\n";
constexpr char modem[] = "device=/dev/ttyS1\nuser=web\npassword=pw\nsecrets-file=chap\n"
                         "connect=on\ndisconnect=off\n";
constexpr char options[] = "/dev/ttyS1\n115200\nuser \"web\"\n"
                           "connect \"/sbin/chat -v -f " SETTINGS "on\"\n"
                           "disconnect \"/sbin/chat -v -f " SETTINGS "off\"\n";
constexpr char dhcp_conf[] = "\tsend host-name \"zelta\";\n"
                             "\trequest subnet-mask, broadcast-address, time-offset, routers,\n"
                             "\t\tdomain-name, domain-name-servers, host-name;\n"
                             "\trequire subnet-mask, domain-name-servers;\n}\n";

const std::string parsed = "NEW parse_config_file() FUNCTION success!!\n";
const std::string ip_read = "Parsing IP config file\n" + parsed + "Validate IP config file\n";
const std::string wlan_read = "Parsing WLAN IP config file\n" + ip_read.substr(23);
const std::string supplicant =
    "Parsing WLAN config file\n" + parsed + "$ wpa_supplicant -iwlan0 -c" SETTINGS "wlan-config -B\n";
const std::string modem_read = "Parsing GPRS config file\n" + parsed + "Validate GPRS config file\n";
const std::string pppd = modem_read + "$ pppd file /etc/ppp/pppd-config\n";
const std::string done = "init_network_if successful\nstatus 0\n";
const std::string failed = "init_network_if unsuccessful\nstatus 4\n";
const std::string holes = "Auto IP config\n" + filter("-A OUTPUT -p udp --dport 67 -j ACCEPT") +
                          filter("-A INPUT -p udp --dport 68 -j ACCEPT");
const std::string release = "Clearing Auto IP config setting\n$ dhclient -r\n";
const std::string dhcp_runs = "echo 99999 >/var/run/dhclient.pid";
const std::string supplicant_runs = "mkdir /var/run/wpa_supplicant;"
                                    "touch /var/run/wpa_supplicant/wlan0";

std::string route(const std::string &interface, const std::string &verb = "add") {
    return "$ route " + verb + " default netmask 255.0.0.0 gw 10.0.0.1 " + interface + "\n";
}

std::string by_hand(const std::string &interface) {
    return "Manual IP config\n$ ifconfig " + interface + " 10.0.0.2 netmask 255.0.0.0\n" + route(interface);
}

std::string clear(const std::string &interface) {
    return "Clearing Manual IP config\n" + route(interface, "del");
}

// What a stop prints from the flushes on.
std::string flushed(int status, const std::string &failure = "", const std::string &failure2 = "") {
    return filter("--flush OUTPUT", status) + failure + filter("--flush INPUT", status) + failure2 +
           "$ mount -o remount,exec /etc/\n$ zelta-net\n$ mount -o remount,noexec /etc/\n";
}

// A command on the settings file "s" with this text, and what follows the reading of that file; the
// device's programs do nothing, and succeed.
tool_run link(const std::string &option, const std::string &text, const std::string &outcome, device in = {}) {
    in.files.insert(in.files.begin(), {{SETTINGS "s", text}, {SETTINGS "wlan-config", "ap=1\n"}});
    in.replies = "ifconfig exit 0, route exit 0, dhclient exit 0, wpa_supplicant exit 0, pppd exit 0,"
                 "wpa_cli exit 0, mount exit 0, zelta-net exit 0, iptables exit 0, " +
                 in.replies;
    return {option + " s", (option.ends_with("wifi-if") ? wlan_read : ip_read) + outcome, in};
}

TEST_F(Links, StartByDhcpOrByHand) {
    expect_transcripts({
        link("--start-usb-eth-if", dhcp, holes + "$ dhclient usb0\n" + done + "interface \"usb0\" {\n" + dhcp_conf,
             {.after = "cat /etc/dhclient.conf"}),
        link("--start-bluetooth-pan-if", dhcp, "Auto IP config\n" + done, {.before = dhcp_runs}),
        link("--start-bluetooth-pan-if", manual, by_hand("bnep0") + done),
        link("--start-usb-eth-if", manual, by_hand("usb0") + done, {.before = dhcp_runs}),
        link("--start-wifi-if", dhcp, supplicant + holes + "$ dhclient wlan0\n" + done),
        link("--start-wifi-if", manual, supplicant + by_hand("wlan0") + done, {.replies = "wpa_supplicant exit 255"}),
    });
}

TEST_F(Links, StartAttemptsEveryStep) {
    const std::string no_file = "ls: cannot access '/etc/dhclient.conf': No such file or directory\n";
    expect_transcripts({
        link("--start-usb-eth-if", dhcp,
             "Auto IP config\n" + filter("-A OUTPUT -p udp --dport 67 -j ACCEPT", 3) +
                 filter("-A INPUT -p udp --dport 68 -j ACCEPT", 3) + "$ dhclient usb0\n" + failed,
             {.replies = "iptables exit 3"}),
        link("--start-usb-eth-if", dhcp, holes + failed, {.before = "ln -s /dev/full /etc/dhclient.conf"}),
        link("--start-usb-eth-if", dhcp, holes + failed, {.before = "mkdir /etc/dhclient.conf"}),
        link("--start-usb-eth-if", dhcp, holes + failed + no_file,
             {.after = "ls /etc/dhclient.conf 2>&1", .faults = "gethostname 1 14"}),
        link("--start-usb-eth-if", manual, "Manual IP config\nchild exit???\n" + route("usb0") + failed,
             {.replies = "ifconfig missing"}),
        link("--start-usb-eth-if", manual, "Manual IP config\nfork fail\n" + route("usb0") + failed,
             {.faults = "fork 1 11"}),
        link("--start-usb-eth-if", manual, by_hand("usb0") + "parent exit\n" + failed, {.faults = "waitpid 2 4"}),
        link("--start-usb-eth-if", manual, by_hand("usb0") + failed, {.replies = "route signal 4"}),
    });
}

TEST_F(Links, StartNeedsItsSettings) {
    auto missing = [](const std::string &file) {
        return SETTINGS + file + " not found (reason: No such file or directory)\nstatus 2\n";
    };
    const std::string lacking = "Unrecognised secrets file type ((null))\nstatus 1\n";
    expect_transcripts({
        {"--stop-wifi-if none", missing("none")},
        {"--start-wifi-if wifi-auto", missing("wlan-config"), {.before = "rm " SETTINGS "wlan-config"}},
        {"--start-gprs-if gprs-auto", missing("gprs-config"), {.before = "rm " SETTINGS "gprs-config"}},
        {"--start-usb-eth-if usb-auto",
         "Parsing IP config file\nOpen failed\n: Permission denied\nstatus 2\n",
         {.faults = "fopen 1 13"}},
        {"--start-usb-eth-if usb-auto", "status 4\n", {.faults = "malloc 1 12"}},
        {"--start-usb-eth-if ../../../tmp/x", ip_read + "status 1\n", {.before = "echo config=DHCP >/tmp/x"}},
        link("--stop-usb-eth-if", "config=manual\n", "No IP address specified\nstatus 1\n"),
        link("--start-gprs-if", manual, modem_read + lacking, {.files = {{SETTINGS "gprs-config", "device=x\n"}}}),
    });
}

TEST_F(Links, GprsIsThePppDaemonsWork) {
    auto gprs = [](const std::string &text, const std::string &outcome, device in, const std::string &config = modem) {
        in.files.insert(in.files.begin(), {{SETTINGS "gprs-config", config}});
        return link("--start-gprs-if", text, outcome, in);
    };
    const std::string resolv = "echo nameserver 9.9.9.9 >/etc/ppp/resolv.conf;";
    const std::string open_secrets = "cd /etc/ppp; umask 077; echo old | tee pap-secrets >srp-secrets;"
                                     "umask 0; echo old >chap-secrets";
    const std::string look = "cd /etc/ppp; cat pppd-config; grep . *-secrets; stat -c %a *-secrets;"
                             "cat /etc/resolv.conf";
    std::string sleeps;
    for (int i = 0; i < 10; i++)
        sleeps += "$ sleep 1\n";
    std::string automatic = options;
    automatic.insert(automatic.find("user"), "defaultroute\n").append("usepeerdns\n");
    std::string no_user = modem, no_password = modem;
    no_user.erase(no_user.find("user"), sizeof "user=web");
    no_password.erase(no_password.find("password"), sizeof "password=pw");
    const std::string success = pppd + "start_gprs_if successful\nstatus 0\n";
    const std::string failure = "start_pppd failed\nstatus 4\n";
    const std::string no_open = modem_read + "Open failed: Is a directory\nstart_pppd failed\nstatus 2\n";
    expect_transcripts({
        gprs(dhcp,
             success + automatic +
                 "chap-secrets:'web' * 'pw' *\npap-secrets:old\nsrp-secrets:old\n600\n600\n600\n"
                 "nameserver 9.9.9.9\n",
             {.before = resolv + open_secrets, .after = look}),
        gprs(manual, pppd + by_hand("ppp0") + "status 0\n" + options,
             {.before = resolv, .after = "cat /etc/ppp/pppd-config"}),
        gprs(dhcp, success + "* * 'pw' *\n", {.before = resolv, .after = "cat /etc/ppp/chap-secrets"}, no_user),
        gprs(dhcp, success + "pppd-config\n", {.replies = "pppd signal 4", .before = resolv, .after = "ls /etc/ppp"},
             no_password),
        gprs(manual, pppd + sleeps + "/etc/ppp/resolv.conf couldn't be found: No such file or directory\n" + failure,
             {.faults = "none 1 1"}),
        gprs(manual, pppd + "/etc/ppp/resolv.conf move failed: Invalid cross-device link\n" + failure,
             {.before = resolv, .faults = "rename 1 18"}),
        gprs(manual, modem_read + "fork fail\n" + failure, {.before = resolv, .faults = "fork 1 11"}),
        gprs(manual, no_open, {.before = "mkdir /etc/ppp/pppd-config"}),
        gprs(manual, no_open, {.before = "mkdir /etc/ppp/chap-secrets"}),
        gprs(manual, modem_read + failure, {.launcher = "sh -c 'trap \"\" XFSZ; ulimit -f 0; exec \"$@\"' --"}),
    });
}

TEST_F(Links, StopUndoesTheStart) {
    expect_transcripts({
        link("--stop-usb-eth-if", manual, clear("usb0") + flushed(0) + "$ ifconfig usb0 down\nstatus 0\n"),
        link("--stop-bluetooth-pan-if", dhcp,
             release + "$ ps\n" + flushed(0) + "$ ifconfig bnep0 down\nstatus 0\ninterface \"-r\" {\n",
             {.before = dhcp_runs, .after = "head -1 /etc/dhclient.conf; ls /var/run | grep dhc"}),
        link("--stop-wifi-if", manual,
             "$ wpa_cli terminate\n" + clear("wlan0") + flushed(0) + "$ ifconfig wlan0 down\nstatus 0\n",
             {.before = supplicant_runs}),
        link("--stop-wifi-if", manual, clear("wlan0") + flushed(0) + "$ ifconfig wlan0 down\nstatus 0\n"),
        link("--stop-gprs-if", dhcp, "$ ps\n" + flushed(0) + "status 0\n", {.before = "touch /var/run/ppp0.pid"}),
        link("--stop-gprs-if", manual, flushed(0) + clear("ppp0") + "$ ifconfig ppp0 down\nstatus 0\n"),
    });
}

TEST_F(Links, StopGoesOnAfterEachFailure) {
    const std::string no_ps = "Call to fork failed, error 11\n";
    const std::string no_route = "Failed to disable default gateway for ";
    expect_transcripts({
        link("--stop-usb-eth-if", manual,
             clear("usb0") + no_route + "usb0 interface.\n" +
                 flushed(1, "Failed to flush IP table rules for output chain.\n",
                         "Failed to flush IP table rules for input chain.\n") +
                 "$ ifconfig usb0 down\nFailed to release IP address.\nstatus 4\n",
             {.replies = "iptables exit 1, route exit 7, ifconfig exit 1, mount exit 1"}),
        link("--stop-gprs-if", manual,
             flushed(0) + clear("ppp0") + no_route + "ppp0 interface.\n$ ifconfig ppp0 down\nstatus 4\n",
             {.replies = "route exit 7"}),
        link("--stop-bluetooth-pan-if", manual,
             clear("bnep0") + no_route + "bnep0 interface.\n" + flushed(0) + "$ ifconfig bnep0 down\nstatus 4\n",
             {.replies = "route exit 7"}),
        link("--stop-usb-eth-if", dhcp,
             release + "Failed to release dhclient.\n$ ps\n" + flushed(0) + "$ ifconfig usb0 down\nstatus 4\n",
             {.replies = "dhclient exit 2"}),
        link("--stop-usb-eth-if", dhcp,
             release + no_ps + "Failed to stop dhclient process.\n" + flushed(0) +
                 "$ ifconfig usb0 down\nstatus 0\n99999\n",
             {.before = dhcp_runs, .after = "cat /var/run/dhclient.pid", .faults = "fork 2 11"}),
        link("--stop-gprs-if", dhcp,
             no_ps + "Failed to stop PPP daemon.Failed to stop PPP daemon.\n" + flushed(0) + "status 4\n",
             {.before = "touch /var/run/ppp0.pid", .faults = "fork 1 11"}),
        link("--stop-wifi-if", manual,
             "Call to fork failed in zelta_system_argv, error 11Failed to stop the WPA supplicant.\n"
             "Failed to stop WPA supplicant.\n" +
                 clear("wlan0") + no_route + "wlan0 interface.\n" + flushed(0) + "$ ifconfig wlan0 down\nstatus 4\n",
             {.replies = "route exit 7", .before = supplicant_runs, .faults = "fork 1 11"}),
    });
}

} // namespace
