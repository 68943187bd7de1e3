// What the tool is compared with: the shortest C programs that do the work of three of its commands.
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

static int show_usage(const char *program) {
    printf("\nUsage: %s <option> <parameters>\nWhere:\n", program);
    puts("    <option>                 <parameters>");
    for (int row = 0; row < 17; row++)
        printf("    %-21s    %s\n", "--restart-dhclient", "<config file>");
    return 1;
}

static int show_name(void) {
    char name[256];
    return gethostname(name, sizeof name) != 0 || puts(name) < 0;
}

static int open_hole(const char *protocol, const char *port) {
    int status = 0;
    fflush(stdout);
    pid_t child = setuid(0) == 0 && setgid(0) == 0 ? fork() : -1;
    if (child == 0)
        execl("/usr/sbin/iptables", "iptables", "-A", "INPUT", "-p", protocol, "--dport", port,
              "-j", "ACCEPT", (char *)0);
    waitpid(child, &status, 0);
    printf("terminated normally status=%d\n", WEXITSTATUS(status));
    return printf("parent exit, res=%d, pid=%d\n", WEXITSTATUS(status), child) < 0;
}

int main(int argc, char **argv) {
    puts("\nZelta IP Tool");
    return argc == 1 ? show_usage(argv[0]) : argc == 2 ? show_name() : open_hole(argv[2], argv[3]);
}
