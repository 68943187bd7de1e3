#include "tests/device.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/wait.h>

namespace zelta::test {

namespace {

constexpr int cannot_simulate = 77;

// The environment may name a tool that was built for another machine.
std::string setting(const char *name, const char *otherwise) {
    const char *value = getenv(name);
    return value != nullptr ? value : otherwise;
}

// What the script printed, and its exit status.
std::pair<std::string, int> run_in_device(const std::string &script, const device &in) {
    char name[] = "/tmp/zelta-device-XXXXXX";
    const std::filesystem::path root = mkdtemp(name);
    auto files = in.files;
    files.insert(files.end(), {{"/run/sim/row", script}, {"/run/sim/faults", in.faults}});
    std::stringstream replies(in.replies);
    for (std::string program, reply; replies >> program && std::getline(replies >> std::ws, reply, ',');)
        files.push_back({REPLY + program, reply + "\n"});
    for (const auto &[path, text] : files) {
        create_directories((root / path.substr(1)).parent_path());
        std::ofstream(root / path.substr(1), std::ios::binary) << text;
    }
    const std::string tool = in.faults.empty() ? setting("TOOL", TOOL) : setting("FAULTS_TOOL", FAULTS_TOOL);
    const std::string enter =
        DEVICE " --trace --stand-in '" STAND_IN "' --tool '" + tool + "' --files " + root.string();
    std::string output;
    FILE *stream = popen((enter + " bash /run/sim/row 2>&1").c_str(), "re");
    for (int c = getc(stream); c != EOF; c = getc(stream))
        output += static_cast<char>(c);
    const int status = WEXITSTATUS(pclose(stream));
    remove_all(root);
    return {output, status};
}

std::string transcript(const tool_run &row) {
    const std::string script = row.in.before + "\n" + row.in.launcher + " zelta-ip " + row.arguments +
                               "\necho \"status $?\"\n" + row.in.after + "\n";
    std::string output = device_shell(script, row.in), banner = "\nZelta IP Tool\n", pid = "pid=";
    if (!output.starts_with(banner))
        return "no banner: " + output;
    for (size_t at = output.find(pid); at != std::string::npos; at = output.find(pid, at + 1))
        output.replace(at, output.find('\n', at) - at, pid + "N");
    return output.substr(banner.size());
}

} // namespace

void DeviceTest::SetUp() {
    static const auto [problem, status] = run_in_device("true", {});
    if (status == cannot_simulate)
        GTEST_SKIP() << problem;
}

bool only_root() {
    static const bool result = run_in_device("setpriv --reuid 500 --clear-groups true", {}).second != 0;
    return result;
}

std::string device_shell(const std::string &script, const device &in) { return run_in_device(script, in).first; }

void expect_transcripts(const std::vector<tool_run> &rows) {
    bool passed_over = false;
    for (const tool_run &row : rows) {
        if (row.in.launcher.find("--reuid") != std::string::npos && only_root()) {
            passed_over = true;
            continue;
        }
        testing::ScopedTrace trace(row.where.file_name(), static_cast<int>(row.where.line()), row.arguments);
        EXPECT_EQ(transcript(row), row.transcript);
    }
    if (passed_over)
        GTEST_SKIP() << "skipped: what other users than root do, whom an ordinary user's device has not";
}

std::string fails(const std::string &function, int error, int call) {
    return function + " " + std::to_string(call) + " " + std::to_string(error) + "\n";
}

std::string filter_run(const std::string &arguments, int status) {
    const std::string result = std::to_string(status);
    return "$ iptables " + arguments + "\nterminated normally status=" + result + "\nparent exit, res=" + result +
           ", pid=N\n";
}

} // namespace zelta::test
