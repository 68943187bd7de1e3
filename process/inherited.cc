#include "process/inherited.h"

#include <csignal>
#include <cstdlib>
#include <initializer_list>

#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace zelta {

namespace {

// Signals that the tool ignores and its caller did not. An executed program starts with each signal
// either ignored or default, so default is what restoring one means.
sigset_t ignored_here;

void ignore_here(int number) {
    if (signal(number, SIG_IGN) == SIG_DFL)
        sigaddset(&ignored_here, number);
}

struct limit_row {
    int resource;
    rlimit limit;
};

constexpr rlimit unlimited = {.rlim_cur = RLIM_INFINITY, .rlim_max = RLIM_INFINITY};

constexpr limit_row limits[] = {
    {.resource = RLIMIT_FSIZE, .limit = unlimited},
    {.resource = RLIMIT_AS, .limit = unlimited},
    {.resource = RLIMIT_DATA, .limit = unlimited},
    {.resource = RLIMIT_CPU, .limit = unlimited},
    {.resource = RLIMIT_RSS, .limit = unlimited},
    {.resource = RLIMIT_STACK, .limit = {.rlim_cur = 8U << 20, .rlim_max = RLIM_INFINITY}},
    {.resource = RLIMIT_NOFILE, .limit = {.rlim_cur = 1024, .rlim_max = 4096}},
    {.resource = RLIMIT_CORE, .limit = {.rlim_cur = 0, .rlim_max = 0}}, // may hold a password
};

// Where the hard limit cannot be raised, the soft one goes as far as that allows.
void set_limits() {
    for (const limit_row &row : limits) {
        rlimit now;
        if (setrlimit(row.resource, &row.limit) == 0 || getrlimit(row.resource, &now) != 0)
            continue;
        now.rlim_cur = row.limit.rlim_cur < now.rlim_max ? row.limit.rlim_cur : now.rlim_max;
        setrlimit(row.resource, &now);
    }
}

// A descriptor may lie above any limit of now, since limits can be lowered after it was opened.
// Kernels before 5.9 cannot close a range; there, each that is listed is closed, and the first in
// advance: the listing needs one that the limit allows.
void close_descriptors() {
    constexpr int first = STDERR_FILENO + 1;
    if (syscall(SYS_close_range, first, ~0U, 0) == 0)
        return;
    close(first);
    DIR *listing = opendir("/proc/self/fd");
    if (listing == nullptr)
        return;
    const int own = dirfd(listing);
    while (const dirent *entry = readdir(listing)) {
        const int fd = atoi(entry->d_name); // 0 for "." and ".."
        if (fd >= first && fd != own)
            close(fd);
    }
    closedir(listing);
}

// By the kernel's own call, where all that follows the handler may be zero: C libraries keep a few
// signals to themselves and refuse to change those.
void set_disposition(int number, sighandler_t handler) {
    const sighandler_t action[8] = {handler};
    syscall(SYS_rt_sigaction, number, action, nullptr, NSIG / 8);
}

void reset_signals() {
    constexpr itimerval never = {};
    for (int timer : {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF})
        setitimer(timer, &never, nullptr);

    // Ignoring a signal discards one that waits behind the mask; it must not strike when that
    // opens.
    for (int number = 1; number < NSIG; number++)
        set_disposition(number, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int number = 1; number < NSIG; number++)
        set_disposition(number, SIG_DFL);

    // A file size limit is no signal but a short write, which takes the ordinary way of failing.
    for (int number :
         {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP, SIGTTOU, SIGALRM, SIGXFSZ, SIGPIPE})
        ignore_here(number);
}

void clear_environment() {
    static char path[] = "PATH=/sbin:/usr/sbin:/bin:/usr/bin";
    static char *only_path[] = {path, nullptr};
    environ = only_path;
}

} // namespace

void keep_standard_descriptors() {
    // One call tells about all three, but not for a caller with a limit of fewer descriptors.
    pollfd standard[] = {{.fd = STDIN_FILENO, .events = 0, .revents = 0},
                         {.fd = STDOUT_FILENO, .events = 0, .revents = 0},
                         {.fd = STDERR_FILENO, .events = 0, .revents = 0}};
    bool known = poll(standard, 3, 0) >= 0;
    // The lowest free descriptor is the one that an open gets; it stays open on purpose.
    for (const pollfd &each : standard)
        if (known ? (each.revents & POLLNVAL) != 0 : fcntl(each.fd, F_GETFD) < 0)
            open("/dev/null", O_RDWR);
}

void ignore_broken_pipe() {
    ignore_here(SIGPIPE);
}

void distrust_caller() {
    set_limits();
    close_descriptors();
    reset_signals();
    umask(022);
    [[maybe_unused]] int directory = chdir("/");
    setgroups(0, nullptr);
    clear_environment();
}

void restore_signals() {
    for (int number = 1; number < NSIG; number++)
        if (sigismember(&ignored_here, number) == 1)
            signal(number, SIG_DFL);
}

} // namespace zelta
