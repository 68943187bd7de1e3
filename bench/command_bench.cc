// Whole commands against small C programs. Run in the simulated device alone, by command.sh, which
// puts the programs there.

#include <cstdio>
#include <cstdlib>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/rows.h"

using zelta::bench::add;

namespace {

using command = const char *const[];

// The processor time of all children that ended, and of theirs, in microseconds.
double children_time() {
    rusage used;
    getrusage(RUSAGE_CHILDREN, &used);
    return 1e6 * static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
}

double time_start(const char *const *argv) {
    constexpr int starts = 40;
    const double before = children_time();
    for (int i = 0; i < starts; i++) {
        pid_t pid = 0;
        if (posix_spawn(&pid, argv[0], nullptr, nullptr, const_cast<char **>(argv), environ) != 0 ||
            waitpid(pid, nullptr, 0) != pid) {
            perror(argv[0]);
            exit(1);
        }
    }
    return (children_time() - before) / starts;
}

constexpr command open_port = {"/usr/bin/zelta-ip", "--open-port", "tcp", "2000", "in", nullptr};
constexpr command usage = {"/usr/bin/zelta-ip", nullptr};
constexpr command start_one = {"/tmp/start_one", nullptr};
constexpr command empty = {"/tmp/empty", nullptr};

} // namespace

int main(int argc, char **argv) {
    add({.name = "command: a firewall hole, fork and execv",
         .target = 1.05,
         .ours = [] { return time_start(open_port); },
         .theirs = [] { return time_start(start_one); }});
    add({.name = "command: the usage text, an empty program",
         .target = 1.1,
         .ours = [] { return time_start(usage); },
         .theirs = [] { return time_start(empty); }});
    return zelta::bench::run(argc, argv);
}
