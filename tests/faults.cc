// Linked into a second build of the tool with the linker's --wrap: the n-th call of a C library
// function fails as the file /run/sim/faults says, lines of "function n errno". A fault that struck
// leaves /run/sim/struck. Sleeping is traced as a program would be, and takes no time.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct fault {
    char function[32];
    int countdown;
    int error;
};

fault faults[8];
bool busy; // the C library calls itself below

void append(const char *path, const char *text) {
    int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    [[maybe_unused]] ssize_t written = write(file, text, strlen(text));
    close(file);
}

[[gnu::constructor]] void read_faults() {
    busy = true;
    if (FILE *file = fopen("/run/sim/faults", "re")) {
        for (fault &each : faults)
            if (fscanf(file, "%31s %d %d", each.function, &each.countdown, &each.error) != 3)
                break;
        fclose(file);
    }
    busy = false;
}

bool strikes(const char *function) {
    for (fault &each : faults)
        if (!busy && strcmp(each.function, function) == 0 && --each.countdown == 0) {
            busy = true;
            append("/run/sim/struck", "struck\n");
            busy = false;
            errno = each.error;
            return true;
        }
    return false;
}

} // namespace

// A real wait comes first also where it fails, so that the order of all output stays certain.
#define FAULT(type, name, failure, parameters, arguments)                                          \
    extern "C" type __real_##name parameters;                                                      \
    extern "C" type __wrap_##name parameters;                                                      \
    type __wrap_##name parameters {                                                                \
        if (strcmp(#name, "waitpid") != 0)                                                         \
            return strikes(#name) ? (failure) : __real_##name arguments;                           \
        type result = __real_##name arguments;                                                     \
        return strikes(#name) ? (failure) : result;                                                \
    }

FAULT(void *, malloc, nullptr, (size_t size), (size))
FAULT(char *, strdup, nullptr, (const char *text), (text))
FAULT(ssize_t, getdelim, -1, (char **line, size_t *room, int delimiter, FILE *file),
      (line, room, delimiter, file))
FAULT(ssize_t, getline, -1, (char **line, size_t *room, FILE *file), (line, room, file))
FAULT(pid_t, fork, -1, (), ())
FAULT(pid_t, waitpid, -1, (pid_t pid, int *status, int options), (pid, status, options))
FAULT(int, pipe, -1, (int ends[2]), (ends))
FAULT(int, dup2, -1, (int from, int to), (from, to))
FAULT(FILE *, fdopen, nullptr, (int file, const char *mode), (file, mode))
FAULT(FILE *, fopen, nullptr, (const char *path, const char *mode), (path, mode))
FAULT(int, open, -1, (const char *path, int flags, mode_t mode), (path, flags, mode))
FAULT(int, fstat, -1, (int file, struct stat *status), (file, status))
FAULT(int, fchmod, -1, (int file, mode_t mode), (file, mode))
FAULT(size_t, fwrite, 0, (const void *from, size_t size, size_t count, FILE *file),
      (from, size, count, file))
FAULT(char *, fgets, nullptr, (char *line, int size, FILE *file), (line, size, file))
FAULT(int, ferror, 1, (FILE * file), (file))
FAULT(int, fclose, (__real_fclose(file), EOF), (FILE * file), (file))
FAULT(int, stat, -1, (const char *path, struct stat *status), (path, status))
FAULT(int, access, -1, (const char *path, int mode), (path, mode))
FAULT(int, rename, -1, (const char *from, const char *to), (from, to))
FAULT(int, remove, -1, (const char *path), (path))
FAULT(int, gethostname, -1, (char *name, size_t size), (name, size))
FAULT(int, sethostname, -1, (const char *name, size_t size), (name, size))
FAULT(int, getdomainname, -1, (char *name, size_t size), (name, size))
FAULT(int, setdomainname, -1, (const char *name, size_t size), (name, size))
FAULT(int, setuid, -1, (uid_t user), (user))
FAULT(int, setgid, -1, (gid_t group), (group))
FAULT(int, kill, -1, (pid_t pid, int number), (pid, number))

extern "C" unsigned __wrap_sleep(unsigned seconds);
unsigned __wrap_sleep(unsigned seconds) {
    char line[32];
    snprintf(line, sizeof line, "$ sleep %u\n", seconds);
    fflush(stdout);
    append("/run/sim/trace", line);
    return 0;
}
