#!/usr/bin/env bash
# Binary, manual and README say the same: words, parameters, exit statuses, files, messages, version.
#
#   documents_test.sh TOOL      exits with 77 where no device can be simulated

set -u
tool=$(readlink -f "$1")
cd "$(dirname "$0")/.." || exit 1
failed=0

device() { sim/device --tool "$tool" "$@"; }

same() { # WHAT TEXT TEXT
    diff <(echo "$2") <(echo "$3") | head -n 30
    ((PIPESTATUS[0] != 0)) || return
    echo "differs: $1"
    failed=1
}

usage=$(device zelta-ip)
(($? != 77)) || exit 77

# Each as "--command <parameter>...". The usage text does not show that a new name may be left out.
listed=$(sed -n 's/^    \(--.*\)/\1/p' <<<"$usage" | tr -s ' ' | sed 's/ $//')
# shellcheck disable=SC2016 # back quotes of the table
readme=$(sed -n 's/\\|/!/g; s/^| `\(--[^`]*\)` | `*\([^`|]*\).*/\1 \2/p' README.md |
    tr '!' '|' | sed 's/ *$//')
manual=$(sed -n '/^\.Sh ENVIRONMENT/q; s/ Ns | Ns Cm /|/g; s/ Op Ar \(.*\)/ [\1]/; s/ \(Ar\|Cm\) / /g
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

statuses=$(sed -n 's/^.*exit_[a-z_]* = \([0-9]\);.*/\1/p' lib/exit_status.h)
same "exit statuses of README and manual" "$statuses"$'\n'"$statuses" "$(sed -n 's/^| \([0-9]\) |.*/\1/p' README.md
    sed -n '/^\.Ss What a status/q; s/^\.It \([0-9]\)$/\1/p' docs/zelta-ip.8)"
same "paths that the manual lacks" "" "$(
    grep -rhoE '"/(bin|etc|sbin|usr|var)/[^" ]+' app netif process firewall wifi | tr -d '"' |
        while read -r path; do grep -qwF "$path" docs/zelta-ip.8 || echo "$path"; done)"

# Every text that the code prints, or that has a blank, is a head of the diagnostics or stands in a sample
# of the page. What changes in a text, here ~, is in italics in a head.
literals=$(sed 's|^#.*||; s|//.*||' {app,firewall,netif,process,settings,wifi}/*.{cc,h} |
    grep -oE '((puts|printf|fputs|report_error)\()?"([^"\]|\\.)*"' | grep -E '^[a-z]| ' | grep -v '^"<')
texts=$(sed -E 's/^[^"]*"(.*)"$/\1/; s/\\n/\n/g; s/\\t/ /g; s/\\"/"/g; s/%-?[0-9]*[a-z]/~/g' <<<"$literals" |
    sed 's/  */ /g; s/^ //; s/ $//; /^$/d' | sort -u)
heads=$(sed -n '/^\.Sh DIAG/,/^\.Sh SEE/{s/\\&//g; s/^\.It "\(.*\)"$/\1/p}' docs/zelta-ip.8 |
    sed -E 's/\\fI[A-Za-z]*\\fR/~/g; s/: ~$//; /^$/d' | sort -u)
samples=$(sed -n '/^\.Bd/,/^\.Ed/{s/\\&//g; /^\./!p}' docs/zelta-ip.8)
same "texts that the manual does not explain" "" "$(comm -23 <(echo "$texts") <(echo "$heads") |
    while IFS= read -r text; do
        pattern=$(sed 's/[][*.^$+?(){}|\]/\\&/g; s/~/.*/g' <<<"$text")
        grep -qE -- "$pattern" <<<"$samples" || echo "$text"
    done)"
same "explained texts that are never printed" "" "$(comm -13 <(echo "$texts") <(echo "$heads"))"
version=$(sed -n 's/^project(\(.*\) VERSION \([0-9.]*\).*/\1 \2/p' CMakeLists.txt)
same "version of the manuals" "$version $version" "$(sed -n 's/^\.Os //p' docs/*.[58] | xargs)"

# What the manual shows of the files for other programs is what they get of the worked settings; the
# last line is that of settings without a user.
shown=$(sed -n '/^\.Ss What is written/,/^\.Sh/{/^\.Bd/,/^\.Ed/{s/\\&//; /^\./!p}}' docs/zelta-ip.8)
same "files for other programs" "$shown" "$(device bash <<'END'
    cd /etc
    { zelta-ip --start-usb-eth-if usb-auto && zelta-ip --start-gprs-if gprs-auto; } >/dev/null
    cat dhclient.conf ppp/pppd-config ppp/chap-secrets
    sed -i /^user=/d /home/main-user/.ip_config/gprs-config
    { zelta-ip --stop-gprs-if gprs-auto && /usr/lib/sim/state &&
        zelta-ip --start-gprs-if gprs-auto; } >/dev/null
    cat ppp/chap-secrets
END
)"

# What the settings page shows is what the simulated device is tried with.
shown=$(awk '$1 == ".Pa" { name = $2 } /^\.Ed/ { on = 0 } on { print name ": " $0 }
    /^\.Bd/ { on = 1 }' docs/zelta-ip-settings.5 | sed 's/\\e/\\/g')
same "worked settings" "" "$(grep -vxF -f <(cd sim/rootfs/home/main-user/.ip_config && grep '' ./* |
    sed 's|^./\([^:]*\):|\1: |') <<<"$shown")"

page=$(scripts/tour-page --print --tool "$tool" 2>&1)
(($? == 77)) || same "docs/tour.md, which scripts/tour-page writes" "$(cat docs/tour.md)" "$page"
exit $failed
