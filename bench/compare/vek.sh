#!/usr/bin/env bash
# The program that shows logs as a participant of bench/compare/run: one whole process.
set -euo pipefail
source "$(dirname "$0")/shell.bash" "$@"
[ "$work" = show ] || exit 3
threads=1
version=$("$VEK" --version)
version=${version##* }

show() {
    "$VEK" show "$input" --where Reel=A1 --where Description=dolly --sort "Scene,Start time" \
        --all --format csv >"$output"
}

answer show
