// A process list. The first line of the input is the name to look for, the rest is what ps prints.

#include <algorithm>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstring>

#include "fuzz/target.h"
#include "lib/exit_status.h"
#include "process/kill_proc.h"

using namespace zelta;
using namespace zelta::fuzz;

namespace {

// The process id that a line begins with; 0 for none that may be signalled.
pid_t id_of(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t\n\v\f\r"), line.size()));
    const size_t blank = line.find(' ');
    if (blank == line.npos)
        return 0;
    if (line[0] == '+' && line[1] != '-')
        line.remove_prefix(1);
    int64_t id = 0;
    std::from_chars(line.begin(), line.end(), id);                   // leaves the 0 for a number that is too large
    const bool possible = id > 0 && id <= INT_MAX && id != LONG_MAX; // which stands for larger ones
    return possible && id != own_pid ? static_cast<pid_t>(id) : 0;
}

std::vector<std::pair<pid_t, int>> plain_reading(std::string_view listing, const std::string &name) {
    std::vector<std::pair<pid_t, int>> expected;
    for (size_t end; (end = listing.find('\n')) < 256; listing.remove_prefix(end + 1)) {
        const std::string line = up_to_nul(listing.substr(0, end + 1));
        const pid_t id = !name.empty() && line.find(name) != line.npos ? id_of(line) : 0;
        if (id != 0)
            expected.push_back({id, SIGINT});
    }
    return expected;
}

} // namespace

void zelta::fuzz::take(std::string_view input) {
    const std::string name = up_to_nul(input.substr(0, input.find('\n')));
    around.listing = input.substr(std::min(input.size(), input.find('\n') + 1));
    const auto got = run([&] { return kill_proc(name.c_str()); });
    require(around.signalled == plain_reading(around.listing, name), "other processes are signalled");
    std::string messages;
    for (const auto &[pid, signal] : around.signalled)
        if (pid % 2 != 0)
            messages += "Could not kill process - " + std::to_string(pid) + " because of " + strerror(ESRCH) + "\n";
    require(got == std::pair(exit_ok, messages), got.second);
}
