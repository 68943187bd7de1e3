#include "process/inherited.h"

#include <csignal>
#include <cstdint>
#include <initializer_list>

#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sched.h>
#include <sys/personality.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "lib/strtol.h"

namespace zelta {

namespace {

bool caller_distrusted;

// Signals to be default again in children, one bit each: those that the tool ignores, unless a
// trusted caller ignored them too. No real-time signal is among them.
uint32_t ignored_here;
constexpr int first_real_time_signal = 32;

void ignore_here(int number) {
    if (signal(number, SIG_IGN) == SIG_DFL)
        ignored_here |= 1U << number;
}

struct limit_row {
    int resource;
    rlim_t soft, hard;
};

constexpr limit_row limits[] = {
    {RLIMIT_STACK, 8U << 20, RLIM_INFINITY},
    {RLIMIT_NOFILE, 1024, 4096},
    {RLIMIT_MEMLOCK, 8U << 20, 8U << 20},
    {RLIMIT_MSGQUEUE, 819200, 819200},
    {RLIMIT_NICE, 0, 0},
    {RLIMIT_RTPRIO, 0, 0},
    {RLIMIT_CORE, 0, 0}, // a core may hold a password
};

constexpr int unlimited[] = {RLIMIT_FSIZE, RLIMIT_AS,         RLIMIT_DATA,
                             RLIMIT_CPU,   RLIMIT_RSS,        RLIMIT_NPROC,
                             RLIMIT_LOCKS, RLIMIT_SIGPENDING, RLIMIT_RTTIME};

// Where the hard limit cannot be raised, the soft one goes as far as that allows.
void set_limit(int resource, rlim_t soft, rlim_t hard) {
    const rlimit wanted = {.rlim_cur = soft, .rlim_max = hard};
    rlimit now;
    if (setrlimit(resource, &wanted) == 0 || getrlimit(resource, &now) != 0)
        return;
    now.rlim_cur = soft < now.rlim_max ? soft : now.rlim_max;
    setrlimit(resource, &now);
}

void set_limits() {
    for (const limit_row &row : limits)
        set_limit(row.resource, row.soft, row.hard);
    for (int resource : unlimited)
        set_limit(resource, RLIM_INFINITY, RLIM_INFINITY);
}

// By the kernel's own calls where the C libraries have none, or one that always fails.
void set_priorities() {
    constexpr sched_param normal = {};
    syscall(SYS_sched_setscheduler, 0, SCHED_OTHER, &normal); // first: nice counts in it alone
    setpriority(PRIO_PROCESS, 0, 0);
    unsigned long all_processors[16]; // the kernel passes over those that are not there
    for (unsigned long &word : all_processors)
        word = ~0UL;
    syscall(SYS_sched_setaffinity, 0, sizeof all_processors, all_processors);
    constexpr int who_process = 1, follow_nice_value = 0; // ioprio_set(2); no header has them
    syscall(SYS_ioprio_set, who_process, 0, follow_nice_value);
    constexpr unsigned long timer_slack = 50000; // nanoseconds; 0 would mean the caller's own
    prctl(PR_SET_TIMERSLACK, timer_slack);
    prctl(PR_SET_THP_DISABLE, 0, 0, 0, 0); // huge pages, which a caller can forbid
    syscall(SYS_personality, PER_LINUX);
    const int score = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
    if (score >= 0) {
        [[maybe_unused]] ssize_t written = write(score, "0", 1);
        close(score);
    }
}

// Each descriptor has to be closed by itself before Linux 5.9, which brought close_range. Limits do
// not tell how high descriptors go: a caller can lower them after opening. /proc/self/fd lists all,
// and reading it takes one descriptor, so the first of the caller's makes room for it.
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
        const int fd =
            static_cast<int>(any_strtol(entry->d_name, nullptr, 10)); // 0 for "." and ".."
        if (fd >= first && fd != own)
            close(fd);
    }
    closedir(listing);
}

// A program that reads the size of its terminal, or that takes standard input as its modem, finds
// neither. The descriptor just closed is the lowest free one, which an open gets.
void empty_standard_input() {
    close(STDIN_FILENO);
    open("/dev/null", O_RDWR);
}

// By the kernel's own call, because C libraries refuse to change the few signals that they use
// themselves. The array is the kernel's structure on ARM and x86: the handler, then flags, restorer
// and mask, all zero; it is as long as that structure, or longer.
void set_disposition(int number, sighandler_t handler) {
    const sighandler_t action[8] = {handler};
    syscall(SYS_rt_sigaction, number, action, nullptr, NSIG / 8);
}

void reset_signals() {
    constexpr itimerval never = {};
    for (int timer : {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF})
        setitimer(timer, &never, nullptr);

    // A blocked signal may be waiting. Ignoring discards it, before the mask is emptied.
    for (int number = 1; number < NSIG; number++)
        set_disposition(number, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int number = 1; number < NSIG; number++)
        set_disposition(number, SIG_DFL);

    // With SIGXFSZ ignored, a write beyond the file size limit fails like any other write.
    for (int number :
         {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTSTP, SIGTTIN, SIGTTOU, SIGALRM, SIGXFSZ, SIGPIPE})
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
    pollfd standard[] = {{STDIN_FILENO, 0, 0}, {STDOUT_FILENO, 0, 0}, {STDERR_FILENO, 0, 0}};
    bool known = poll(standard, 3, 0) >= 0;
    // The lowest free descriptor is the one that an open gets; it stays open on purpose.
    for (const pollfd &each : standard)
        if (known ? (each.revents & POLLNVAL) != 0 : fcntl(each.fd, F_GETFD) < 0)
            open("/dev/null", O_RDWR);
}

void ignore_broken_pipe() {
    ignore_here(SIGPIPE);
}

void ignore_terminal_stop() {
    ignore_here(SIGTTOU);
}

void distrust_caller() {
    caller_distrusted = true;
    set_limits();
    set_priorities();
    close_descriptors();
    empty_standard_input();
    reset_signals();
    umask(022);
    [[maybe_unused]] int directory = chdir("/");
    setgroups(0, nullptr);
    clear_environment();
}

void prepare_child() {
    if (caller_distrusted)
        setsid(); // a new child leads no process group, so this cannot fail
    for (int number = 1; number < first_real_time_signal; number++)
        if ((ignored_here >> number & 1) != 0)
            signal(number, SIG_DFL);
}

} // namespace zelta
