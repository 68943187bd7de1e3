#include "tests/device.h"

using namespace zelta::test;

namespace {

using Scan = DeviceTest;

const std::string header = "Scan completed.\n"
                           "Link Quality | Signal Level | Noise Level | Security type | SSID\n";
const std::string iwlist = "$ iwlist wlan0 scan\n";
const std::string start = "$ wpa_supplicant -iwlan0 -C /var/run/wpa_supplicant -B\n";
const std::string stop = "$ wpa_cli terminate\n";
const std::string first = "          Cell 01 - Address: 02:00:00:00:00:01\n";

std::string essid(const std::string &name) {
    return "                    ESSID:\"" + name + "\"\n";
}

std::string line(const std::string &ssid, const std::string &security = "[NONE]", const std::string &quality = "NA",
                 const std::string &signal = "NA", const std::string &noise = "NA") {
    return quality + "\t\t " + signal + "\t\t" + noise + "       " + security + "  " + ssid + "\n";
}

// A scan of this listing while a supplicant runs.
tool_run listing(const std::string &text, const std::string &report) {
    return {"--wifi-scan", iwlist + report, {.files = {{REPLY "iwlist", "print\n" + text}}, .before = supplicant_runs}};
}

TEST_F(Scan, ReportsEachCellWithAnSsid) {
    const std::string good = "status 0\n", dropped = header + "SSID format error.\n" + good;
    const std::string none = "SSID not found.\n", s35(35, 's');
    const std::string levels = "  Quality=70/70/700  Signal level=-123456 dBm  Noise level=-654321 dBm\n";
    const std::string elements = "  Encryption key:on\n" + essid("office") +
                                 "  IE: Unknown: 000\n  IE: IEEE 802.11i/WPA2 Version 1\n"
                                 "      Authentication Suites (1) : PSK\n";
    std::string full = first;
    for (int i = 0; i < 20; i++)
        full += std::string(98, 'x') + "\n";
    expect_transcripts({
        listing("", good),
        listing("wlan0     No scan results\n", good),
        listing(first + levels + elements,
                header + line("office", "[WPA2-PSK-CCMP]", "70/70/700", "-123456", "-654321") + good),
        listing(first + essid("x") + "Quality=70/70/7000  Signal level=-1234567  Noise level=-7654321 \n",
                header + line("x") + good),
        listing(first + essid("a") + first + "ESSID:\"b\"", header + line("a") + line("b") + good),
        listing(first + essid("a") + "Cell" + std::string(95, ' '), header + line("a") + none + good),
        listing(first + essid("Cellar"), header + none + line("Cellar") + good),
        listing(first + "ESSID:off\n", dropped),
        listing(first + "ESSID:\"off\n", dropped),
        listing(first + essid(s35), header + line(s35) + good),
        listing(first + essid(s35 + "s"), header + good),
        // 46 + 20 * 99 characters leave room for 22: not for the SSID's line, but for the last one.
        listing(full + essid("left out") + "ESSID:\"fits\"\n", header + line("fits") + good),
    });
}

TEST_F(Scan, StopsOnlyTheSupplicantItStarted) {
    auto scan = [](const std::string &reply, const std::string &before, const std::string &outcome,
                   const std::string &faults = "") {
        const device in = {.files = {{REPLY "iwlist", reply}}, .before = before, .faults = faults};
        return tool_run{"--wifi-scan", outcome, in};
    };
    const std::string cell = "print\n" + first + essid("a"), none = "missing\n", found = iwlist + header;
    const std::string no_fork = "Call to fork failed", not_started = "Failed to start the scan.\n";
    expect_transcripts({
        scan(cell, "", start + found + line("a") + stop + "status 0\n"),
        scan(none, "", start + stop + "status 0\n"),
        scan("signal 9\n" + first, supplicant_runs, found + "SSID not found.\nstatus 0\n"),
        scan(cell, "", no_fork + " in zelta_system_argv, error 11Failed to start WPA supplicant.\nstatus 4\n",
             "fork 1 11"),
        scan(cell, "", start + no_fork + ", error 11\n" + not_started + stop + "status 4\n", "fork 2 11"),
        scan(cell, supplicant_runs, not_started + "status 4\n", "pipe 1 24"),
        scan(none, supplicant_runs, not_started + "status 4\n", "fdopen 1 12"),
        scan(cell, "", start + iwlist + "Failed to scan\n" + stop + "status 4\n", "fgets 1 5"),
        scan(cell + first + essid("b"), supplicant_runs, found + line("a") + "Failed to scan - 1\nstatus 4\n",
             "fgets 4 5\nferror 1 5\nferror 1 5"),
    });
}

TEST_F(Scan, TakesTenThousandCells) {
    const std::string script = R"(
exec 2>/dev/null; rm /run/sim/trace
{ echo print; seq -f 'Cell
ESSID:"%g"' 10000; } >/run/sim/reply/iwlist
zelta-ip --wifi-scan | tail -n +5 >/tmp/report
seq -f $'NA\t\t NA\t\tNA       [NONE]  %g' 10000 | cmp - /tmp/report && echo same)";
    EXPECT_EQ(device_shell(supplicant_runs + script), "same\n");
}

} // namespace
