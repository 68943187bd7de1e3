#include "fuzz/target.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#include "process/runner.h"

namespace zelta::fuzz {

surroundings around;

namespace {

constexpr pid_t child_pid = 99;

size_t listed; // the part of the listing that was read

ssize_t read_listing(void *, char *buffer, size_t room) {
    const size_t length = around.listing.copy(buffer, room, listed);
    listed += length;
    if (length > 0 || !around.reading_fails)
        return static_cast<ssize_t>(length);
    errno = EIO;
    return -1;
}

} // namespace

std::pair<int, std::string> run(const std::function<int()> &action) {
    // One stream for all inputs, since making one is slow.
    static char *text;
    static size_t length;
    static FILE *const memory = open_memstream(&text, &length);
    FILE *const standard_output = stdout;
    rewind(memory);
    stdout = memory;
    const int result = action();
    stdout = standard_output;
    fflush(memory);
    return {result, {text, length}};
}

std::string up_to_nul(std::string_view bytes) { return std::string(bytes.substr(0, bytes.find('\0'))); }

void require(bool holds, std::string_view wrong) {
    if (holds)
        return;
    fprintf(stderr, "Wrong: %.*s\n", static_cast<int>(wrong.size()), wrong.data());
    abort();
}

} // namespace zelta::fuzz

using namespace zelta::fuzz;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    around = {};
    take({reinterpret_cast<const char *>(data), size});
    require(mbuf_size(&zelta::child_info_mbuf) == 0, "a child is still registered");
    return 0;
}

#pragma GCC diagnostic ignored "-Wmissing-declarations" // the linker's names for the calls of the product
extern "C" {

FILE *__real_fdopen(int fd, const char *mode);

pid_t __wrap_fork() { return child_pid; }

int __wrap_execv(const char *, char *const[]) {
    abort(); // this is no child
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
    return fopencookie(nullptr, mode, {.read = read_listing, .write = nullptr, .seek = nullptr, .close = nullptr});
}

int __wrap_kill(pid_t pid, int signal) {
    around.signalled.push_back({pid, signal});
    errno = ESRCH;
    return pid % 2 == 0 ? 0 : -1;
}

pid_t __wrap_getpid() { return own_pid; }

int __wrap_access(const char *, int) { return around.files_there ? 0 : -1; }

int __wrap_setuid(uid_t) { return 0; }

int __wrap_setgid(gid_t) { return 0; }

} // extern "C"
