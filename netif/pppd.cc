#include "netif/pppd.h"

#include <cstdio>
#include <iterator>

#include <sys/stat.h>
#include <unistd.h>

#include "lib/exit_status.h"
#include "lib/report_error.h"
#include "netif/output_file.h"
#include "netif/paths.h"
#include "netif/run_and_wait.h"
#include "process/kill_proc.h"
#include "process/privilege.h"
#include "settings/ip_settings.h"

namespace zelta {

namespace {

constexpr char options_path[] = "/etc/ppp/pppd-config";
constexpr char peer_resolv_conf[] = "/etc/ppp/resolv.conf";

// By secrets_kind.
constexpr const char *secrets_paths[] = {"/etc/ppp/pap-secrets", "/etc/ppp/chap-secrets",
                                         "/etc/ppp/srp-secrets"};
static_assert(std::size(secrets_paths) == secrets_kinds);

// Automatic mode takes the default route and the name servers from the peer. What the writes return
// is not looked at: the daemon judges the file.
int write_options() {
    FILE *file = open_output_file(options_path, 0666);
    if (file == nullptr) {
        report_error("Open failed");
        return exit_no_file;
    }
    const bool automatic = in_config.ip_mode == ip_mode_auto;
    fprintf(file, "%s\n115200\n%s", in_config.device, automatic ? "defaultroute\n" : "");
    if (in_config.user != nullptr)
        fprintf(file, "user \"%s\"\n", in_config.user);
    fprintf(file, "connect \"/sbin/chat -v -f " SETTINGS_DIR "%s\"\n", in_config.connect);
    fprintf(file, "disconnect \"/sbin/chat -v -f " SETTINGS_DIR "%s\"\n%s", in_config.disconnect,
            automatic ? "usepeerdns\n" : "");
    fclose(file);
    return exit_ok;
}

// Client, any server, secret, any address; without a user, any client.
int write_secrets() {
    FILE *file = open_output_file(secrets_paths[in_config.secrets_type], 0600);
    if (file == nullptr) {
        report_error("Open failed");
        return exit_no_file;
    }
    int written = in_config.user != nullptr
                      ? fprintf(file, "'%s' * '%s' *\n", in_config.user, in_config.password)
                      : fprintf(file, "* * '%s' *\n", in_config.password);
    fclose(file);
    return written < 0 ? exit_failed : exit_ok;
}

// Waits for the daemon's name-server file and moves it into place.
int take_name_servers() {
    constexpr int checks = 11;
    struct stat status;
    for (int check = 1; stat(peer_resolv_conf, &status) != 0; check++) {
        if (check == checks) {
            report_error("/etc/ppp/resolv.conf couldn't be found");
            return exit_failed;
        }
        sleep(1);
    }
    if (rename(peer_resolv_conf, "/etc/resolv.conf") != 0) {
        report_error("/etc/ppp/resolv.conf move failed");
        return exit_failed;
    }
    return exit_ok;
}

} // namespace

int start_pppd() {
    become_root();
    int result = write_options();
    if (result == exit_ok && in_config.password != nullptr)
        result = write_secrets();
    if (result != exit_ok)
        return result;
    const char *const argv[] = {"pppd", "file", options_path, nullptr};
    return run_and_wait("/sbin/pppd", argv).ran ? take_name_servers() : exit_failed;
}

int stop_pppd() {
    if (access("/var/run/ppp0.pid", R_OK) != 0)
        return exit_ok;
    if (kill_proc("pppd") != exit_ok) {
        printf("Failed to stop PPP daemon.");
        return exit_failed;
    }
    return exit_ok;
}

} // namespace zelta
