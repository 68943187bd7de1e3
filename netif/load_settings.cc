#include "netif/load_settings.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

#include "lib/exit_status.h"
#include "lib/report_error.h"
#include "netif/paths.h"
#include "process/privilege.h"
#include "settings/ip_settings.h"

namespace zelta {

namespace {

// judge is the user whose rights decide.
bool file_exists(const char *path, uid_t judge) {
    struct stat status;
    const uid_t own = geteuid();
    const bool found = set_effective_user(judge) && stat(path, &status) == 0;
    const int reason = errno;
    set_effective_user(own);
    if (!found)
        printf("%s not found (reason: %s)\n", path, strerror(reason));
    return found;
}

// The path of a file in the settings directory; null without memory. It lives, like the settings,
// until the process ends; static, so that a leak checker finds it in use.
const char *settings_path(const char *name) {
    static char *path;
    size_t size = sizeof SETTINGS_DIR + strlen(name);
    path = static_cast<char *>(malloc(size));
    if (path != nullptr)
        snprintf(path, size, SETTINGS_DIR "%s", name);
    return path;
}

} // namespace

int load_settings(const char *name, const char *own_file, const char *parse_line) {
    const char *path = settings_path(name);
    if (path == nullptr)
        return exit_failed;
    // A name with "/" can lead to any file of the device, which root must not open for the caller.
    const uid_t own = geteuid(), judge = strchr(name, '/') != nullptr ? getuid() : own;
    if (!file_exists(path, judge) || (own_file != nullptr && !file_exists(own_file, own)))
        return exit_no_file;
    puts(parse_line);
    if (!set_effective_user(judge)) {
        report_error("Open failed\n");
        return exit_no_file;
    }
    int result = parse_config_file(path, ip_config);
    set_effective_user(own);
    if (result != exit_ok)
        return result;
    puts("Validate IP config file");
    return val_ip_config_file(ip_config);
}

} // namespace zelta
