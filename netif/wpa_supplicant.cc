#include "netif/wpa_supplicant.h"

#include <cstdio>

#include <unistd.h>

#include "lib/exit_status.h"
#include "netif/paths.h"
#include "netif/run_and_wait.h"
#include "process/privilege.h"
#include "process/runner.h"

namespace zelta {

namespace {

constexpr char supplicant_path[] = "/usr/sbin/wpa_supplicant";
constexpr char configuration[] = "-c" SETTINGS_DIR "wlan-config";

} // namespace

bool supplicant_runs() {
    return access("/var/run/wpa_supplicant/wlan0", R_OK) == 0;
}

unsigned start_wpa_supplicant() {
    become_root();
    const char *const argv[] = {"wpa_supplicant", "-iwlan0", configuration, "-B", nullptr};
    return run_for_status(supplicant_path, argv);
}

int start_scan_supplicant() {
    return zelta_system(supplicant_path, "wpa_supplicant", "-iwlan0", "-C",
                        "/var/run/wpa_supplicant", "-B", nullptr);
}

int stop_wpa_supplicant() {
    if (!supplicant_runs())
        return exit_ok;
    become_root();
    if (zelta_system("/usr/sbin/wpa_cli", "wpa_cli", "terminate", nullptr) != 0) {
        puts("Failed to stop the WPA supplicant.");
        return exit_failed;
    }
    return exit_ok;
}

int restart_wpa_supplicant(int, char *[]) {
    if (!supplicant_runs()) {
        puts("The WPA supplicant is not running.");
        return exit_ok;
    }
    become_root();
    puts("Stopping the WPA supplicant: ");
    if (zelta_system("/usr/bin/killall", "killall", "wpa_supplicant", nullptr) != 0) {
        puts("Failed to stop the WPA supplicant.");
        return exit_invalid;
    }
    sleep(1); // the old one takes its socket away as it ends
    puts("Starting the WPA supplicant: ");
    return start_wpa_supplicant() == 0 ? exit_ok : exit_failed;
}

} // namespace zelta
