// Whether the scan and the settings reader grow in proportion to their input, and the scan's memory
// not at all. "Ours" is the large input, "theirs" the small one, for one cell or one byte each.
// Nothing is run: fork and its like are replaced by the linker, and the listing is made up as it is
// read.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <malloc.h>
#include <sys/mman.h>
#include <sys/types.h>
#include <unistd.h>

#include "bench/rows.h"
#include "settings/config_file.h"
#include "wifi/scan.h"

using namespace zelta;
using zelta::bench::add;
using zelta::bench::time_each;

namespace {

constexpr char cell[] =
    "          Cell 01 - Address: 02:00:00:00:00:01\n"
    "                    Channel:6\n"
    "                    Frequency:2.437 GHz (Channel 6)\n"
    "                    Quality=61/70  Signal level=-49 dBm  Noise level=-90 dBm\n"
    "                    Encryption key:on\n"
    "                    ESSID:\"office\"\n"
    "                    Bit Rates:1 Mb/s; 2 Mb/s; 5.5 Mb/s; 11 Mb/s; 18 Mb/s\n"
    "                    Mode:Master\n"
    "                    IE: IEEE 802.11i/WPA2 Version 1\n"
    "                        Group Cipher : CCMP\n"
    "                        Pairwise Ciphers (1) : CCMP\n"
    "                        Authentication Suites (1) : PSK\n";
constexpr size_t cell_size = sizeof cell - 1;

size_t bytes_left; // of the listing

ssize_t read_listing(void *, char *to, size_t size) {
    const size_t at = (cell_size - bytes_left % cell_size) % cell_size;
    const size_t count = std::min({size, cell_size - at, bytes_left});
    memcpy(to, cell + at, count);
    bytes_left -= count;
    return static_cast<ssize_t>(count);
}

void scan(size_t cells) {
    bytes_left = cells * cell_size;
    wifi_scan(2, nullptr);
}

double time_cells(size_t cells) {
    return time_each(cells, [=] { scan(cells); });
}

double heap_of_cells(size_t cells) {
    scan(cells);
    return static_cast<double>(mallinfo2().arena);
}

double time_line(size_t length) {
    const std::string line = "key=" + std::string(length - 5, 'x') + "\n";
    const int file = memfd_create("settings", MFD_CLOEXEC);
    if (write(file, line.data(), length) != static_cast<ssize_t>(length))
        perror("write");
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    const double each = time_each(length, [&] { parse_config_file(path.c_str(), ip_config); });
    free(ip_config[0].key);
    free(ip_config[0].value);
    close(file);
    return each;
}

} // namespace

// What the linker puts in the place of the C library's functions.
extern "C" {
pid_t __wrap_fork();
pid_t __wrap_waitpid(pid_t pid, int *status, int options);
FILE *__real_fdopen(int file, const char *mode);
FILE *__wrap_fdopen(int file, const char *mode);
int __wrap_access(const char *path, int mode);
int __wrap_setuid(uid_t user);
int __wrap_setgid(gid_t group);
}

pid_t __wrap_fork() {
    return 1; // the parent of a child that is none
}

pid_t __wrap_waitpid(pid_t pid, int *status, int) {
    *status = 0;
    return pid;
}

FILE *__wrap_fdopen(int file, const char *mode) {
    if (*mode != 'r') // the table's
        return __real_fdopen(file, mode);
    close(file);
    return fopencookie(nullptr, mode, {read_listing, nullptr, nullptr, nullptr});
}

int __wrap_access(const char *, int) {
    return 0; // the supplicant runs
}

int __wrap_setuid(uid_t) {
    return 0;
}

int __wrap_setgid(gid_t) {
    return 0;
}

int main(int argc, char **argv) {
    for (size_t small : {10UL, 100UL, 1000UL})
        add({.name = "scan: a cell of 10,000, one of " + std::to_string(small),
             .target = 1.1,
             .ours = [] { return time_cells(10000); },
             .theirs = [=] { return time_cells(small); }});
    add({.name = "scan: heap for 10,000 cells, for 100",
         .target = 1,
         .ours = [] { return heap_of_cells(10000); },
         .theirs = [] { return heap_of_cells(100); }});
    for (size_t small : {1UL << 10, 1UL << 15})
        add({.name = "settings: a byte of 1,048,576, one of " + std::to_string(small),
             .target = 1.1,
             .ours = [] { return time_line(1 << 20); },
             .theirs = [=] { return time_line(small); }});
    return zelta::bench::run(argc, argv);
}
