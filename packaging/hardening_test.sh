#!/usr/bin/env bash
# Reads back from the program what protects it.
#
#   hardening_test.sh [TOOL]      without a tool: of the release build, which it builds in two places for
#                                 the same bytes

set -u
source=$(dirname "$(readlink -f "$0")")/..
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

# With debugging information, which names source files; the packages' tools strip it afterwards.
[[ -n ${1-} ]] || for place in one another/place; do
    mkdir -p "$work/$place"
    tar -C "$source" --exclude=./build --exclude=./.git -cf - . | tar -C "$work/$place" -xf -
    (cd "$work/$place" && CXXFLAGS=-g cmake --preset release &&
        cmake --build --preset release --target zelta-ip) >"$work/log" 2>&1 ||
        { tail -n 20 "$work/log" && exit 1; }
done
tool=${1-$work/one/build/release/zelta-ip}
[[ -n ${1-} ]] || cmp "$tool" "$work/another/place/build/release/zelta-ip" || failed=1

expect() { # WHAT WANTED FOUND
    [[ $2 != "$3" ]] || return 0
    echo "$1: wanted '$2', found '$3'"
    failed=1
}

dynamic=$(readelf -dW "$tool")
segments=$(readelf -lW "$tool")
expect "position independent" DYN "$(readelf -hW "$tool" | awk '$1 == "Type:" { print $2 }')"
expect "addresses resolved at the start" "BIND_NOW NOW PIE" \
    "$(sed -n 's/.*(FLAGS) *//p; s/.*(FLAGS_1) *Flags: //p' <<<"$dynamic" | xargs)"
expect "and then made read-only" 1 "$(grep -c GNU_RELRO <<<"$segments")"
expect "rights of the stack" RW "$(awk '$1 == "GNU_STACK" { print $7 }' <<<"$segments")"
expect "code apart from data that is only read" "R / R E / R / RW" "$(sed -n \
    's/^ *LOAD.* 0x[0-9a-f]* \([RWE ]*[RWE]\) *0x.*/\1/p' <<<"$segments" | paste -sd/ | sed 's|/| / |g')"
expect "run path" "" "$(grep -E 'RPATH|RUNPATH' <<<"$dynamic")"
expect "libraries" libc.so.6 "$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic" |
    grep -v '^ld-linux' | xargs)" # the loader keeps ARM's stack protector
expect "stack protector, fortified calls" "__printf_chk __stack_chk_fail" \
    "$(nm -D "$tool" | grep -oE '__(stack_chk_fail|printf_chk)\b' | xargs)"
expect "no symbol of a glibc after 2.34" 2.34 "$(nm -D "$tool" | sed -n 's/.*@GLIBC_//p' | sort -uV | tail -n 1)"
expect "code before main" "one entry, frame_dummy" "$(readelf -SW "$tool" |
    sed -n 's/.* INIT_ARRAY  *[^ ]* [^ ]* 0*\([48]\) 0*\1 .*/one entry,/p') $(nm "$tool" |
    sed -n 's/.* __\(frame_dummy\)_init_array_entry/\1/p')"
exit $failed
