// Linked into a second build of the tool with the linker's --wrap: the n-th call of a C library
// function fails as the file /run/sim/faults says, lines of "function n errno"; "child-function"
// counts the calls of all children before they become a program. A call that one line fails is not
// counted by the lines below. A fault that struck leaves its name in /run/sim/struck; with a line "any
// 0 0" each call does. A child that nobody waited for leaves /run/sim/unwaited. Sleeping is traced as a
// program would be, and takes no time.

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct fault {
    char function[32];
    int countdown;
    int error;
};

using fault_table = fault[8];
fault_table *faults; // shared with children
pid_t tool;
bool busy; // the C library calls itself below

void append(const char *path, const char *line) {
    busy = true;
    int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    dprintf(file, "%s\n", line);
    close(file);
    busy = false;
}

[[gnu::constructor]] void read_faults() {
    busy = true;
    tool = getpid();
    faults = static_cast<fault_table *>(
        mmap(nullptr, sizeof *faults, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    if (FILE *file = fopen("/run/sim/faults", "re")) {
        for (fault &each : *faults)
            if (fscanf(file, "%31s %d %d", each.function, &each.countdown, &each.error) != 3)
                break;
        fclose(file);
    }
    busy = false;
}

bool strikes(const char *function) {
    char name[sizeof(fault::function)];
    snprintf(name, sizeof name, "%s%s", getpid() == tool ? "" : "child-", function);
    for (fault &each : *faults) {
        const bool any = strcmp(each.function, "any") == 0;
        if (busy || (!any && (strcmp(each.function, name) != 0 || --each.countdown != 0)))
            continue;
        append("/run/sim/struck", name);
        if (!any) {
            errno = each.error;
            return true;
        }
    }
    return false;
}

[[gnu::destructor]] void look_for_children() {
    busy = true;
    if (waitpid(-1, nullptr, WNOHANG) >= 0)
        append("/run/sim/unwaited", "a child");
}

} // namespace

extern "C" unsigned __wrap_sleep(unsigned seconds);
unsigned __wrap_sleep(unsigned seconds) {
    char line[32];
    snprintf(line, sizeof line, "$ sleep %u", seconds);
    fflush(stdout);
    append("/run/sim/trace", line);
    return 0;
}

// The functions that can fail, each with what it returns then. tests/wrapped.sh reads these lines.
#define FAILS(function, result) constexpr long failed_##function = result;
// clang-format off
FAILS(malloc, 0) FAILS(strdup, 0) FAILS(fopen, 0) FAILS(fdopen, 0) FAILS(fgets, 0) FAILS(fgets_unlocked, 0)
FAILS(getdelim, -1) FAILS(fprintf, -1) FAILS(vsnprintf, -1) FAILS(ferror, 1) FAILS(fclose, -1)
FAILS(open, -1) FAILS(stat, -1) FAILS(fstat, -1) FAILS(fchmod, -1) FAILS(fchown, -1) FAILS(access, -1)
FAILS(rename, -1) FAILS(remove, -1) FAILS(opendir, 0) FAILS(pipe, -1) FAILS(dup2, -1) FAILS(fcntl, -1) FAILS(poll, -1)
FAILS(fork, -1) FAILS(execv, -1) FAILS(waitpid, -1) FAILS(kill, -1) FAILS(gethostname, -1) FAILS(sethostname, -1)
FAILS(getdomainname, -1) FAILS(setdomainname, -1) FAILS(setuid, -1) FAILS(seteuid, -1) FAILS(setgid, -1)
FAILS(setgroups, -1) FAILS(setsid, -1) FAILS(setpriority, -1) FAILS(prctl, -1) FAILS(chdir, -1) FAILS(syscall, -1)
FAILS(getrlimit, -1) FAILS(setrlimit, -1)
    // clang-format on

    // These do their work all the same: else a stream would leak, and output come in an uncertain order.
    static bool works_before_failing(const char *function) {
    return strcmp(function, "fclose") == 0 || strcmp(function, "waitpid") == 0;
}

// Whatever their types, arguments and results are words that pass through, as many as any call has.
#define WORDS long a, long b, long c, long d, long e, long f, long g, long h
#define WRAP(symbol, function)                                                                                         \
    extern "C" long __real_##symbol(WORDS);                                                                            \
    extern "C" long __wrap_##symbol(WORDS);                                                                            \
    long __wrap_##symbol(WORDS) {                                                                                      \
        const bool fails = strikes(#function);                                                                         \
        if (fails && !works_before_failing(#function))                                                                 \
            return failed_##function;                                                                                  \
        const long result = __real_##symbol(a, b, c, d, e, f, g, h);                                                   \
        return fails ? failed_##function : result;                                                                     \
    }
#include "wrapped.h"
