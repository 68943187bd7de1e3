#!/usr/bin/env bash
# Times whole commands in the simulated device, in alternating rounds: a firewall hole through the tool
# against a small program that starts the same stand-in, and the usage text against a program that does
# nothing. The rows are those of rows.cc, in microseconds.
#
#   command.sh TOOL STAND_IN

set -eu
here=$(dirname "$(readlink -f "$0")")

if [[ $1 != --inside ]]; then
    programs=$(mktemp -d)
    trap 'rm -rf "$programs"' EXIT
    mkdir -p "$programs"/{tmp,run/sim/reply}
    echo "exit 0" >"$programs/run/sim/reply/iptables"
    echo 'int main(void) { return 0; }' >"$programs/empty.c"
    cat >"$programs/plain.c" <<'END'
#include <sys/wait.h>
#include <unistd.h>
int main(void) {
    char *argv[] = {"iptables", "-A", "INPUT", "-p", "tcp", "--dport", "2000", "-j", "ACCEPT", 0};
    pid_t pid = fork();
    if (pid < 0)
        return 4;
    if (pid == 0) {
        execv("/usr/sbin/iptables", argv);
        _exit(4);
    }
    int status;
    return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : 4;
}
END
    for name in empty plain; do cc -O2 -o "$programs/tmp/$name" "$programs/$name.c"; done
    cp "$here/command.sh" "$programs/tmp"
    exec "$here/../sim/device" --tool "$1" --stand-in "$2" --files "$programs" bash /tmp/command.sh --inside
fi

microseconds() { # COMMAND...: of one of 40 starts
    local from=${EPOCHREALTIME/./} i
    for ((i = 0; i < 40; i++)); do "$@"; done >/dev/null || true
    echo $(((${EPOCHREALTIME/./} - from) / 40))
}

median() { printf '%s\n' "$@" | sort -n | sed -n "$((($# + 1) / 2))p"; }

compare() { # NAME TARGET PEER COMMAND...
    local name=$1 target=$2 peer=$3 ours=() theirs=() round
    shift 3
    for ((round = 0; round < 31; round++)); do
        ((round % 2)) || ours+=("$(microseconds "$@")")
        theirs+=("$(microseconds "$peer")")
        ((round % 2 == 0)) || ours+=("$(microseconds "$@")")
    done
    awk -v name="$name" -v ours="$(median "${ours[@]}")" -v theirs="$(median "${theirs[@]}")" -v target="$target" \
        'BEGIN { ratio = ours / theirs
                 printf "%-48s %12.1f %12.1f %7.2f %7.2f%s\n", name, ours, theirs, ratio, target,
                     ratio < target + 0.005 ? "" : "  missed" }'
}

rm /run/sim/trace
chmod 755 /usr/bin/zelta-ip # root starts it, as it does its peer
compare "command: a firewall hole, fork and execv" 1.05 /tmp/plain zelta-ip --open-port tcp 2000 in
compare "command: the usage text, an empty program" 1.10 /tmp/empty zelta-ip
