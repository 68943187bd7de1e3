// A process list, and the vector of a program. The first line of the input is the vector, its
// arguments separated by blanks; the first of them is the name to look for. The rest is what ps
// prints.

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstring>

#include "app/exit_status.h"
#include "fuzz/surroundings.h"
#include "fuzz/target.h"
#include "process/kill_proc.h"
#include "process/runner.h"

using namespace zelta;
using namespace zelta::fuzz;

namespace {

constexpr size_t most_arguments = 24;

std::vector<std::string> words_of(std::string_view line) {
    std::vector<std::string> words;
    while (!line.empty() && words.size() < most_arguments) {
        words.emplace_back(line.substr(0, line.find(' ')));
        line.remove_prefix(std::min(line.size(), words.back().size() + 1));
    }
    return words;
}

void check_vector(const std::vector<std::string> &words) {
    std::array<const char *, most_arguments> arguments = {};
    std::transform(words.begin(), words.end(), arguments.begin(),
                   [](const std::string &word) { return word.c_str(); });
    int result = 0;
    const auto vector = executed([&] {
        result = std::apply(
            [](auto... each) { return zelta_system("/bin/true", each..., nullptr); }, arguments);
    });
    if (words.size() > 19) {
        require(!vector && result == -1, "a vector that is too long");
        return;
    }
    require(vector && std::equal(vector->begin(), vector->end(), arguments.begin(),
                                 arguments.begin() + words.size()),
            "the vector differs");
}

// The process id that a line begins with; 0 for none that may be signalled.
pid_t id_of(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t\n\v\f\r"), line.size()));
    const size_t blank = line.find(' ');
    if (blank == line.npos)
        return 0;
    if (line[0] == '+' && line[1] != '-')
        line.remove_prefix(1);
    int64_t id = 0;
    std::from_chars(line.begin(), line.end(), id); // leaves the 0 for a number that is too large
    const bool possible = id > 0 && id <= INT_MAX && id != LONG_MAX; // which stands for larger ones
    return possible && id != own_pid ? static_cast<pid_t>(id) : 0;
}

std::vector<signalled_process> plain_reading(std::string_view listing, std::string_view name) {
    std::vector<signalled_process> expected;
    for (size_t end; (end = listing.find('\n')) < 256; listing.remove_prefix(end + 1)) {
        const std::string line = up_to_nul(listing.substr(0, end + 1));
        const pid_t id = !name.empty() && line.find(name) != line.npos ? id_of(line) : 0;
        if (id != 0)
            expected.push_back({id, SIGINT});
    }
    return expected;
}

void check_signals(std::string_view listing, const char *name) {
    around = {.listing = listing};
    int result = exit_invalid;
    const std::string output = printed([&] { result = kill_proc(name); });
    require(result == exit_ok, "the result");
    require(around.signalled == plain_reading(listing, name), "other processes are signalled");
    std::string expected;
    for (const signalled_process &each : around.signalled)
        if (each.pid % 2 != 0)
            expected += "Could not kill process - " + std::to_string(each.pid) + " because of " +
                        strerror(ESRCH) + "\n";
    require(output == expected, "the messages");
    require(mbuf_size(&child_info_mbuf) == 0, "a child is still registered");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view input = as_text(data, size);
    const std::string_view head = input.substr(0, input.find('\n'));
    const std::vector<std::string> words = words_of(head);
    check_vector(words);
    check_signals(input.substr(std::min(input.size(), head.size() + 1)),
                  words.empty() ? "" : words[0].c_str());
    return 0;
}
