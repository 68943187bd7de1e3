// Runs the real binary in a fresh simulated device and tells what happened there, as one transcript:
// the lines of the tool and, between them, the programs that it ran ("$ iptables -A INPUT ..."), then
// "status N". The banner, which every run begins with, is checked and taken off; process ids, which
// change, read as N.

#pragma once

#include <cerrno>
#include <source_location>
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
    std::string faults = {};                                     // what fails; sleeping takes no time
    std::string launcher = {}; // a command that starts the tool, such as "setpriv ... --"
};

// The n-th call of this C library function fails with this error.
std::string fails(const std::string &function, int error, int call = 1);
// Faults that never strike, but without sleep.
inline const std::string no_sleep = fails("none", 0);
// A shell command that makes a supplicant seem to run.
inline constexpr char supplicant_runs[] = "cd /var/run; mkdir -p wpa_supplicant; touch wpa_supplicant/wlan0; ";

// What a shell script prints in a device, where it can run the tool many times.
std::string device_shell(const std::string &script, const device &in = {});

using here = std::source_location;

struct tool_run {
    std::string arguments, transcript; // arguments are the words of a shell
    device in = {};
    here where = here::current(); // the row
};

// Whether the devices have no other user: an ordinary user started the tests.
bool only_root();

// Runs the rows one after another, each in a device of its own; skips the test where it had to pass over
// rows that another user starts.
void expect_transcripts(const std::vector<tool_run> &rows);

// One run of the packet filter that ends normally: its line, then what the tool reports on it.
std::string filter_run(const std::string &arguments, int status = 0);

// Skips aloud where the machine does not allow the device's namespaces.
class DeviceTest : public testing::Test {
protected:
    void SetUp() override;
};

} // namespace zelta::test
