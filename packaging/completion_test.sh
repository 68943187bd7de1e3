#!/usr/bin/env bash
# Drives the completion of three shells at every place of every command. What is right follows from
# the table of commands in the README. Exits with 77 when one of the shells is not installed.

set -u
cd "$(dirname "$0")/.." || exit 1
export LC_ALL=C
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
settings=$PWD/sim/rootfs/home/main-user/.ip_config
result=0

# Completion must not start the tool: it would be this one.
printf '#!/bin/sh\ntouch %s/started\n' "$scratch" >"$scratch/zelta-ip"
chmod +x "$scratch/zelta-ip"
export PATH=$scratch:$PATH

# shellcheck disable=SC2016 # back quotes of the table
table=$(sed -n 's/\\|/!/g; s/^| `\(--[^`]*\)` | `*\([^`|]*\).*/\1 \2/p' README.md | tr '!' '|')
names=$(cd "$settings" && printf '%s\n' *-auto *-manual | sort | xargs)
parameter='<([^>]*)>(.*)'
lines=("zelta-ip ")
expected="zelta-ip : $(cut -d' ' -f1 <<<"$table" | sort | xargs)"
while read -r command rest; do
    line="zelta-ip $command "
    while [[ $rest =~ $parameter ]]; do
        rest=${BASH_REMATCH[2]}
        case ${BASH_REMATCH[1]} in
        *'|'*) words=${BASH_REMATCH[1]/|/ } ;;
        'config file') words=$names ;;
        *) words='' ;;
        esac
        lines+=("$line")
        expected+=$'\n'"$line: $words"
        line+='x '
    done
    lines+=("$line")
    expected+=$'\n'"$line: "
done <<<"$table"

# What a shell offers at each of the lines. The completion builtins of bash and zsh work at a prompt
# alone: bash gets its variables set by hand, and zsh functions that print what would be offered.
# shellcheck disable=SC2016 # expanded in the shells
offers() { # SHELL FILE
    case $1 in
    bash) bash -c 'source "$1"; shift
        for line; do
            read -ra COMP_WORDS <<<"$line"
            COMP_CWORD=${#COMP_WORDS[@]} COMP_WORDS+=("")
            _zelta_ip
            echo "$line: $(echo "${COMPREPLY[*]}" | xargs -n1 | sort | xargs)"
        done
        COMP_WORDS=(zelta-ip --stop-wifi-if usb-a) COMP_CWORD=2
        _zelta_ip
        [[ ${COMPREPLY[*]} == usb-auto ]] || echo "not by prefix: ${COMPREPLY[*]}"' \
        bash "$2" "${lines[@]}" ;;
    zsh) zsh -fc 'compadd() { print -l -- ${@:#--} }; _message() {}
        _describe() { print -l -- ${${(P)2}%%:*} }
        file=$1; shift
        for line; do
            words=(${=line} ""); CURRENT=$#words
            echo "$line: $(source $file | sort | xargs)"
        done' zsh "$2" "${lines[@]}" ;;
    fish) fish -N -c 'source $argv[1]
        for line in $argv[2..-1]
            echo "$line: "(complete -C $line | cut -f1 | sort | xargs)
        end' "$2" "${lines[@]}" ;;
    esac
}

for shell in bash:zelta-ip.bash zsh:_zelta-ip fish:zelta-ip.fish; do
    file=${shell#*:} shell=${shell%:*}
    if ! command -v "$shell" >/dev/null; then
        echo "skipped: $shell is not installed"
        ((result)) || result=77
        continue
    fi
    sed "s|/home/main-user/.ip_config|$settings|" "packaging/completion/$file" >"$scratch/$file"
    diff <(echo "$expected") <(offers "$shell" "$scratch/$file") && continue
    echo "differs: $shell"
    result=1
done
[[ ! -e $scratch/started ]] || { echo "completion started the tool" && result=1; }
exit "$result"
