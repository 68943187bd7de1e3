#!/usr/bin/env bash
# Somebody names a process so that a line of its own stands in the list of processes, with the id of a
# process of root: the packaged listing lets a stop command interrupt the DHCP client alone.
#
#   ps_test.sh TOOL STAND_IN      exits with 77 where no device can be simulated, or without BusyBox

set -u
self=$(readlink -f "$0") here=${self%/*}
if [[ $1 != --inside ]]; then
    command -v busybox >/dev/null || { echo "skipped, not installed: busybox" && exit 77; }
    exec "$here/../sim/device" --tool "$1" --stand-in "$2" --bind "$here" bash "$self" --inside
fi

start() { # NAME [ARGUMENT...]: a process that interrupts end
    ln -sf "$(command -v sleep)" "/tmp/$1"
    env --default-signal=INT "/tmp/$1" 1000 "${@:2}" >/dev/null &
    until [[ $(<"/proc/$!/comm") == "${1::15}" ]]; do sleep 0.01; done
}

stop() { # LISTING: how the processes ended, 130 by an interrupt; and what it promises and does not do
    local victim client
    install "$1" /usr/lib/sim/ps
    start important && victim=$!
    start $'x\n'"$victim dhclient" {1..90}
    start dhclient && client=$!
    : >/var/run/dhclient.pid
    [[ $1 == *forgeable ]] || LC_ALL=C grep -anE ".{201}|[^ -~]" <(ps)
    zelta-ip --stop-usb-eth-if usb-auto >/dev/null
    for pid in $victim $client; do
        kill -KILL "$pid"
        wait "$pid"
        echo "$?"
    done 2>/dev/null
}

cat >/tmp/forgeable <<'END'
#!/bin/bash
for process in /proc/[0-9]*; do echo "${process##*/} $(<"$process/comm")"; done
END
{ echo "#!$(command -v busybox) sh" && cat "$here/ps"; } >/tmp/of-busybox
for listing in /tmp/forgeable "$here/ps" /tmp/of-busybox; do stop "$listing" | xargs; done |
    diff <(printf '%s\n' "130 130" "137 130" "137 130") -
