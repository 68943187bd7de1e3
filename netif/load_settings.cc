#include "netif/load_settings.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>

#include "app/exit_status.h"
#include "netif/paths.h"
#include "settings/ip_settings.h"

namespace zelta {

namespace {

bool file_exists(const char *path) {
    struct stat status;
    if (stat(path, &status) == 0)
        return true;
    printf("%s not found (reason: %s)\n", path, strerror(errno));
    return false;
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
    if (!file_exists(path) || (own_file != nullptr && !file_exists(own_file)))
        return exit_no_file;
    puts(parse_line);
    int result = parse_config_file(path, ip_config);
    if (result != exit_ok)
        return result;
    puts("Validate IP config file");
    return val_ip_config_file(ip_config);
}

} // namespace zelta
