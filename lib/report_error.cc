#include "lib/report_error.h"

#include <cerrno>
#include <cstdio>

namespace zelta {

void report_error(const char *text) {
    const int error = errno;
    fflush(stdout);
    errno = error;
    perror(text);
}

} // namespace zelta
