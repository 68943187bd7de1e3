#!/usr/bin/env bash
# Keeps the budget of scripts/footprint. Exits with 77 where it cannot be measured, and says why.

for program in arm-linux-gnueabihf-g++ strace; do
    command -v "$program" >/dev/null || { echo "$program is missing: scripts/setup cross" && exit 77; }
done
exec "$(dirname "$0")/../scripts/footprint"
