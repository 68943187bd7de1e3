#include "fuzz/surroundings.h"

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace zelta::fuzz {

surroundings around;

namespace {

constexpr pid_t child_pid = 99;

size_t listed; // the part of the listing that was read
bool in_child; // fork returns to the child
jmp_buf parent;
std::optional<std::vector<const char *>> vector;

ssize_t read_listing(void *, char *buffer, size_t room) {
    const size_t length = around.listing.copy(buffer, room, listed);
    listed += length;
    if (length > 0 || !around.reading_fails)
        return static_cast<ssize_t>(length);
    errno = EIO;
    return -1;
}

} // namespace

std::string printed(const std::function<void()> &action) {
    // One stream for all inputs, since making one is slow.
    static char *text;
    static size_t length;
    static FILE *const memory = open_memstream(&text, &length);
    FILE *const standard_output = stdout;
    rewind(memory);
    stdout = memory;
    action();
    stdout = standard_output;
    fflush(memory);
    return {text, length};
}

std::optional<std::vector<const char *>> executed(const std::function<void()> &action) {
    vector.reset();
    in_child = true;
    if (setjmp(parent) == 0)
        action();
    in_child = false;
    return vector;
}

} // namespace zelta::fuzz

using namespace zelta::fuzz;

// The linker's names for the calls of the product.
extern "C" {

pid_t __wrap_fork();
int __wrap_execv(const char *path, char *const argv[]);
pid_t __wrap_waitpid(pid_t pid, int *status, int options);
FILE *__real_fdopen(int fd, const char *mode);
FILE *__wrap_fdopen(int fd, const char *mode);
int __wrap_kill(pid_t pid, int signal);
pid_t __wrap_getpid();
int __wrap_access(const char *path, int mode);
int __wrap_setuid(uid_t user);
int __wrap_setgid(gid_t group);

pid_t __wrap_fork() {
    return in_child ? 0 : child_pid;
}

int __wrap_execv(const char *, char *const argv[]) {
    vector.emplace();
    while (*argv != nullptr)
        vector->push_back(*argv++);
    longjmp(parent, 1);
}

pid_t __wrap_waitpid(pid_t pid, int *status, int) {
    *status = 0;
    return pid;
}

FILE *__wrap_fdopen(int fd, const char *mode) {
    if (strcmp(mode, "r") != 0) // a file of counters, where coverage is measured
        return __real_fdopen(fd, mode);
    close(fd);
    listed = 0;
    return fopencookie(nullptr, mode,
                       {.read = read_listing, .write = nullptr, .seek = nullptr, .close = nullptr});
}

int __wrap_kill(pid_t pid, int signal) {
    around.signalled.push_back({pid, signal});
    errno = ESRCH;
    return pid % 2 == 0 ? 0 : -1;
}

pid_t __wrap_getpid() {
    return own_pid;
}

int __wrap_access(const char *, int) {
    return around.files_there ? 0 : -1;
}

int __wrap_setuid(uid_t) {
    return 0;
}

int __wrap_setgid(gid_t) {
    return 0;
}

} // extern "C"
