#!/usr/bin/env bash
# Drives the completion of three shells at every place of every command. What is right follows from
# the table of commands in the README. Exits with 77 when one of the shells is not installed.

set -u
cd "$(dirname "$0")/.." || exit 1
export LC_ALL=C
scratch=$(mktemp -d) result=0
trap 'rm -rf "$scratch"' EXIT
settings=$scratch/settings # put into the completions as it stands, so without blanks
ln -s "$PWD/sim/rootfs/home/main-user/.ip_config" "$settings"

# Completion must not start the tool: it would be this one.
install /dev/stdin "$scratch/zelta-ip" <<<"#!/bin/sh
touch $scratch/started"
export PATH=$scratch:$PATH

# shellcheck disable=SC2016 # back quotes of the table
expected=$(sed -n 's/\\|/ /g; s/^| `\(--[^`]*\)` | `*\([^`|]*\).*/\1 \2/p' README.md |
    awk -v names="$(cd "$settings" && printf '%s\n' *-auto *-manual | sort | xargs)" '
        { line = "zelta-ip " $1 " "; count = split($0, parameter, "<") }
        { for (i = 2; i <= count; i++) {
            sub(/>.*/, "", parameter[i])
            print line ": " (parameter[i] == "config file" ? names : parameter[i] ~ /^(tcp|in) / ? parameter[i] : "")
            line = line "x " } }
        { print line ": " }')
expected="zelta-ip : $(sed -n 's/^zelta-ip \(--[^ ]*\) :.*/\1/p' <<<"$expected" | sort | xargs)"$'\n'$expected
mapfile -t lines < <(cut -d: -f1 <<<"$expected")

# What a shell offers at each of the lines. The completion builtins of bash and zsh work at a prompt
# alone: bash gets its variables set by hand, and zsh functions that print what would be offered.
# shellcheck disable=SC2016 # expanded in the shells
offers() { # SHELL FILE
    case $1 in
    bash) bash -c 'source "$1"; shift
        for line; do
            read -ra COMP_WORDS <<<"$line"
            COMP_CWORD=${#COMP_WORDS[@]} COMP_WORDS+=("")
            _zelta_ip; echo "$line: $(echo "${COMPREPLY[*]}" | xargs -n1 | sort | xargs)"
        done
        COMP_WORDS=(zelta-ip --stop-wifi-if usb-a) COMP_CWORD=2
        _zelta_ip
        [[ ${COMPREPLY[*]} == usb-auto ]] || echo "not by prefix: ${COMPREPLY[*]}"' "$@" ;;
    zsh) zsh -fc 'compadd() { print -l -- ${@:#--} }; _message() {}
        _describe() { print -l -- ${${(P)2}%%:*} }
        file=$1; shift
        for line; do
            words=(${=line} ""); CURRENT=$#words
            echo "$line: $(source $file | sort | xargs)"
        done' "$@" ;;
    fish) fish -N -c 'source $argv[2]
        for line in $argv[3..-1]
            echo "$line: "(complete -C $line | cut -f1 | sort | xargs)
        end' "$@" ;;
    esac
}

for shell in bash:zelta-ip.bash zsh:_zelta-ip fish:zelta-ip.fish; do
    file=$scratch/${shell#*:} shell=${shell%:*}
    command -v "$shell" >/dev/null || { echo "skipped: $shell is not installed" && exit 77; }
    sed "s|/home/main-user/.ip_config|$settings|" "packaging/completion/${file##*/}" >"$file"
    diff <(echo "$expected") <(offers "$shell" "$file" "${lines[@]}") || { echo "differs: $shell" && result=1; }
done
[[ ! -e $scratch/started ]] || { echo "completion started the tool" && result=1; }
exit "$result"
