#!/usr/bin/env bash
# Binary, manual and README say the same: words, parameters, exit statuses, files.
#
#   documents_test.sh TOOL      exits with 77 where no device can be simulated

set -u
tool=$(readlink -f "$1")
cd "$(dirname "$0")/.." || exit 1
failed=0

device() { sim/device --tool "$tool" "$@"; }

same() { # WHAT TEXT TEXT
    diff <(echo "$2") <(echo "$3") && return
    echo "differs: $1"
    failed=1
}

usage=$(device zelta-ip)
status=$?
((status != 77)) || exit 77
same "status of the usage text" 1 "$status"
device --user 501 zelta-ip >/dev/null
same "status of a stranger" 3 $?

# Each as "--command <parameter>...". The usage text does not show that a new name may be left out.
listed=$(sed -n 's/^    \(--.*\)/\1/p' <<<"$usage" | tr -s ' ' | sed 's/ $//')
# shellcheck disable=SC2016 # back quotes of the table
readme=$(sed -n 's/\\|/!/g; s/^| `\(--[^`]*\)` | `*\([^`|]*\).*/\1 \2/p' README.md |
    tr '!' '|' | sed 's/ *$//')
manual=$(sed -n 's/ Ns | Ns Cm /|/g; s/ Op Ar \(.*\)/ [\1]/; s/ \(Ar\|Cm\) / /g
    s/^\.It Fl -/--/p' docs/zelta-ip.8)
same "usage text and README" "$(tr -d '[]' <<<"$listed")" "$(tr -d '[]' <<<"$readme")"
same "manual and README" "$manual" "$(tr -d '<>' <<<"$readme")"

# shellcheck disable=SC2016 # expanded in the device
counts='while read -r command parameters; do
    all=${parameters//[^<]/} optional=${parameters//[^[]/}
    for ((count = 0; count <= ${#all} + 1; count++)); do
        fits=$((${#all} - ${#optional} <= count && count <= ${#all}))
        ! zelta-ip "$command" $(yes x | head -n "$count") 2>&1 </dev/null | grep -q ^Usage:
        (($? != fits)) || echo "$command: $count"
    done
done'
same "served counts of parameters" "" "$(device bash -c "$counts" <<<"$readme")"

same "exit statuses" "$(sed -n 's/^| \([0-9]\) |.*/\1/p' README.md)" \
    "$(sed -n 's/^.*exit_[a-z_]* = \([0-9]\);.*/\1/p' app/exit_status.h)"
same "exit statuses of the manual" "$(sed -n 's/^\.It \([0-9]\)$/\1/p' docs/zelta-ip.8)" \
    "$(sed -n 's/^| \([0-9]\) |.*/\1/p' README.md)"
same "paths that the manual lacks" "" "$(
    grep -rhoE '"/(bin|etc|sbin|usr|var)/[^" ]+' app netif process firewall wifi | tr -d '"' |
        while read -r path; do grep -qF "$path" docs/zelta-ip.8 || echo "$path"; done)"

# What the settings page shows is what the simulated device is tried with.
shown=$(awk '$1 == ".Pa" { name = $2 } /^\.Ed/ { on = 0 } on { print name ": " $0 }
    /^\.Bd/ { on = 1 }' docs/zelta-ip-settings.5 | sed 's/\\e/\\/g')
same "worked settings" "" "$(grep -vxF -f <(cd sim/rootfs/home/main-user/.ip_config && grep '' ./* |
    sed 's|^./\([^:]*\):|\1: |') <<<"$shown")"
exit $failed
