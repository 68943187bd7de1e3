#!/usr/bin/env bash
# What of all that a caller hands down reaches the programs that the tool starts for him: everything
# from root, nothing from the device's user, who is served alike whatever he tries. For a stranger no
# program is started. The judge is what the programs report about themselves.
#
#   hostile_test.sh TOOL STAND_IN      both without sanitizers, which do not bear the limits; exits
#                                      with 77 where there is no device, or no user but root
# shellcheck disable=SC2016,SC2086 # set-ups are expanded later; lists of words

set -u
self=$(readlink -f "$0") root=${self%/tests/*}
# What this script itself inherits is not what is tested.
for fd in /proc/self/fd/*; do ((${fd##*/} < 3)) || eval "exec ${fd##*/}>&-"; done
[[ $1 == --inside ]] ||
    exec "$root/sim/device" --tool "$1" --stand-in "$2" --bind "$root" bash "$self" --inside
setpriv --reuid 500 --clear-groups true 2>/dev/null ||
    { echo "skipped: an ordinary user's device has no user 500" && exit 77; }

# After its report, a program does no more than what the row tells it.
for program in dhclient ifconfig iptables iwlist mount ps wpa_supplicant zelta-net; do
    echo report >"/run/sim/reply/$program"
    printf '#!/bin/sh\n. /run/sim/order\n:\n' >"/usr/lib/sim/$program"
done
printf 'echo Cell; echo "ESSID:\\"a\\""' >>/usr/lib/sim/iwlist

# What programs see that are started for the device's user: all processors, for example. Where a
# container may not raise hard limits, the soft ones go as far as they allow.
taskset -p ffffffff $$ >/dev/null
: >/run/sim/order
/usr/sbin/wpa_supplicant
(ulimit -Hf 1000 && ulimit -Hf 2000) 2>/dev/null && raise=yes || raise=''
printf '%s\n' "input /dev/null" "cwd /" "session own" "fd 0" "fd 1" "fd 2" "umask 0022" "uid 0 0 0 0" "gid 0 0 0 0" \
    groups "blocked 0000000000000000" "ignored 0000000000000000" "limit core 0 0" "limit stack 8388608 -1" \
    "limit nofile 1024 4096" "limit memlock 8388608 8388608" "limit msgqueue 819200 819200" \
    "limit "{fsize,as,data,cpu,rss,nproc,locks,sigpending,rttime}" -1 -1" "limit "{nice,rtprio}" 0 0" "alarm none" \
    "oom score 0" "nice 0" "scheduler 0" "io usual" "timer slack 50000" "personality 0" \
    "env PATH=/sbin:/usr/sbin:/bin:/usr/bin" "$(grep ^processors /run/sim/report)" |
    awk -v raise=$raise 'NR == FNR { if ($1 == "limit") hard[$2] = $4; next }
        $1 == "limit" && !raise && hard[$2] >= 0 && ($4 < 0 || $4 > hard[$2]) {
            $4 = hard[$2]; if ($3 < 0 || $3 > $4) $3 = $4 }
        { print }' /run/sim/report - >/tmp/user

commands=("--open-port tcp 2000 in" "--start-usb-eth-if usb-auto" "--stop-usb-eth-if usb-auto" --wifi-scan)
declare -A usual=() ids=([root]='' [user]='--reuid 500 --regid 500' [stranger]='--reuid 501 --regid 501')
groups=--clear-groups blind='' failed=0

# Starts a program in the way of the row: what it printed, and what came of it besides.
start() { # FILE [ARGUMENT...]
    rm -f /etc/dhclient.conf /run/sim/report
    : | tee /run/sim/trace /run/sim/order
    output=$( (eval "$setup" && exec setpriv ${ids[$caller]} $groups "${launcher[@]}" "$@") 2>&1
        echo "status $?")
    effect="${output##*$'\n'} $(cat /run/sim/trace /etc/dhclient.conf 2>/dev/null)"
    output=$(sed '$d; /^ERROR: ld.so/d; s/\r$//; s/pid=.*/pid=N/' <<<"$output")
}

# What the programs saw otherwise than expected. Where the tool reads what a program says, that has
# the pipe's descriptor besides.
differences() { # EXPECTED
    awk 'function judge() {
            for (line in expected) if (!(line in seen)) print program " lacks " line
            if (more != (program ~ /^(ps|iwlist)$/)) print program " has " more " more descriptors"
            split("", seen); more = 0
        }
        NR == FNR { expected[$0]; next }
        $1 == "report" { if (program) judge(); program = $2; next }
        $0 in expected { seen[$0]; next }
        $1 == "fd" { more++; next }
        { print program " has " $0 }
        END { judge() }' "$1" /run/sim/report 2>&1
}

# The first row is the start that all others are compared with. Root is served alike as well, or gets
# what he asked for (own), or does not try (none). He finds again what a program finds without the tool.
row() { # NAME alike|own|none SETUP [LAUNCHER...]
    local setup=$3 launcher=("${@:4}") caller command wanted wrong
    for caller in root user stranger; do
        [[ $caller$2 != rootnone ]] || continue
        [[ $caller != root ]] || start /usr/sbin/wpa_supplicant
        [[ $caller != root ]] || { sed '1d; s#^input closed#input /dev/null#' /run/sim/report && printf 'fd %s\n' 0 1 2; } >/tmp/root
        for command in "${commands[@]}"; do
            start /usr/bin/zelta-ip $command
            [[ -v usual[$command] ]] || usual[$command]=$output$'\n'$effect
            wanted=${usual[$command]}
            [[ $caller != stranger ]] || wanted=$'\nZelta IP Tool\nAccess denied.\nstatus 3 '
            [[ -z $blind ]] || wanted=$'\n'status${wanted##*$'\n'status}
            wrong=$(
                [[ $caller$2 == rootown ]] || diff <(echo "$wanted") <(echo "$output"$'\n'"$effect")
                [[ $caller == stranger ]] || differences "/tmp/$caller")
            [[ -z $wrong ]] || { echo "$1, $caller, $command:"$'\n'"$wrong" && failed=1; }
        done
    done
}

row "as usual" alike :
row environment alike : env -i PATH=/tmp BASH_ENV=/tmp LD_PRELOAD=libm.so.6 LD_LIBRARY_PATH=/tmp PS_FORMAT=args =x \
    XTABLES_LIBDIR=/tmp PATH_DHCLIENT_SCRIPT=/tmp OPENSSL_CONF=/tmp COLUMNS=9 'BASH_FUNC_test%%=() { :; }'
for closings in "0>&-" "1>&-" "2>&-" "0>&- 1>&-" "0>&- 2>&-" "1>&- 2>&-" "0>&- 1>&- 2>&-"; do
    [[ $closings != *1* ]] && blind='' || blind=yes
    row "$closings" alike "echo 'for fd in ${closings//>&-/}; do readlink /proc/\$\$/fd/\$fd; done |
        grep -vx \"/dev/null\|/dev/full\|pipe:.*\" >>/run/sim/trace' >/run/sim/order && exec $closings"
done
row "a reader that goes away" alike 'exec > >(:); wait $! || true'
blind=''
row descriptors alike 'exec 3</etc/passwd 30>/tmp/held 200</dev/null; ulimit -Sn 20'
for mask in 000 077; do row "umask $mask" alike "umask $mask"; done
row directory alike 'cd /dev/pts'
groups='--groups 27,100' row groups alike :
row "no name" alike : perl -e '$file = shift; exec $file "", @ARGV'
row "ignored signals" own : env --ignore-signal
row "pending signals" alike : env --block-signal perl -e 'kill $_, $$ for 1..8, 10..18, 20..31, 34..64; exec @ARGV'
row alarm none '[[ $command != *scan ]] || echo "sleep 2.1" >/run/sim/order' perl -e 'alarm 2; exec @ARGV'
# In a group of its own the tool is no orphan of a terminal, which would not stop.
row "signals on the way" none 'echo "for name in HUP INT QUIT TERM TTIN TTOU TSTP ALRM PIPE XFSZ; do
    kill -s \$name \$PPID; done; sleep 0.01
    ! grep State:.T /proc/\$PPID/status || kill -s CONT \$PPID" >/run/sim/order' perl -e 'setpgrp; exec @ARGV'
row "low limits" own 'ulimit -S -c unlimited -d 20000 -f 1000 -m 1000 -n 16 -s 500 -t 100 -v 50000'
row "no room" none 'ulimit -S -c unlimited -d 4000 -f 0 -n 4 -s 200 -t 1 -v 20000'
# The C library keeps some signals for itself and its callers from them; the kernel does not.
declare -A sigaction=([x86_64]=13 [aarch64]=134 [arm]=174)
[[ ! -v sigaction[$HOSTTYPE] ]] || row "all signals ignored" own : perl -e '
    my ($call, $ignore) = (shift, pack("L! x64", 1));
    syscall($call, $_ + 0, $ignore, 0, 8) for 1..64; exec @ARGV' "${sigaction[$HOSTTYPE]}"
row "limits of zero" own : prlimit --nproc=0: --memlock=0: --sigpending=0: --msgqueue=0: --locks=0: --rttime=0:
row priorities own : nice -n 19 chrt --idle 0 taskset -c "$(sed -n 's/^processors \([0-9]*\).*/\1/p' /tmp/user)" \
    ionice -c 3 choom -n 1000 -- setarch --uname-2.6
declare -A prctl=([x86_64]=157 [aarch64]=167 [arm]=172)
[[ ! -v prctl[$HOSTTYPE] ]] || row "timer slack" own : perl -e '
    syscall(shift(@ARGV) + 0, 29, 2e9); exec @ARGV' "${prctl[$HOSTTYPE]}"
row "standard input" own 'exec </etc/passwd'
mkfifo -m 666 /tmp/press /tmp/pressed
for key in $'\x03' $'\x1a' $'\x1c'; do
    row "key $(cat -v <<<"$key")" none 'echo "echo >/tmp/press; read -r key </tmp/pressed" >/run/sim/order' \
        "$root/tests/terminal" "$key"
done
row "in the background of a terminal" none : "$root/tests/terminal" background
[[ $raise ]] || sed -i 's/^limit fsize .*/limit fsize 1024000 1024000/' /tmp/user
row "hard limit" none 'ulimit -Sf 100 && ulimit -Hf 1000'

# A settings name with "/": what the caller may not open is neither read nor told from what is missing.
mkdir -m 700 /root/closed
echo config=auto | tee /root/closed/there /home/main-user/.ip_config/plain >/tmp/own
chmod 400 /tmp/own && chown 500 /tmp/own
mkfifo -m 600 /root/fifo && exec 3<>/root/fifo && echo config=auto >&3
setup=: launcher=() caller=user
while IFS='|' read -r name end; do
    start /usr/bin/zelta-ip --start-usb-eth-if "$name"
    [[ $(tail -n 2 <<<"$output") == *"$end" ]] || { echo "settings name $name: $output" && failed=1; }
done <<'NAMES'
plain|init_network_if successful
../../../tmp/own|init_network_if successful
../../../root/closed/there|not found (reason: Permission denied)
../../../root/closed/missing|not found (reason: Permission denied)
../../../root/fifo|: Permission denied
NAMES
read -r -t 1 <&3 || { echo "root's FIFO was read" && failed=1; }

# An existing secrets file.
touch /etc/ppp/chap-secrets && chown 500:500 /etc/ppp/chap-secrets && chmod 666 /etc/ppp/chap-secrets
start /usr/bin/zelta-ip --start-gprs-if gprs-auto
[[ $(stat -c '%u %g %a %s' /etc/ppp/chap-secrets) == "0 0 600 "[1-9]* ]] || { ls -l /etc/ppp && failed=1; }
exit $failed
