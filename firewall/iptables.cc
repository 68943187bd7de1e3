#include "firewall/iptables.h"

#include <cstdio>
#include <cstring>

#include <sys/wait.h>

#include "lib/exit_status.h"
#include "process/child.h"
#include "process/privilege.h"

namespace zelta {

namespace {

// What the raw wait status says, as a line and as the result.
int report_end(int status) {
    if (WIFEXITED(status)) {
        printf("terminated normally status=%d\n", WEXITSTATUS(status));
        return WEXITSTATUS(status);
    }
    if (WIFSIGNALED(status)) {
        printf("terminated by signal %d\n", WTERMSIG(status));
        return WTERMSIG(status);
    }
    printf("stopped by signal %d\n", WSTOPSIG(status));
    return WSTOPSIG(status);
}

int run_and_report(const char *const argv[]) {
    become_root();
    pid_t pid = child_start("/usr/sbin/iptables", argv, exec_failed_aloud);
    if (pid < 0) {
        puts("fork fail");
        return exit_failed;
    }
    int status;
    int result = child_wait(pid, &status) ? report_end(status) : exit_failed;
    printf("parent exit, res=%d, pid=%d\n", result, pid);
    return result;
}

} // namespace

int iptables_rule(const char *action, const char *chain, const char *protocol, const char *port,
                  const char *range) {
    const char *selector = strcmp(protocol, "icmp") == 0 ? "--icmp-type" : "--dport";
    const char *source = range != nullptr ? "-s" : nullptr; // a null one ends the vector
    const char *const argv[] = {"iptables", action, chain,    "-p",   protocol, selector,
                                port,       "-j",   "ACCEPT", source, range,    nullptr};
    return run_and_report(argv);
}

int open_iptables_hole(const char *chain, const char *protocol, const char *port,
                       const char *range) {
    return iptables_rule("-A", chain, protocol, port, range);
}

int close_iptables_hole(const char *chain, const char *protocol, const char *port,
                        const char *range) {
    return iptables_rule("-D", chain, protocol, port, range);
}

int flush_iptables(const char *chain) {
    const char *const argv[] = {"iptables", "--flush", chain, nullptr};
    return run_and_report(argv);
}

} // namespace zelta
