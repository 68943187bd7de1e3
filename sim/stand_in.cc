// Stands at the path of every program of the simulated device and leaves the work to the script
// /usr/lib/sim/NAME (a script at that path would not do: starting an interpreter loses argument 0).
// First the start is traced. Then a reply file may take the script's place: its first line says how
// to end, the rest is printed as it stands. Started with SIM_DAEMON set, as the scripts do, it is
// the daemon of that name: it goes to the background and lives until it is interrupted. In the
// place of a tool that was built for another machine, it starts that under the emulator.
#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/auxv.h>
#include <sys/personality.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace {

char script[128]; // the behaviour; for a daemon, what it becomes when it is told to end
char path_variable[] = "PATH=/usr/sbin:/usr/bin";
char *plain_environment[] = {path_variable, nullptr}; // scripts act alike whoever the caller is

// One write, so that the lines of two programs never mix. Opened without blocking, because opening
// a pipe that nobody reads any more would wait for ever; the text is then lost, and nobody dies.
void append(const char *path, int flags, const char *text, size_t size) {
    const int file = open(path, O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC | flags, 0644);
    if (file < 0)
        return;
    fcntl(file, F_SETFL, O_APPEND);
    const auto inherited = signal(SIGPIPE, SIG_IGN);
    if (write(file, text, size) < 0 && errno != EPIPE)
        perror(path);
    signal(SIGPIPE, inherited);
    close(file);
}

void put_argument(FILE *out, const char *text) {
    bool plain = *text != '\0';
    for (const char *c = text; *c != '\0'; c++)
        plain = plain && *c > ' ' && *c < 127 && *c != '\'' && *c != '"';
    if (plain) {
        fputs(text, out);
        return;
    }
    fputc('\'', out);
    for (const char *c = text; *c != '\0'; c++) {
        if (*c == '\n')
            fputs("\\n", out);
        else if (*c == '\t')
            fputs("\\t", out);
        else if (*c == '\'' || *c == '\\')
            fprintf(out, "\\%c", *c);
        else
            fprintf(out, *c >= ' ' && *c < 127 ? "%c" : "\\x%02x", static_cast<unsigned char>(*c));
    }
    fputc('\'', out);
}

void trace(char **argv) {
    char *text = nullptr;
    size_t size = 0;
    FILE *out = open_memstream(&text, &size);
    fputc('$', out);
    for (; *argv != nullptr; argv++) {
        fputc(' ', out);
        put_argument(out, *argv);
    }
    fputc('\n', out);
    fclose(out);
    append("/run/sim/trace", 0, text, size);
    free(text);
}

void report_descriptors(FILE *out) {
    DIR *directory = opendir("/proc/self/fd");
    while (const dirent *entry = readdir(directory))
        if (entry->d_name[0] != '.' && atoi(entry->d_name) != dirfd(directory))
            fprintf(out, "fd %s\n", entry->d_name);
    closedir(directory);
}

void report_status(FILE *out) {
    const struct {
        const char *key, *name;
    } rows[] = {{"Umask:", "umask"},
                {"Uid:", "uid"},
                {"Gid:", "gid"},
                {"Groups:", "groups"},
                {"SigBlk:", "blocked"},
                {"SigIgn:", "ignored"},
                {"Cpus_allowed_list:", "processors"}};
    char line[1024];
    FILE *status = fopen("/proc/self/status", "re");
    if (status == nullptr)
        return;
    while (fgets(line, sizeof line, status) != nullptr)
        for (const auto &[key, name] : rows)
            if (strncmp(line, key, strlen(key)) == 0) {
                fputs(name, out);
                for (char *word = strtok(line + strlen(key), " \t\n"); word != nullptr;
                     word = strtok(nullptr, " \t\n"))
                    fprintf(out, " %s", word);
                fputc('\n', out);
            }
    fclose(status);
}

void report_limits(FILE *out) {
    // In the order of the kernel's numbers.
    const char *const names[RLIM_NLIMITS] = {
        "cpu",     "fsize", "data",  "stack",      "core",     "rss",  "nproc",  "nofile",
        "memlock", "as",    "locks", "sigpending", "msgqueue", "nice", "rtprio", "rttime"};
    for (int resource = 0; resource < RLIM_NLIMITS; resource++) {
        rlimit value;
        getrlimit(static_cast<__rlimit_resource>(resource), &value);
        fprintf(out, "limit %s %ld %ld\n", names[resource], static_cast<long>(value.rlim_cur),
                static_cast<long>(value.rlim_max)); // soft and hard, -1 when there is none
    }
    itimerval timer;
    getitimer(ITIMER_REAL, &timer);
    fprintf(out, "alarm %s\n", timerisset(&timer.it_value) ? "set" : "none");
}

void report_priorities(FILE *out) {
    char score[16] = "";
    FILE *file = fopen("/proc/self/oom_score_adj", "re");
    if (file == nullptr)
        return;
    if (fgets(score, sizeof score, file) != nullptr)
        fprintf(out, "oom score %s", score);
    fclose(file);
    constexpr int who_process = 1, idle = 3; // ioprio_get(2)
    const bool io_idle = syscall(SYS_ioprio_get, who_process, 0) >> 13 == idle;
    fprintf(out, "nice %d\nscheduler %d\nio %s\ntimer slack %d\npersonality %#x\n",
            getpriority(PRIO_PROCESS, 0), sched_getscheduler(0), io_idle ? "idle" : "usual",
            prctl(PR_GET_TIMERSLACK), static_cast<unsigned>(personality(0xffffffff)));
}

// What this program inherited, gathered before the report's own file is opened.
void report(const char *name) {
    char *text = nullptr;
    size_t size = 0;
    FILE *out = open_memstream(&text, &size);
    char directory[4096] = "?";
    char input[4096] = "closed";
    [[maybe_unused]] const ssize_t size_of_input =
        readlink("/proc/self/fd/0", input, sizeof input - 1);
    fprintf(out, "report %s\ninput %s\ncwd %s\nsession %s\n", name, input,
            getcwd(directory, sizeof directory), getsid(0) == getpid() ? "own" : "shared");
    report_descriptors(out);
    report_status(out);
    report_limits(out);
    report_priorities(out);
    size_t count = 0;
    while (environ[count] != nullptr)
        count++;
    qsort(environ, count, sizeof *environ, [](const void *left, const void *right) {
        return strcmp(*static_cast<char *const *>(left), *static_cast<char *const *>(right));
    });
    for (size_t i = 0; i < count; i++)
        fprintf(out, "env %s\n", environ[i]);
    fclose(out);
    append("/run/sim/report", O_CREAT, text, size);
    free(text);
}

[[noreturn]] void die_by(int number) {
    prctl(PR_SET_DUMPABLE, 0); // a core file would leave its flag in the wait status
    sigset_t mask;
    sigemptyset(&mask);
    sigaddset(&mask, number);
    signal(number, SIG_DFL);
    sigprocmask(SIG_UNBLOCK, &mask, nullptr);
    raise(number);
    _exit(125);
}

// Ends the process as the reply says; returns when there is none, or when it asks for a report.
void obey_reply(const char *name) {
    char path[128];
    char order[32] = "";
    char rest[4096];
    int number = 0;
    snprintf(path, sizeof path, "/run/sim/reply/%s", name);
    FILE *reply = fopen(path, "re");
    if (reply == nullptr)
        return;
    if (fgets(order, sizeof order, reply) != nullptr && strcmp(order, "report\n") == 0) {
        fclose(reply);
        report(name);
        return;
    }
    for (size_t count; (count = fread(rest, 1, sizeof rest, reply)) > 0;)
        fwrite(rest, 1, count, stdout);
    fflush(stdout);
    if (sscanf(order, "signal %d", &number) == 1)
        die_by(number);
    if (sscanf(order, "exit %d", &number) != 1 && strcmp(order, "print\n") != 0) {
        fprintf(stderr, "%s: no such reply: %s", path, order);
        number = 125;
    }
    _exit(number);
}

void stop(int number) {
    char *argv[] = {script, nullptr};
    execve(script, argv, plain_environment);
    die_by(number);
}

// The caller gets the daemon's process id on standard output and finds the daemon ready.
int serve() {
    for (const int number : {SIGINT, SIGTERM})
        if (signal(number, stop) == SIG_IGN)
            signal(number, SIG_IGN); // as inherited: who starts daemons deaf shall see it
    const pid_t daemon_pid = fork();
    if (daemon_pid != 0)
        return daemon_pid < 0 || printf("%d\n", daemon_pid) < 0;
    setsid();
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : {0, 1, 2})
        dup2(null, standard);
    for (;;)
        pause();
}

// Set-user-ID root as the tool is, and so is what the tool sees: ids and all that is inherited pass
// through. The file's words are the emulator, its options, and the one before argument 0.
int emulate(int argc, char **argv) {
    char text[256] = "";
    FILE *file = fopen("/usr/lib/sim/emulator", "re");
    if (file == nullptr || fgets(text, sizeof text, file) == nullptr) {
        perror("/usr/lib/sim/emulator");
        return 127;
    }
    fclose(file);
    const size_t most = sizeof text + static_cast<size_t>(argc);
    char **words = static_cast<char **>(calloc(most, sizeof *words));
    if (words == nullptr) {
        perror("calloc");
        return 127;
    }
    size_t count = 0;
    for (char *word = strtok(text, " \n"); word != nullptr; word = strtok(nullptr, " \n"))
        words[count++] = word;
    words[count++] = argv[0];
    words[count++] = script;
    for (int i = 1; i < argc; i++)
        words[count++] = argv[i];
    execv(words[0], words);
    perror(words[0]);
    free(words);
    return 127;
}
} // namespace

int main(int argc, char **argv) {
    const char *path = reinterpret_cast<const char *>(getauxval(AT_EXECFN));
    const char *slash = strrchr(path, '/');
    const char *name = slash != nullptr ? slash + 1 : path;
    if (getenv("SIM_DAEMON") != nullptr) {
        snprintf(script, sizeof script, "/usr/lib/sim/%s-stop", name);
        return serve();
    }
    snprintf(script, sizeof script, "/usr/lib/sim/%s", name);
    if (strcmp(name, "zelta-ip") == 0)
        return emulate(argc, argv);
    trace(argv);
    obey_reply(name);
    execve(script, argv, plain_environment);
    perror(script);
    return 127;
}
