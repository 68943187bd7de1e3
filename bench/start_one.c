// The least that opens a port: fork, execute and wait, as the tool does.
#include <sys/wait.h>
#include <unistd.h>

int main(void) {
    char *argv[] = {"iptables", "-A", "INPUT", "-p", "tcp", "--dport", "2000", "-j", "ACCEPT", 0};
    int status;
    pid_t pid = fork();
    if (pid == 0) {
        execv("/usr/sbin/iptables", argv);
        _exit(4);
    }
    return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : 4;
}
