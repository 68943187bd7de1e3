#!/usr/bin/env bash
# Lets the 1st, 2nd, 3rd ... call fail of each C library function that a command uses, until none
# fails any more. Whatever it is: no crash, no leak, a documented exit status, and every program
# waited for.
#
#   exhaustive_test.sh TOOL STAND_IN      the tool with sanitizers and faults.cc; exits with 77 where
#                                         there is no device

set -u
self=$(readlink -f "$0") root=${self%/tests/*}
[[ $1 == --inside ]] ||
    exec "$root/sim/device" --tool "$1" --stand-in "$2" --bind "$root" bash "$self" --inside
export ASAN_OPTIONS=exitcode=99

client=$(trap '' INT && SIM_DAEMON=1 dhclient usb0) # which no interrupt ends
# Programs do nothing, but what they print or leave is used.
for program in dhclient ifconfig iptables killall mount pppd route wpa_cli zelta-net; do
    echo "exit 0" >"/run/sim/reply/$program"
done
printf '#!/bin/sh\n: >/var/run/wpa_supplicant/wlan0\n' >/usr/lib/sim/wpa_supplicant
printf 'print\n%s\n' "Cell 01" 'ESSID:"a"' Quality=1/1 "Encryption key:on" "IE: WPA Version 1" "Cell 02" \
    >/run/sim/reply/iwlist
printf 'print\n  PID CMD\n%5d dhclient usb0\n999999 pppd\n' "$client" >/run/sim/reply/ps

failed=0 caller=()

complain() {
    printf '%s, %s %d: %s\n' "$command" "$function" "$number" "$*"
    failed=1
}

attempt() { # FUNCTION NUMBER ERROR
    rm -rf /run/sim/{struck,unwaited} /var/run/{*.pid,wpa_supplicant/*} /etc/dhclient.conf /etc/ppp/*
    mkdir -p /var/run/wpa_supplicant
    [[ -z $running ]] || echo "$client" >"/var/run/$running"
    echo nameserver >/etc/ppp/resolv.conf
    : >/run/sim/trace
    echo "$*" >/run/sim/faults
    # shellcheck disable=SC2086 # words
    output=$("${caller[@]}" zelta-ip $command 2>&1)
    status=$?
}

check_outcome() {
    [[ $status == [$statuses] ]] || complain "exit status $status: $output"
    [[ $output != *Sanitizer* && $output != *"runtime error"* ]] || complain "$output"
    # Without a stream, or the record of it, which takes two allocations, nobody can wait for its program.
    [[ ! -e /run/sim/unwaited || $function == fdopen ]] ||
        { [[ $function == malloc ]] && ((unrecorded++ < 2)); } || complain "not waited for"
}

row() { # STATUSES RUNNING COMMAND: what runs is told by a file of /var/run
    local statuses=$1 running=$2 command=$3 function=any number=0 unrecorded=0 functions
    attempt any 0 0
    check_outcome
    ((status == 0)) || complain "not usable: $output"
    mapfile -t functions < <(sort -u /run/sim/struck)
    for function in "${functions[@]}"; do
        for ((number = 1; ; number++)); do
            attempt "$function" "$number" 5
            [[ -e /run/sim/struck ]] || break
            check_outcome
        done
    done
}
row 0124 '' "--start-wifi-if wifi-auto"
row 0124 '' "--start-gprs-if gprs-manual"
row 0124 wpa_supplicant/wlan0 "--stop-wifi-if wifi-auto"
row 0124 ppp0.pid "--stop-gprs-if gprs-manual"
row 04 '' --wifi-scan
row 04 dhclient.pid --restart-dhclient
row 014 wpa_supplicant/wlan0 --restart-wpa-supplicant
row 014 '' --hostname
row 014 '' "--hostname zelta"
row 014 '' --domainname
row 014 '' "--domainname zelta"
caller=(setpriv --reuid 500 --clear-groups)
! "${caller[@]}" true 2>/dev/null || row 014 '' "--open-ping in" # an ordinary user's device has root alone
exit $failed
