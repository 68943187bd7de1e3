#include "tests/device.h"

using namespace zelta::test;

namespace {

using Scan = DeviceTest;

const std::string header = "Scan completed.\n"
                           "Link Quality | Signal Level | Noise Level | Security type | SSID\n";
const std::string iwlist = "$ iwlist wlan0 scan\n";
const std::string start = "$ wpa_supplicant -iwlan0 -C /var/run/wpa_supplicant -B\n"
                          "Successfully initialized wpa_supplicant\n";
const std::string stop = "$ wpa_cli terminate\nSelected interface 'wlan0'\nOK\n";
const std::string first = "          Cell 01 - Address: 02:00:00:00:00:01\n";

const std::string essid = "                    ESSID:\"office\"\n";
const std::string bare = "NA\t\t NA\t\tNA       [NONE]  office\n"; // the report of a cell with nothing else

// Network elements that the scanner does not know ("IE: Unknown") leave the security field empty.
TEST_F(Scan, ReportsARealListing) {
    std::string report = start + iwlist + header;
    for (const char *security_and_ssid :
         {"[WPA2-PSK-CCMP]  office", "  cafe", "[WPA-PSK-TKIP]  old-office", "[WPA2-PSK-CCMP][WPA-PSK-TKIP]  mixed",
          "[WPA2-EAP-CCMP-preauth]  corp", "  new-office", "  attic"})
        report.append("70/70\t\t -30\t\tNA       ").append(security_and_ssid) += "\n";
    expect_transcripts({{"--wifi-scan", report + stop + "status 0\n"}});
}

// What a cell says is the fuzz target's to vary.
TEST_F(Scan, ReportsACell) {
    const std::string cell = first + essid +
                             "  Quality=70/70  Signal level=-36 dBm  Noise level=-90 dBm\n"
                             "  Encryption key:on\n  IE: IEEE 802.11i/WPA2 Version 1\n"
                             "      Authentication Suites (1) : PSK\n";
    expect_transcripts({{"--wifi-scan",
                         iwlist + header + "70/70\t\t -36\t\t-90       [WPA2-PSK-CCMP]  office\nstatus 0\n",
                         {.files = {{REPLY "iwlist", "print\n" + cell}}, .before = supplicant_runs}}});
}

TEST_F(Scan, StopsOnlyTheSupplicantItStarted) {
    auto scan = [](const std::string &reply, const std::string &before, const std::string &outcome,
                   const std::string &faults = "", here where = here::current()) {
        const device in = {.files = {{REPLY "iwlist", reply}}, .before = before, .faults = faults};
        return tool_run{"--wifi-scan", outcome, in, where};
    };
    const std::string cell = "print\n" + first + essid, none = "missing\n", found = iwlist + header;
    const std::string no_fork = "Call to fork failed", not_started = "Failed to start the scan.\n";
    expect_transcripts({
        scan(cell, "", start + found + bare + stop + "status 0\n"),
        scan(none, "", start + stop + "status 0\n"),
        scan("signal 9\n" + first, supplicant_runs, found + "SSID not found.\nstatus 0\n"),
        scan(cell, "", no_fork + " in zelta_system_argv, error 11Failed to start WPA supplicant.\nstatus 4\n",
             fails("fork", EAGAIN)),
        scan(cell, "", start + no_fork + ", error 11\n" + not_started + stop + "status 4\n", fails("fork", EAGAIN, 2)),
        scan(cell, supplicant_runs, not_started + "status 4\n", fails("pipe", EMFILE)),
        scan(none, supplicant_runs, not_started + "status 4\n", fails("fdopen", ENOMEM)),
        scan(cell, "", start + iwlist + "Failed to scan\n" + stop + "status 4\n", fails("fgets", EIO)),
        scan(cell + first + essid, supplicant_runs, found + bare + "Failed to scan - 1\nstatus 4\n",
             fails("fgets", EIO, 4) + fails("ferror", EIO) + fails("ferror", EIO)),
    });
}

} // namespace
