#!/usr/bin/env bash
# Times whole commands in the simulated device. The packet filter's stand-in does nothing but end.
#
#   command.sh BUILD-DIRECTORY

set -eu
build=$1
files=$(mktemp -d)
trap 'rm -rf "$files"' EXIT
mkdir -p "$files"/{tmp,run/sim/reply}
echo "exit 0" >"$files/run/sim/reply/iptables"
cp "$build"/bench/{command_bench,start_one,empty} "$files/tmp"
# Nothing is traced, and root starts the tool, as it does its peer.
"$(dirname "$0")/../sim/device" --tool "$build/zelta-ip" --files "$files" \
    bash -c 'rm /run/sim/trace; chmod 755 /usr/bin/zelta-ip; exec /tmp/command_bench'
