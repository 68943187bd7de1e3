#include "tests/device.h"

namespace zelta::test {

namespace {

using Links = DeviceTest;

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
const std::string wlan_read = "Parsing WLAN IP config file\n" + parsed +
                              "Validate IP config file\n"
                              "Parsing WLAN config file\n" +
                              parsed;
const std::string gprs_read =
    ip_read + "Parsing GPRS config file\n" + parsed + "Validate GPRS config file\n";
const std::string supplicant = "$ wpa_supplicant -iwlan0 -c" SETTINGS "wlan-config -B\n";
const std::string pppd = "$ pppd file /etc/ppp/pppd-config\n";
const std::string done = "init_network_if successful\nstatus 0\n";
const std::string failed = "init_network_if unsuccessful\nstatus 4\n";
const std::string holes = filter("-A OUTPUT -p udp --dport 67 -j ACCEPT") +
                          filter("-A INPUT -p udp --dport 68 -j ACCEPT");
const std::string dhcp_runs = "echo 99999 >/var/run/dhclient.pid";

std::string by_dhcp(const std::string &interface) {
    return "Auto IP config\n" + holes + "$ dhclient " + interface + "\n";
}

std::string by_hand(const std::string &interface) {
    return "Manual IP config\n$ ifconfig " + interface +
           " 10.0.0.2 netmask 255.0.0.0\n"
           "$ route add default netmask 255.0.0.0 gw 10.0.0.1 " +
           interface + "\n";
}

// A command on the settings file "s" with this text; the device's programs do nothing, and succeed.
device_run link(const std::string &option, const std::string &text, device_run run = {}) {
    run.arguments = {option, "s"};
    run.files.insert(run.files.begin(), {{SETTINGS "s", text}, {SETTINGS "wlan-config", "ap=1\n"}});
    run.replies =
        "ifconfig exit 0, route exit 0, dhclient exit 0, wpa_supplicant exit 0, pppd exit 0,"
        "wpa_cli exit 0, mount exit 0, zelta-net exit 0, iptables exit 0, " +
        run.replies;
    return run;
}

TEST_F(Links, StartByDhcpOrByHand) {
    expect_transcripts({
        {link("--start-usb-eth-if", "config=auto\n", {.after = "cat /etc/dhclient.conf"}),
         ip_read + by_dhcp("usb0") + done + "interface \"usb0\" {\n" + dhcp_conf},
        {link("--start-bluetooth-pan-if", "config=auto\n", {.before = dhcp_runs}),
         ip_read + "Auto IP config\n" + done},
        {link("--start-bluetooth-pan-if", manual), ip_read + by_hand("bnep0") + done},
        {link("--start-usb-eth-if", manual, {.before = dhcp_runs}),
         ip_read + by_hand("usb0") + done},
        {link("--start-wifi-if", "config=auto\n"),
         wlan_read + supplicant + by_dhcp("wlan0") + done},
        {link("--start-wifi-if", manual, {.replies = "wpa_supplicant exit 255"}),
         wlan_read + supplicant + by_hand("wlan0") + done},
    });
}

TEST_F(Links, StartAttemptsEveryStep) {
    expect_transcripts({
        {link("--start-usb-eth-if", "config=auto\n", {.replies = "iptables exit 3"}),
         ip_read + "Auto IP config\n" + filter("-A OUTPUT -p udp --dport 67 -j ACCEPT", 3) +
             filter("-A INPUT -p udp --dport 68 -j ACCEPT", 3) + "$ dhclient usb0\n" + failed},
        {link("--start-usb-eth-if", "config=auto\n",
              {.before = "ln -s /dev/full /etc/dhclient.conf"}),
         ip_read + "Auto IP config\n" + holes + failed},
        {link("--start-usb-eth-if", "config=auto\n", {.before = "mkdir /etc/dhclient.conf"}),
         ip_read + "Auto IP config\n" + holes + failed},
        {link("--start-usb-eth-if", "config=auto\n",
              {.after = "ls /etc/dhclient.conf 2>&1", .faults = "gethostname 1 14"}),
         ip_read + "Auto IP config\n" + holes + failed +
             "ls: cannot access '/etc/dhclient.conf': No such file or directory\n"},
        {link("--start-usb-eth-if", manual, {.replies = "ifconfig missing"}),
         ip_read +
             "Manual IP config\nchild exit???\n"
             "$ route add default netmask 255.0.0.0 gw 10.0.0.1 usb0\n" +
             failed},
        {link("--start-usb-eth-if", manual, {.faults = "fork 1 11"}),
         ip_read +
             "Manual IP config\nfork fail\n"
             "$ route add default netmask 255.0.0.0 gw 10.0.0.1 usb0\n" +
             failed},
        {link("--start-usb-eth-if", manual, {.faults = "waitpid 2 4"}),
         ip_read + by_hand("usb0") + "parent exit\n" + failed},
        {link("--start-usb-eth-if", manual, {.replies = "route signal 4"}),
         ip_read + by_hand("usb0") + failed},
    });
}

TEST_F(Links, StartNeedsItsSettings) {
    const std::string missing = " not found (reason: No such file or directory)\nstatus 2\n";
    const std::string open_failed = "Parsing IP config file\nOpen failed\n: Permission denied\n"
                                    "status 2\n";
    const std::string no_wlan = "rm " SETTINGS "wlan-config";
    device_run no_memory = link("--start-usb-eth-if", manual, {.faults = "malloc 1 12"});
    device_run elsewhere = link("--start-usb-eth-if", "", {.files = {{"/tmp/x", manual}}});
    elsewhere.arguments[1] = "../../../tmp/x";
    expect_transcripts({
        {{.arguments = {"--stop-wifi-if", "none"}}, SETTINGS "none" + missing},
        {link("--start-wifi-if", manual, {.before = no_wlan}), SETTINGS "wlan-config" + missing},
        {link("--start-gprs-if", manual, {.before = "rm -f " SETTINGS "gprs-config"}),
         SETTINGS "gprs-config" + missing},
        {link("--start-usb-eth-if", manual, {.faults = "fopen 1 13"}), open_failed},
        {link("--start-usb-eth-if", "config=dhcp\n"), ip_read + "status 1\n"},
        {link("--stop-usb-eth-if", "config=manual\n"),
         ip_read + "No IP address specified\nstatus 1\n"},
        {link("--start-gprs-if", manual, {.files = {{SETTINGS "gprs-config", "device=x\n"}}}),
         gprs_read + "Unrecognised secrets file type ((null))\nstatus 1\n"},
        {no_memory, "status 4\n"},
        {elsewhere, ip_read + by_hand("usb0") + done},
    });
}

TEST_F(Links, GprsIsThePppDaemonsWork) {
    auto gprs = [](const std::string &text, device_run run, const std::string &config = modem) {
        run.files.insert(run.files.begin(), {{SETTINGS "gprs-config", config}});
        return link("--start-gprs-if", text, run);
    };
    const std::string peer_resolv = "echo nameserver 9.9.9.9 >/etc/ppp/resolv.conf";
    const std::string secret_before =
        "umask 077; cd /etc/ppp; echo old | tee pap-secrets >srp-secrets;"
        "umask 0; echo old >chap-secrets;" +
        peer_resolv;
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
    const std::string short_files = "sh -c 'trap \"\" XFSZ; ulimit -f 0; exec \"$@\"' --";
    expect_transcripts({
        {gprs("config=auto\n", {.before = secret_before, .after = look}),
         gprs_read + pppd + "start_gprs_if successful\nstatus 0\n" + automatic +
             "chap-secrets:'web' * 'pw' *\npap-secrets:old\nsrp-secrets:old\n600\n600\n600\n"
             "nameserver 9.9.9.9\n"},
        {gprs(manual, {.before = peer_resolv, .after = "cat /etc/ppp/pppd-config"}),
         gprs_read + pppd + by_hand("ppp0") + "status 0\n" + options},
        {gprs("config=auto\n", {.before = peer_resolv, .after = "cat /etc/ppp/chap-secrets"},
              no_user),
         gprs_read + pppd + "start_gprs_if successful\nstatus 0\n* * 'pw' *\n"},
        {gprs("config=auto\n",
              {.replies = "pppd signal 4", .before = peer_resolv, .after = "ls /etc/ppp"},
              no_password),
         gprs_read + pppd + "start_gprs_if successful\nstatus 0\npppd-config\n"},
        {gprs(manual, {.faults = "none 1 1"}),
         gprs_read + pppd + sleeps +
             "/etc/ppp/resolv.conf couldn't be found: "
             "No such file or directory\nstart_pppd failed\nstatus 4\n"},
        {gprs(manual, {.before = peer_resolv, .faults = "rename 1 18"}),
         gprs_read + pppd +
             "/etc/ppp/resolv.conf move failed: Invalid cross-device link\n"
             "start_pppd failed\nstatus 4\n"},
        {gprs(manual, {.before = peer_resolv, .faults = "fork 1 11"}),
         gprs_read + "fork fail\nstart_pppd failed\nstatus 4\n"},
        {gprs(manual, {.before = "mkdir /etc/ppp/pppd-config"}),
         gprs_read + "Open failed: Is a directory\nstart_pppd failed\nstatus 2\n"},
        {gprs(manual, {.before = "mkdir /etc/ppp/chap-secrets"}),
         gprs_read + "Open failed: Is a directory\nstart_pppd failed\nstatus 2\n"},
        {gprs(manual, {.launcher = short_files}), gprs_read + "start_pppd failed\nstatus 4\n"},
    });
}

// What a stop prints from the flushes on.
std::string flushed(int status, const std::string &failure = "", const std::string &failure2 = "") {
    return filter("--flush OUTPUT", status) + failure + filter("--flush INPUT", status) + failure2 +
           "$ mount -o remount,exec /etc/\n$ zelta-net\n$ mount -o remount,noexec /etc/\n";
}

TEST_F(Links, StopUndoesTheStart) {
    const std::string clear = "Clearing Manual IP config\n$ route del default netmask 255.0.0.0 gw "
                              "10.0.0.1 ";
    const std::string marked = "mkdir -p /var/run/wpa_supplicant; touch /var/run/ppp0.pid "
                               "/var/run/wpa_supplicant/wlan0";
    std::string wlan_ip_read = ip_read;
    wlan_ip_read.replace(0, 10, "Parsing WLAN IP");
    expect_transcripts({
        {link("--stop-usb-eth-if", manual),
         ip_read + clear + "usb0\n" + flushed(0) + "$ ifconfig usb0 down\nstatus 0\n"},
        {link("--stop-bluetooth-pan-if", "config=auto\n",
              {.before = dhcp_runs,
               .after = "ls /var/run/dhclient.pid 2>&1;"
                        "head -1 /etc/dhclient.conf"}),
         ip_read + "Clearing Auto IP config setting\n$ dhclient -r\n$ ps\n" + flushed(0) +
             "$ ifconfig bnep0 down\nstatus 0\n"
             "ls: cannot access '/var/run/dhclient.pid': No such file or directory\n"
             "interface \"-r\" {\n"},
        {link("--stop-wifi-if", manual, {.before = marked}),
         wlan_ip_read + "$ wpa_cli terminate\n" + clear + "wlan0\n" + flushed(0) +
             "$ ifconfig wlan0 down\nstatus 0\n"},
        {link("--stop-wifi-if", manual, {}),
         wlan_ip_read + clear + "wlan0\n" + flushed(0) + "$ ifconfig wlan0 down\nstatus 0\n"},
        {link("--stop-gprs-if", "config=auto\n", {.before = marked}),
         ip_read + "$ ps\n" + flushed(0) + "status 0\n"},
        {link("--stop-gprs-if", manual),
         ip_read + flushed(0) + clear + "ppp0\n$ ifconfig ppp0 down\nstatus 0\n"},
    });
}

TEST_F(Links, StopGoesOnAfterEachFailure) {
    const std::string output_failed = "Failed to flush IP table rules for output chain.\n";
    const std::string input_failed = "Failed to flush IP table rules for input chain.\n";
    const std::string no_ps = "Call to fork failed, error 11\n";
    expect_transcripts({
        {link("--stop-usb-eth-if", manual,
              {.replies = "iptables exit 1, route exit 7, ifconfig exit 1, mount exit 1"}),
         ip_read +
             "Clearing Manual IP config\n"
             "$ route del default netmask 255.0.0.0 gw 10.0.0.1 usb0\n"
             "Failed to disable default gateway for usb0 interface.\n" +
             flushed(1, output_failed, input_failed) +
             "$ ifconfig usb0 down\nFailed to release IP address.\nstatus 4\n"},
        {link("--stop-usb-eth-if", "config=auto\n", {.replies = "dhclient exit 2"}),
         ip_read +
             "Clearing Auto IP config setting\n$ dhclient -r\nFailed to release dhclient.\n$ ps\n" +
             flushed(0) + "$ ifconfig usb0 down\nstatus 4\n"},
        {link("--stop-usb-eth-if", "config=auto\n",
              {.before = dhcp_runs, .after = "cat /var/run/dhclient.pid", .faults = "fork 2 11"}),
         ip_read + "Clearing Auto IP config setting\n$ dhclient -r\n" + no_ps +
             "Failed to stop dhclient process.\n" + flushed(0) +
             "$ ifconfig usb0 down\nstatus 0\n99999\n"},
        {link("--stop-gprs-if", "config=auto\n",
              {.before = "touch /var/run/ppp0.pid", .faults = "fork 1 11"}),
         ip_read + no_ps + "Failed to stop PPP daemon.Failed to stop PPP daemon.\n" + flushed(0) +
             "status 4\n"},
        {link("--stop-wifi-if", manual,
              {.before = "mkdir /var/run/wpa_supplicant; touch /var/run/wpa_supplicant/wlan0",
               .faults = "fork 1 11"}),
         "Parsing WLAN IP config file\n" + parsed +
             "Validate IP config file\n"
             "Call to fork failed in zelta_system_argv, error 11Failed to stop the WPA "
             "supplicant.\n"
             "Failed to stop WPA supplicant.\nClearing Manual IP config\n"
             "$ route del default netmask 255.0.0.0 gw 10.0.0.1 wlan0\n" +
             flushed(0) + "$ ifconfig wlan0 down\nstatus 4\n"},
    });
}

} // namespace

} // namespace zelta::test
