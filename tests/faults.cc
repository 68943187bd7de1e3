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

// Whatever their types, arguments and results are words that pass through.
#define FAULT(name, failure)                                                                                           \
    extern "C" long __real_##name(long a, long b, long c, long d, long e);                                             \
    extern "C" long __wrap_##name(long a, long b, long c, long d, long e);                                             \
    long __wrap_##name(long a, long b, long c, long d, long e) {                                                       \
        return strikes(#name) ? (failure) : __real_##name(a, b, c, d, e);                                              \
    }

// The real call comes first where something would leak or the order of all output be uncertain.
// clang-format off
FAULT(malloc, 0) FAULT(strdup, 0) FAULT(fopen, 0) FAULT(fdopen, 0) FAULT(fgets, 0) FAULT(fwrite, 0)
FAULT(fprintf, -1) FAULT(vsnprintf, -1) FAULT(getline, -1) FAULT(getdelim, -1) FAULT(__getdelim, -1)
FAULT(fgets_unlocked, 0) FAULT(ferror, 1) FAULT(fclose, (__real_fclose(a, b, c, d, e), -1))
FAULT(open, -1) FAULT(stat, -1) FAULT(fstat, -1) FAULT(fchmod, -1) FAULT(access, -1)
FAULT(rename, -1) FAULT(remove, -1) FAULT(pipe, -1) FAULT(dup2, -1) FAULT(fcntl, -1) FAULT(poll, -1)
FAULT(fork, -1) FAULT(execv, -1) FAULT(waitpid, (__real_waitpid(a, b, c, d, e), -1)) FAULT(kill, -1)
FAULT(gethostname, -1) FAULT(sethostname, -1) FAULT(getdomainname, -1) FAULT(setdomainname, -1)
FAULT(setuid, -1) FAULT(setgid, -1) FAULT(setgroups, -1) FAULT(chdir, -1) FAULT(syscall, -1)
FAULT(getrlimit, -1) FAULT(setrlimit, -1)
