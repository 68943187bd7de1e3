#include "netif/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelta {

namespace {

// The owner's own rights stay as they are.
bool keep_from_others(int fd) {
    struct stat status;
    return fchown(fd, 0, 0) == 0 && fstat(fd, &status) == 0 &&
           fchmod(fd, status.st_mode & S_IRWXU) == 0;
}

} // namespace

FILE *open_output_file(const char *path, mode_t mode) {
    const bool secret = (mode & (S_IRWXG | S_IRWXO)) == 0;
    int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    if (fd < 0)
        return nullptr;
    FILE *file = secret && !keep_from_others(fd) ? nullptr : fdopen(fd, "w");
    if (file == nullptr) {
        close(fd);
        return nullptr;
    }
    setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

} // namespace zelta
