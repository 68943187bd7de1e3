#include "tests/device.h"

using namespace zelta::test;

namespace {

using Scan = DeviceTest;

const std::string header = "Scan completed.\n"
                           "Link Quality | Signal Level | Noise Level | Security type | SSID\n";
const std::string iwlist = "$ iwlist wlan0 scan\n";
const std::string start = "$ wpa_supplicant -iwlan0 -C /var/run/wpa_supplicant -B\n";
const std::string stop = "$ wpa_cli terminate\n";
const std::string marker = "mkdir -p /var/run/wpa_supplicant; touch /var/run/wpa_supplicant/wlan0";
const std::string first = "          Cell 01 - Address: 02:00:00:00:00:01\n";

std::string essid(const std::string &name) {
    return "                    ESSID:\"" + name + "\"\n";
}

std::string line(const std::string &ssid, const std::string &security = "[NONE]", const std::string &quality = "NA",
                 const std::string &signal = "NA", const std::string &noise = "NA") {
    return quality + "\t\t " + signal + "\t\t" + noise + "       " + security + "  " + ssid + "\n";
}

// A scan of this listing while a supplicant runs.
expected_run listing(const std::string &text, const std::string &report) {
    return {{.arguments = {"--wifi-scan"}, .files = {{REPLY "iwlist", "print\n" + text}}, .before = marker},
            iwlist + report};
}

TEST_F(Scan, ReportsEachCellWithAnSsid) {
    const std::string dropped = header + "SSID format error.\nstatus 0\n";
    const std::string elements = "                    Quality=70/70  Signal level=-36 dBm  Noise level=-90 dBm\n"
                                 "                    Encryption key:on\n" +
                                 essid("office") +
                                 "                    IE: Unknown: 000\n"
                                 "                    IE: IEEE 802.11i/WPA2 Version 1\n"
                                 "                        Authentication Suites (1) : PSK\n";
    const std::string filler = std::string(98, 'x') + "\n";
    std::string full = first, exact = "Cell" + std::string(95, ' ');
    for (int i = 0; i < 20; i++)
        full += filler;
    expect_transcripts({
        listing("", "status 0\n"),
        listing("wlan0     No scan results\n", "status 0\n"),
        listing(first + elements, header + line("office", "[WPA2-PSK-CCMP]", "70/70", "-36", "-90") + "status 0\n"),
        listing(first + essid("x") + "Quality=70/70/70/7 Signal level=-123456789 dBm\n",
                header + line("x") + "status 0\n"),
        listing(first + essid("a") + first + "ESSID:\"b\"", header + line("a") + line("b") + "status 0\n"),
        listing(first + essid("a") + "Cell 02", header + line("a") + "status 0\n"),
        listing(first + essid("a") + exact, header + line("a") + "SSID not found.\nstatus 0\n"),
        listing("Cell 01", header + "status 0\n"),
        listing(first + essid("Cellar"), header + "SSID not found.\n" + line("Cellar") + "status 0\n"),
        listing(first + "Channel:1\n", header + "SSID not found.\nstatus 0\n"),
        listing(first + "ESSID:off\n", dropped),
        listing(first + "ESSID:\"off\n", dropped),
        listing(first + essid(""), header + line("") + "status 0\n"),
        listing(first + essid(std::string(35, 's')), header + line(std::string(35, 's')) + "status 0\n"),
        listing(first + essid(std::string(36, 's')), header + "status 0\n"),
        listing("Cell" + std::string(95, 'x') + "ESSID:\"a\"" + std::string(90, 'y') + "Cell\n" + essid("b"),
                header + line("a") + line("b") + "status 0\n"),
        // 46 + 20 * 99 characters leave room for 22: not for the SSID's line, but for the last one.
        listing(full + essid("left out") + "ESSID:\"fits\"\n", header + line("fits") + "status 0\n"),
    });
}

TEST_F(Scan, StopsOnlyTheSupplicantItStarted) {
    auto scan = [](const std::string &reply, const std::string &before, const std::string &outcome,
                   const std::string &faults = "") {
        return expected_run{
            {.arguments = {"--wifi-scan"}, .files = {{REPLY "iwlist", reply}}, .before = before, .faults = faults},
            outcome};
    };
    const std::string cell = "print\n" + first + essid("a");
    const std::string no_fork = "Call to fork failed, error 11\n";
    const std::string not_started = "Failed to start the scan.\n";
    expect_transcripts({
        scan(cell, "", start + iwlist + header + line("a") + stop + "status 0\n"),
        scan("missing\n", "", start + stop + "status 0\n"),
        scan("signal 9\n" + first, marker, iwlist + header + "SSID not found.\nstatus 0\n"),
        scan(cell, "",
             "Call to fork failed in zelta_system_argv, error 11"
             "Failed to start WPA supplicant.\nstatus 4\n",
             "fork 1 11"),
        scan(cell, "", start + no_fork + not_started + stop + "status 4\n", "fork 2 11"),
        scan(cell, marker, not_started + "status 4\n", "pipe 1 24"),
        scan("missing\n", marker, not_started + "status 4\n", "fdopen 1 12"),
        scan(cell, "", start + iwlist + "Failed to scan\n" + stop + "status 4\n", "fgets 1 5"),
        scan(cell + first + essid("b"), marker, iwlist + header + line("a") + "Failed to scan - 1\nstatus 4\n",
             "fgets 4 5\nferror 1 5\nferror 1 5"),
    });
}

TEST_F(Scan, TakesTenThousandCells) {
    const std::string script = R"(
exec 2>/dev/null; rm /run/sim/trace
mkdir -p /var/run/wpa_supplicant; touch /var/run/wpa_supplicant/wlan0
{ echo print; seq -f 'Cell
ESSID:"%g"' 10000; } >/run/sim/reply/iwlist
zelta-ip --wifi-scan | tail -n +5 >/tmp/report
seq -f $'NA\t\t NA\t\tNA       [NONE]  %g' 10000 | cmp - /tmp/report && echo same)";
    EXPECT_EQ(device_shell(script), "same\n");
}

} // namespace
