#include "netif/net_init.h"

#include "process/runner.h"

namespace zelta {

namespace {

int remount_etc(const char *options) {
    return zelta_system("/bin/mount", "mount", "-o", options, "/etc/", nullptr);
}

} // namespace

int zelta_net_init() {
    remount_etc("remount,exec");
    zelta_system("/etc/rc.d/init.d/zelta-net", "zelta-net", nullptr);
    return remount_etc("remount,noexec");
}

} // namespace zelta
