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
const std::string wlan_read = "Parsing WLAN IP config file\n" + parsed + "Validate IP config file\n";
const std::string supplicant =
    "Parsing WLAN config file\n" + parsed + "$ wpa_supplicant -iwlan0 -c" SETTINGS "wlan-config -B\n";
const std::string modem_read = "Parsing GPRS config file\n" + parsed + "Validate GPRS config file\n";
const std::string done = "init_network_if successful\nstatus 0\n";
const std::string failed = "init_network_if unsuccessful\nstatus 4\n";
const std::string release = "Clearing Auto IP config setting\n$ dhclient -r\n";
const std::string dhcp_runs = "echo 99999 >/var/run/dhclient.pid";

std::string route(const std::string &interface, const std::string &verb = "add") {
    return "$ route " + verb + " default netmask 255.0.0.0 gw 10.0.0.1 " + interface + "\n";
}

std::string holes(int status = 0) {
    return "Auto IP config\n" + filter_run("-A OUTPUT -p udp --dport 67 -j ACCEPT", status) +
           filter_run("-A INPUT -p udp --dport 68 -j ACCEPT", status);
}

std::string by_hand(const std::string &interface) {
    return "Manual IP config\n$ ifconfig " + interface + " 10.0.0.2 netmask 255.0.0.0\n" + route(interface);
}

std::string clear(const std::string &interface) { return "Clearing Manual IP config\n" + route(interface, "del"); }

// What a stop prints from the flushes on.
std::string flushed(int status = 0, const std::string &failure = "", const std::string &failure2 = "") {
    return filter_run("--flush OUTPUT", status) + failure + filter_run("--flush INPUT", status) + failure2 +
           "$ mount -o remount,exec /etc/\n$ zelta-net\n$ mount -o remount,noexec /etc/\n";
}

std::string down(const std::string &interface) { return "$ ifconfig " + interface + " down\n"; }

// A command on the settings file "s" with this text, and what follows the reading of that file; the
// device's programs do nothing, and succeed.
tool_run link(const std::string &option, const std::string &text, const std::string &outcome, device in = {},
              here where = here::current()) {
    in.files.insert(in.files.begin(), {{SETTINGS "s", text}, {SETTINGS "wlan-config", "ap=1\n"}});
    in.replies = "ifconfig exit 0, route exit 0, dhclient exit 0, wpa_supplicant exit 0, pppd exit 0,"
                 "wpa_cli exit 0, mount exit 0, zelta-net exit 0, iptables exit 0, " +
                 in.replies;
    return {option + " s", (option.ends_with("wifi-if") ? wlan_read : ip_read) + outcome, in, where};
}

TEST_F(Links, StartByDhcpOrByHand) {
    const std::string usb = "--start-usb-eth-if", pan = "--start-bluetooth-pan-if", wifi = "--start-wifi-if";
    const std::string conf = std::string("interface \"usb0\" {\n") + dhcp_conf;
    expect_transcripts({
        link(usb, dhcp, holes() + "$ dhclient usb0\n" + done + conf + "644\n",
             {.after = "cd /etc; cat dhclient.conf; stat -c %a dhclient.conf"}),
        link(pan, dhcp, "Auto IP config\n" + done, {.before = dhcp_runs}),
        link(pan, manual, by_hand("bnep0") + done),
        link(usb, manual, by_hand("usb0") + done, {.before = dhcp_runs}),
        link(wifi, dhcp, supplicant + holes() + "$ dhclient wlan0\n" + done),
        link(wifi, manual, supplicant + by_hand("wlan0") + done, {.replies = "wpa_supplicant exit 255"}),
    });
}

TEST_F(Links, StartAttemptsEveryStep) {
    const std::string usb = "--start-usb-eth-if";
    expect_transcripts({
        link(usb, dhcp, holes(3) + "$ dhclient usb0\n" + failed, {.replies = "iptables exit 3"}),
        link(usb, dhcp, holes() + failed, {.before = "ln -s /dev/full /etc/dhclient.conf"}),
        link(usb, dhcp, holes() + failed, {.before = "mkdir /etc/dhclient.conf"}),
        link(usb, dhcp, holes() + failed, {.faults = fails("fdopen", ENOMEM)}),
        link(usb, dhcp, holes() + failed, {.faults = fails("fprintf", ENOSPC)}),
        link(usb, dhcp, holes() + failed + "1\n",
             {.after = "[ -e /etc/dhclient.conf ]; echo $?", .faults = fails("gethostname", EFAULT)}),
        link(usb, manual, "Manual IP config\nchild exit???\n" + route("usb0") + failed,
             {.replies = "ifconfig missing"}),
        link(usb, manual, "Manual IP config\nfork fail\n" + route("usb0") + failed, {.faults = fails("fork", EAGAIN)}),
        link(usb, manual, by_hand("usb0") + "parent exit\n" + failed, {.faults = fails("waitpid", EINTR, 2)}),
        link(usb, manual, by_hand("usb0") + failed, {.replies = "route signal 4"}),
    });
}

TEST_F(Links, StartNeedsItsSettings) {
    auto missing = [](const std::string &file) {
        return SETTINGS + file + " not found (reason: No such file or directory)\nstatus 2\n";
    };
    const std::string lacking = "Unrecognised secrets file type ((null))\nstatus 1\n";
    const std::string refused = "Open failed\n: Permission denied\nstatus 2\n", second_file = fails("fopen", EACCES, 2);
    expect_transcripts({
        {"--stop-wifi-if none", missing("none")},
        {"--start-wifi-if wifi-auto", missing("wlan-config"), {.before = "rm " SETTINGS "wlan-config"}},
        {"--start-gprs-if gprs-auto", missing("gprs-config"), {.before = "rm " SETTINGS "gprs-config"}},
        {"--start-usb-eth-if usb-auto", "Parsing IP config file\n" + refused, {.faults = fails("fopen", EACCES)}},
        {"--start-wifi-if wifi-auto", wlan_read + "Parsing WLAN config file\n" + refused, {.faults = second_file}},
        {"--start-gprs-if gprs-auto", ip_read + "Parsing GPRS config file\n" + refused, {.faults = second_file}},
        {"--start-usb-eth-if usb-auto", "status 4\n", {.faults = fails("malloc", ENOMEM)}},
        {"--start-usb-eth-if usb-auto", ip_read + "status 1\n", {.faults = fails("strdup", ENOMEM, 2)}},
        {"--start-usb-eth-if ../../../tmp/x", ip_read + "status 1\n", {.before = "echo config=DHCP >/tmp/x"}},
        link("--stop-usb-eth-if", "config=manual\n", "No IP address specified\nstatus 1\n"),
        link("--start-usb-eth-if", std::string((1 << 20) - 1, 'x') + "\nconfig=manual\n",
             "No IP address specified\nstatus 1\n"),
        link("--start-usb-eth-if", std::string(1 << 20, 'x') + "\nconfig=manual\n", "status 1\n"),
        link("--start-gprs-if", manual, modem_read + lacking, {.files = {{SETTINGS "gprs-config", "device=x\n"}}}),
    });
}

TEST_F(Links, GprsIsThePppDaemonsWork) {
    auto gprs = [](const std::string &text, const std::string &outcome, device in, const std::string &config = modem,
                   here where = here::current()) {
        in.files.insert(in.files.begin(), {{SETTINGS "gprs-config", config}});
        return link("--start-gprs-if", text, modem_read + outcome, in, where);
    };
    const std::string pppd = "$ pppd file /etc/ppp/pppd-config\n",
                      resolv = "echo server 9.9.9.9 >/etc/ppp/resolv.conf;";
    const std::string open_secrets = "cd /etc/ppp; umask 077; echo old | tee pap-secrets >srp-secrets;"
                                     "umask 0; echo old >chap-secrets";
    const std::string look =
        "cd /etc/ppp; cat pppd-config; grep . *-secrets; stat -c %a *-secrets; cat /etc/resolv.conf";
    const std::string secrets = "chap-secrets:'web' * 'pw' *\npap-secrets:old\nsrp-secrets:old\n600\n600\n600\n";
    std::string sleeps, automatic = options, no_user = modem, no_password = modem;
    for (int i = 0; i < 10; i++)
        sleeps += "$ sleep 1\n";
    automatic.insert(automatic.find("user"), "defaultroute\n").append("usepeerdns\n");
    no_user.erase(no_user.find("user"), sizeof "user=web");
    no_password.erase(no_password.find("password"), sizeof "password=pw");
    const std::string success = pppd + "start_gprs_if successful\nstatus 0\n", path = "/etc/ppp/resolv.conf ";
    const std::string failure = "start_pppd failed\nstatus 4\n";
    const std::string no_open = "Open failed: Is a directory\nstart_pppd failed\nstatus 2\n";
    expect_transcripts({
        gprs(dhcp, success + automatic + secrets + "server 9.9.9.9\n",
             {.before = resolv + open_secrets, .after = look}),
        gprs(manual, pppd + by_hand("ppp0") + "status 0\n" + options,
             {.before = resolv, .after = "cat /etc/ppp/pppd-config"}),
        gprs(dhcp, success + "* * 'pw' *\n600 0:0\n",
             {.before = resolv, .after = "cd /etc/ppp; cat chap-secrets; stat -c '%a %u:%g' c*"}, no_user),
        gprs(dhcp, success + "pppd-config\n", {.replies = "pppd signal 4", .before = resolv, .after = "ls /etc/ppp"},
             no_password),
        gprs(manual, pppd + sleeps + path + "couldn't be found: No such file or directory\n" + failure,
             {.faults = no_sleep}),
        gprs(manual, pppd + path + "move failed: Invalid cross-device link\n" + failure,
             {.before = resolv, .faults = fails("rename", EXDEV)}),
        gprs(manual, "fork fail\n" + failure, {.before = resolv, .faults = fails("fork", EAGAIN)}),
        gprs(manual, pppd + "parent exit\n" + failure, {.before = resolv, .faults = fails("waitpid", ECHILD)}),
        gprs(manual, no_open, {.before = "mkdir /etc/ppp/pppd-config"}),
        gprs(manual, no_open, {.before = "mkdir /etc/ppp/chap-secrets"}),
        gprs(manual, failure, {.launcher = "sh -c 'trap \"\" XFSZ; ulimit -f 0; exec \"$@\"' --"}),
    });
}

TEST_F(Links, StopUndoesTheStart) {
    const std::string usb = "--stop-usb-eth-if", pan = "--stop-bluetooth-pan-if", wifi = "--stop-wifi-if";
    expect_transcripts({
        link(usb, manual, clear("usb0") + flushed() + down("usb0") + "status 0\n"),
        link(pan, dhcp, release + "$ ps\n" + flushed() + down("bnep0") + "status 0\ninterface \"-r\" {\n",
             {.before = dhcp_runs, .after = "head -1 /etc/dhclient.conf; ls /var/run | grep dhc"}),
        link(wifi, manual, "$ wpa_cli terminate\n" + clear("wlan0") + flushed() + down("wlan0") + "status 0\n",
             {.before = supplicant_runs}),
        link(wifi, manual, clear("wlan0") + flushed() + down("wlan0") + "status 0\n"),
        // A line that is too long ends the reading of a listing, whose program then writes to nobody.
        link("--stop-gprs-if", dhcp, "$ ps\n" + flushed() + "status 0\n",
             {.files = {{REPLY "ps", "print\n" + std::string(1 << 20, 'x')}}, .before = "touch /var/run/ppp0.pid"}),
        link("--stop-gprs-if", manual, flushed() + clear("ppp0") + down("ppp0") + "status 0\n"),
    });
}

TEST_F(Links, StopGoesOnAfterEachFailure) {
    const std::string usb = "--stop-usb-eth-if", gprs = "--stop-gprs-if", no_fork = "Call to fork failed";
    auto route_fails = [](const std::string &interface) {
        return clear(interface) + "Failed to disable default gateway for " + interface + " interface.\n";
    };
    const std::string no_flush[] = {"Failed to flush IP table rules for output chain.\n",
                                    "Failed to flush IP table rules for input chain.\n"};
    const std::string no_ps = no_fork + ", error 11\n", no_pppd = "Failed to stop PPP daemon.";
    const std::string no_wpa_cli = no_fork + " in zelta_system_argv, error 11Failed to stop the WPA supplicant.\n"
                                             "Failed to stop WPA supplicant.\n";
    expect_transcripts({
        link(usb, manual,
             route_fails("usb0") + flushed(1, no_flush[0], no_flush[1]) + down("usb0") +
                 "Failed to release IP address.\nstatus 4\n",
             {.replies = "iptables exit 1, route exit 7, ifconfig exit 1, mount exit 1"}),
        link(gprs, manual, flushed() + route_fails("ppp0") + down("ppp0") + "status 4\n", {.replies = "route exit 7"}),
        link("--stop-bluetooth-pan-if", manual, route_fails("bnep0") + flushed() + down("bnep0") + "status 4\n",
             {.replies = "route exit 7"}),
        link(usb, dhcp, release + "Failed to release dhclient.\n$ ps\n" + flushed() + down("usb0") + "status 4\n",
             {.replies = "dhclient exit 2"}),
        link(usb, dhcp,
             release + no_ps + "Failed to stop dhclient process.\n" + flushed() + down("usb0") + "status 0\n99999\n",
             {.before = dhcp_runs, .after = "cat /var/run/dhclient.pid", .faults = fails("fork", EAGAIN, 2)}),
        link(gprs, dhcp, no_ps + no_pppd + no_pppd + "\n" + flushed() + "status 4\n",
             {.before = "touch /var/run/ppp0.pid", .faults = fails("fork", EAGAIN)}),
        link("--stop-wifi-if", manual, no_wpa_cli + route_fails("wlan0") + flushed() + down("wlan0") + "status 4\n",
             {.replies = "route exit 7", .before = supplicant_runs, .faults = fails("fork", EAGAIN)}),
    });
}

} // namespace
