#!/usr/bin/env bash
# Lets the 1st, 2nd, 3rd ... call fail of each C library function that a command uses, until none
# fails any more. Whatever it is: no crash, no leak, a documented exit status, no DHCP client on half
# a configuration, no PPP daemon on half a secret, every program waited for, and a stop goes on to its
# end.
#
#   exhaustive_test.sh TOOL STAND_IN      the tool with sanitizers and faults.cc; exits with 77 where
#                                         there is no device

set -u
self=$(readlink -f "$0") root=${self%/tests/*}
[[ $1 == --inside ]] ||
    exec "$root/sim/device" --tool "$1" --stand-in "$2" --bind "$root" bash "$self" --inside
export ASAN_OPTIONS=exitcode=99

# Programs do nothing, but some of what they need or leave counts.
for program in chat ifconfig iptables killall mount route wpa_cli zelta-net; do
    echo "exit 0" >"/run/sim/reply/$program"
done
for pair in dhclient:/etc/dhclient.conf pppd:/etc/ppp/chap-secrets; do
    cat >"/usr/lib/sim/${pair%:*}" <<END
#!/bin/sh
[ -e "/tmp/${pair%:*} \$1" ] || cp ${pair#*:} "/tmp/${pair%:*} \$1"
cmp -s ${pair#*:} "/tmp/${pair%:*} \$1" || echo "${pair%:*} \$1" >>/run/sim/torn
END
done
printf '#!/bin/sh\n: >/var/run/wpa_supplicant/wlan0\n' >/usr/lib/sim/wpa_supplicant
printf 'print\n%s\n' "Cell 01" 'ESSID:"a"' Quality=1/1 "Encryption key:on" "IE: WPA Version 1" "Cell 02" \
    >/run/sim/reply/iwlist
client=$(trap '' INT && SIM_DAEMON=1 dhclient usb0) # which no interrupt ends
printf 'print\n  PID CMD\n%5d dhclient usb0\n999999 pppd\n' "$client" >/run/sim/reply/ps

failed=0 caller=()

complain() {
    printf '%s, %s %d: %s\n' "$command" "$function" "$number" "$*"
    failed=1
}

attempt() { # FUNCTION NUMBER ERROR
    rm -rf /run/sim/{struck,torn,unwaited} /var/run/{*.pid,wpa_supplicant/*} /etc/dhclient.conf /etc/ppp/*
    mkdir -p /var/run/wpa_supplicant
    [[ -z $running ]] || echo "$client" >"/var/run/$running"
    echo nameserver >/etc/ppp/resolv.conf
    : >/run/sim/trace
    echo "$*" >/run/sim/faults
    # shellcheck disable=SC2086 # words
    output=$("${caller[@]}" zelta-ip $command 2>&1)
    status=$?
}

judge() {
    local missing
    [[ $status == [$statuses] ]] || complain "exit status $status: $output"
    [[ $output != *Sanitizer* && $output != *"runtime error"* ]] || complain "$output"
    [[ ! -e /run/sim/torn ]] || complain "started on half a file: $(cat /run/sim/torn)"
    # Without a stream, or the record of it, which takes two allocations, nobody can wait for its program.
    [[ ! -e /run/sim/unwaited || $function == fdopen ]] ||
        { [[ $function == malloc ]] && ((unrecorded++ < 2)); } || complain "not waited for"
    [[ $command == --stop-* && $status != [12] && $output == *Validate* ]] || return
    missing=$(comm -23 <(sort <<<"$usual") <(sort /run/sim/trace))
    [[ $missing != *$'\n'* ]] || complain "several not tried: $missing"
    [[ -z $missing || $missing =~ dhclient|ps|wpa_cli || $function =~ fork|execv ]] ||
        complain "not tried: $missing"
}

row() { # STATUSES RUNNING COMMAND: what runs is told by a file of /var/run
    local statuses=$1 running=$2 command=$3 function=any number=0 usual='' unrecorded=0 functions
    attempt any 0 0
    judge
    ((status == 0)) || complain "not usable: $output"
    usual=$(</run/sim/trace)
    mapfile -t functions < <(sort -u /run/sim/struck)
    for function in "${functions[@]}"; do
        for ((number = 1; ; number++)); do
            attempt "$function" "$number" 5
            [[ -e /run/sim/struck ]] || break
            judge
        done
    done
}
row 0124 '' "--start-usb-eth-if usb-manual"
row 0124 '' "--start-bluetooth-pan-if bluetooth-auto"
row 0124 '' "--start-wifi-if wifi-auto"
row 0124 '' "--start-gprs-if gprs-auto"
row 0124 '' "--start-gprs-if gprs-manual"
row 0124 dhclient.pid "--stop-usb-eth-if usb-auto"
row 0124 '' "--stop-bluetooth-pan-if bluetooth-manual"
row 0124 wpa_supplicant/wlan0 "--stop-wifi-if wifi-auto"
row 0124 ppp0.pid "--stop-gprs-if gprs-auto"
row 0124 ppp0.pid "--stop-gprs-if gprs-manual"
row 04 '' --wifi-scan
row 04 dhclient.pid --restart-dhclient
row 014 wpa_supplicant/wlan0 --restart-wpa-supplicant
row 014 '' "--open-port tcp 2000 in 10.0.0.0/8"
row 014 '' "--close-port udp 53 out"
row 014 '' "--close-ping out"
row 014 '' --hostname
row 014 '' "--hostname zelta"
row 014 '' --domainname
row 014 '' "--domainname zelta"
caller=(setpriv --reuid 500 --clear-groups)
row 014 '' "--open-ping in"
exit $failed
