#include "tests/device.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/wait.h>

namespace zelta::test {

namespace {

constexpr int cannot_simulate = 77;

std::string quoted(const std::string &word) {
    std::string result = "'";
    for (char c : word)
        result += c == '\'' ? "'\\''" : std::string(1, c);
    return result + "'";
}

// The process ids that a transcript cannot foresee read as N.
std::string without_pids(std::string text) {
    constexpr std::string_view mark = "pid=";
    for (size_t at = 0; (at = text.find(mark, at)) != std::string::npos;) {
        at += mark.size();
        text.replace(at, text.find('\n', at) - at, "N");
    }
    return text;
}

struct outcome {
    std::string output;
    int status;
};

outcome run_command(const std::string &command) {
    outcome result = {};
    FILE *stream = popen(command.c_str(), "re");
    std::array<char, 4096> part;
    for (size_t size; (size = fread(part.data(), 1, part.size(), stream)) > 0;)
        result.output.append(part.data(), size);
    result.status = WEXITSTATUS(pclose(stream));
    return result;
}

// A folder that is laid over the device's root, gone again with this object.
struct overlay {
    std::filesystem::path root;

    overlay() {
        char path[] = "/tmp/zelta-device-XXXXXX";
        root = mkdtemp(path);
    }
    ~overlay() {
        std::filesystem::remove_all(root);
    }
    void add(const std::string &path, const std::string &text) const {
        std::filesystem::create_directories((root / path.substr(1)).parent_path());
        std::ofstream(root / path.substr(1), std::ios::binary) << text;
    }
};

// The environment may name a tool that was built for another machine.
std::string setting(const char *name, const char *otherwise) {
    const char *value = getenv(name);
    return value != nullptr ? value : otherwise;
}

outcome run_in_device(const std::string &script, const device_run &run) {
    overlay files;
    for (const auto &[path, text] : run.files)
        files.add(path, text);
    for (std::stringstream replies(run.replies); replies >> std::ws;) {
        std::string program, answer;
        replies >> program >> std::ws;
        std::getline(replies, answer, ',');
        files.add(REPLY + program, answer + "\n");
    }
    if (!run.faults.empty())
        files.add("/run/sim/faults", run.faults);
    files.add("/run/sim/row", script);
    std::string tool = run.faults.empty() ? setting("TOOL", TOOL) : setting("FAULTS_TOOL", FAULTS_TOOL);
    return run_command(DEVICE " --trace --stand-in " STAND_IN " --tool " + tool + " --files " + files.root.string() +
                       " bash /run/sim/row 2>&1");
}

} // namespace

void DeviceTest::SetUp() {
    static const int status = run_in_device("true", {}).status;
    if (status == cannot_simulate)
        GTEST_SKIP() << "no private namespaces here";
}

int tool_bits() {
    std::ifstream tool(setting("TOOL", TOOL), std::ios::binary);
    constexpr int class_offset = 4, class_32 = 1;
    tool.seekg(class_offset);
    return tool.get() == class_32 ? 32 : 64;
}

std::string transcript(const device_run &run) {
    std::string script = run.before + "\n" + run.launcher + " zelta-ip";
    for (const std::string &argument : run.arguments)
        script += " " + quoted(argument);
    script += "\necho \"status $?\"\n" + run.after + "\n";
    std::string output = run_in_device(script, run).output;
    constexpr std::string_view banner = "\nZelta IP Tool\n";
    if (output.compare(0, banner.size(), banner) != 0)
        return "no banner: " + output;
    output.erase(0, banner.size());
    return without_pids(output);
}

std::string device_shell(const std::string &script, const device_run &device) {
    return run_in_device(script, device).output;
}

void expect_transcripts(const std::vector<expected_run> &rows) {
    for (const expected_run &row : rows) {
        std::string label;
        for (const std::string &argument : row.run.arguments)
            label += argument + " ";
        for (const auto &[path, text] : row.run.files)
            label += "| " + text.substr(0, 200);
        SCOPED_TRACE(label + "| " + row.run.replies + "| " + row.run.before + "| " + row.run.faults);
        EXPECT_EQ(transcript(row.run), row.transcript);
    }
}

std::string filter(const std::string &arguments, int status) {
    std::string result = std::to_string(status);
    return "$ iptables " + arguments + "\nterminated normally status=" + result + "\nparent exit, res=" + result +
           ", pid=N\n";
}

} // namespace zelta::test
