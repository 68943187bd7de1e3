#include "netif/dhclient.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#include "lib/exit_status.h"
#include "lib/mstr.h"
#include "netif/links.h"
#include "netif/output_file.h"
#include "netif/run_and_wait.h"
#include "process/kill_proc.h"
#include "process/privilege.h"

namespace zelta {

namespace {

// True when every byte went out.
bool write_conf(const char *argument, const char *host_name) {
    FILE *file = open_output_file("/etc/dhclient.conf", 0666);
    if (file == nullptr)
        return false;
    const int written = fprintf(file,
                                "interface \"%s\" {\n"
                                "\tsend host-name \"%s\";\n"
                                "\trequest subnet-mask, broadcast-address, time-offset, routers,\n"
                                "\t\tdomain-name, domain-name-servers, host-name;\n"
                                "\trequire subnet-mask, domain-name-servers;\n"
                                "}\n",
                                argument, host_name);
    fclose(file);
    return written >= 0;
}

} // namespace

unsigned exec_dhclient(const char *argument) {
    become_root();
    char host_name[256] = {};
    if (gethostname(host_name, sizeof host_name - 1) != 0 || !write_conf(argument, host_name))
        return exit_failed;
    const char *const argv[] = {"dhclient", argument, nullptr};
    return run_for_status("/sbin/dhclient", argv);
}

int stop_dhclient() {
    if (kill_proc("dhclient") != exit_ok) {
        puts("Failed to stop dhclient process.");
        return exit_failed;
    }
    [[maybe_unused]] int removed = remove(dhclient_pid); // a client that never ran left none
    return exit_ok;
}

namespace {

// Puts the path of the running client's command line (proc(5)) into path. Says what is wrong with
// the process-id file when it cannot.
bool command_line_path(FILE *pid_file, mstr *path) {
    char *line = nullptr;
    size_t room = 0;
    ssize_t length = getline(&line, &room, pid_file);
    bool formatted = false;
    if (length <= 0) {
        puts("Internal error - /var/run/dhclient.pid is empty.");
    } else {
        line[length - 1] = '\0';
        formatted = strlen(line) <= 5;
        if (formatted)
            mstr_sprintf(path, "/proc/%s/cmdline", line);
        else
            puts("Internal error - /var/run/dhclient.pid badly formatted.");
    }
    free(line);
    return formatted;
}

// The interface among the arguments of a command line, the last one that is there; null for none.
const char *find_interface(FILE *command_line) {
    const char *interface = nullptr;
    char *argument = nullptr;
    size_t room = 0;
    while (getdelim(&argument, &room, '\0', command_line) > 0) {
        const net_link *link = find_link(argument);
        if (link != nullptr)
            interface = link->interface;
    }
    free(argument);
    return interface;
}

// The interface that the client at this command line serves; null after the line that says why.
const char *served_interface(const char *path) {
    if (access(path, R_OK) != 0) {
        puts("Internal error - dhclient command line not accessible.");
        return nullptr;
    }
    FILE *command_line = fopen(path, "rbe");
    if (command_line == nullptr) {
        puts("Internal error - dhclient command line couldn't be read.");
        return nullptr;
    }
    const char *interface = find_interface(command_line);
    fclose(command_line);
    if (interface == nullptr)
        puts("Internal error - dhclient interface parameter not found.");
    return interface;
}

bool run_client(const char *announcement, const char *argument) {
    puts(announcement);
    if (exec_dhclient(argument) == 0)
        return true;
    puts("... failed.");
    return false;
}

// The restart from the opened process-id file on. Where it fails, the caller stops the client.
bool restart_client(FILE *pid_file) {
    char path_array[32] = {};
    mstr path = mstr_array(path_array);
    if (!command_line_path(pid_file, &path))
        return false;
    const char *interface = served_interface(mstr_get(&path));
    if (interface == nullptr || !run_client("Stopping the dhcp client: ", "-r"))
        return false;
    stop_dhclient();
    return run_client("Starting the dhcp client: ", interface);
}

} // namespace

int restart_dhclient(int, char *[]) {
    if (access(dhclient_pid, R_OK) != 0) {
        puts("The dhcp client is not running.");
        return exit_failed;
    }
    FILE *pid_file = fopen(dhclient_pid, "re");
    if (pid_file == nullptr) {
        puts("Internal error - couldn't open /var/run/dhclient.pid.");
        return exit_failed;
    }
    const bool restarted = restart_client(pid_file);
    fclose(pid_file);
    if (restarted)
        return exit_ok;
    stop_dhclient();
    return exit_failed;
}

} // namespace zelta
