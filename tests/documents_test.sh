#!/usr/bin/env bash
# Binary, manual, README and completion say the same: words, parameters, exit statuses, files.
#   documents_test.sh TOOL
set -u
tool=$(readlink -f "$1")
cd "$(dirname "$0")/.." || exit 1
export LC_ALL=C
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
device() { sim/device --tool "$tool" "$@"; }
same() { diff <(echo "$2") <(echo "$3") || { echo "^ $1" && failed=1; }; }
failed=0 skipped=0
usage=$(device zelta-ip)
status=$?
((status != 77)) || exit 77
denied=$(device --user 501 zelta-ip)
same "statuses of the usage text and of a stranger" "1 3 Access denied." "$status $? ${denied##*$'\n'}"

# Words and parameters. The usage text does not show that the new name may be left out.
table=$(sed -n 's/\\|/!/g; s/^| `\(--[^`]*\)` | `*\([^`|]*\).*/\1 \2/p' README.md | tr '!' '|' | sed 's/ *$//')
manual=$(sed -n 's/ Ns | Ns Cm /|/g; s/ Op Ar \(.*\)/ [\1]/; s/ \(Ar\|Cm\) / /g; s/^\.It Fl -/--/p' docs/zelta-ip.8)
same "usage text and README" "$(sed -n 's/^    \(--[^ ]*\) */\1 /p' <<<"$usage" | sed 's/ *$//' | tr -d '[]')" "$(tr -d '[]' <<<"$table")"
same "manual and README" "$manual" "$(tr -d '<>' <<<"$table")"
# shellcheck disable=SC2016 # expanded in the device
counts='while read -r command rest; do
    all=${rest//[^<]/} optional=${rest//[^[]/} least=$((${#all} - ${#optional}))
    for ((count = 0; count <= ${#all} + 1; count++)); do
        zelta-ip "$command" $(yes x | head -n $count) 2>&1 | grep -q ^Usage: && usage=1 || usage=0
        ((usage == (count < least || count > ${#all}))) || echo "$command takes $count"
    done
done'
same "counts of parameters" "" "$(device bash -c "$counts" <<<"$table")"
same "exit statuses of README" "0 1 2 3 4" "$(sed -n 's/^| \([0-9]\) |.*/\1/p' README.md | xargs)"
same "exit statuses of the manual" "0 1 2 3 4" "$(sed -n 's/^\.It \([0-9]\)$/\1/p' docs/zelta-ip.8 | xargs)"
paths=$(grep -rhoE '"/(bin|etc|sbin|usr|var)/[^" ]+' --include=*.cc --include=*.h app netif process firewall wifi | tr -d '"')
same "paths that the manual lacks" "" "$(while read -r path; do grep -qF "$path" docs/zelta-ip.8 || echo "$path"; done <<<"$paths")"
# The worked files of the settings page are those that the simulated device is tried with.
settings=$PWD/sim/rootfs/home/main-user/.ip_config
awk -v to="$scratch" '$1 == ".Pa" { name = to "/" $2 } /^\.Ed/ { shown = 0 } shown { gsub(/\\e/, "\\"); print > name } /^\.Bd/ { shown = 1 }' docs/zelta-ip-settings.5
same "worked settings" "$(cat "$settings"/{usb-*,bluetooth-manual,wifi-auto,wlan-*,gprs-{auto,c*,d*}})" "$(cat "$scratch"/{usb-*,bluetooth-*,wifi-*,wlan-*,gprs-*})"

# Completion offers what the parameters say, and never starts the tool.
printf '#!/bin/sh\ntouch %s/started\n' "$scratch" >"$scratch/zelta-ip" && chmod +x "$scratch/zelta-ip"
for file in zelta-ip.bash _zelta-ip zelta-ip.fish; do sed "s|/home/.*ip_config|$settings|" "packaging/completion/$file" >"$scratch/$file.test"; done
lines=("zelta-ip ") expected=("zelta-ip : $(cut -d' ' -f1 <<<"$table" | sort | xargs)")
while read -r command rest; do
    line="zelta-ip $command "
    while [[ ${rest-} =~ \<([^>]*)\>(.*) || -n $line ]]; do
        rest=${BASH_REMATCH[2]-}
        case ${BASH_REMATCH[1]-} in
        *'|'*) words=${BASH_REMATCH[1]/|/ } ;;
        'config file') words='bluetooth-auto bluetooth-manual gprs-auto gprs-manual usb-auto usb-manual wifi-auto wifi-manual' ;;
        *) words='' ;;
        esac
        lines+=("$line") expected+=("$line: $(xargs -n1 <<<"$words" | sort | xargs)")
        [[ -n ${BASH_REMATCH[1]-} ]] && line+='x ' || line=''
    done
done <<<"$table"
