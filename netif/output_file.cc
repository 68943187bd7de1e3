#include "netif/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelta {

namespace {

bool keep_secret(int fd) {
    struct stat status;
    return fstat(fd, &status) == 0 && fchmod(fd, status.st_mode & S_IRWXU) == 0;
}

} // namespace

FILE *open_output_file(const char *path, bool secret) {
    int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, secret ? 0600 : 0666);
    if (fd < 0)
        return nullptr;
    FILE *file = secret && !keep_secret(fd) ? nullptr : fdopen(fd, "w");
    if (file == nullptr) {
        close(fd);
        return nullptr;
    }
    setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

} // namespace zelta
