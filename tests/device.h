// Runs the real binary in a fresh simulated device and tells what happened there, as one transcript:
// the lines of the tool and, between them, the programs that it ran ("$ iptables -A INPUT ..."), then
// "status N". The banner, which every run begins with, is checked and taken off; process ids, which
// change, read as N.

#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace zelta::test {

// Folders of the device: settings files, and replies that stand-ins give instead of doing their work.
#define SETTINGS "/home/main-user/.ip_config/"
#define REPLY "/run/sim/reply/"

struct device {
    std::vector<std::pair<std::string, std::string>> files = {}; // path and text
    std::string replies = {};                                    // of stand-ins, such as "route exit 7, pppd missing"
    std::string before = {};                                     // shell commands, run as root before the tool
    std::string after = {};                                      // shell commands whose output ends the transcript
    std::string faults = {};   // lines "function n errno": its n-th call fails; sleeping takes no time
    std::string launcher = {}; // a command that starts the tool, such as "setpriv ... --"
};

// Faults that never strike, but without sleep.
inline constexpr char no_sleep[] = "none 1 1";
// A shell command that makes a supplicant seem to run.
inline constexpr char supplicant_runs[] = "cd /var/run; mkdir -p wpa_supplicant; touch wpa_supplicant/wlan0; ";

// What a shell script prints in a device, where it can run the tool many times.
std::string device_shell(const std::string &script, const device &in = {});

struct tool_run {
    std::string arguments, transcript; // arguments are the words of a shell
    device in = {};
};

// Runs the rows one after another, each in a device of its own.
void expect_transcripts(const std::vector<tool_run> &rows);

// One run of the packet filter that ends normally: its line, then what the tool reports on it.
std::string filter_run(const std::string &arguments, int status = 0);

// Skips aloud where the machine does not allow the device's namespaces.
class DeviceTest : public testing::Test {
protected:
    void SetUp() override;
};

} // namespace zelta::test
