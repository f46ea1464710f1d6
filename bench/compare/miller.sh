#!/usr/bin/env bash
# Miller as a participant of bench/compare/run, without inference of types.
set -euo pipefail
source "$(dirname "$0")/shell.bash" "$@"
threads=${COMPARE_THREADS:-$(nproc)}
export GOMAXPROCS=$threads
version=$(mlr --version)
version=${version##* }

quiet() { mlr -S --icsv --ocsv nothing "$input"; }
copied() { mlr -S --icsv --ocsv cat "$input" >"$output"; }
save() { mlr -S --icsv --ocsv --quote-all cat "$input" >"$output"; }
sorted() { mlr -S --icsv --ocsv sort -f Scene,"Start time" "$input" >"$output"; }
contains() {
    mlr -S --icsv --ocsv filter '$Reel =~ "a1"i && $Description =~ "dolly"i' "$input" >"$output"
}
range() {
    mlr -S --icsv --ocsv filter \
        '${Start time} <= "02:05:30:00" && ${End time} >= "02:05:30:00"' "$input" >"$output"
}
delete() { mlr -S --icsv --ocsv filter 'NR % 2 == 1' "$input" >"$output"; }

# What the program that shows logs is compared with: the same rows in the same order.
show() {
    mlr -S --icsv --ocsv filter '$Reel =~ "a1"i && $Description =~ "dolly"i' \
        then sort -t Scene -f "Start time" "$input" >"$output"
}

case $work in
load) if [ -n "$result" ]; then answer copied; else answer quiet none; fi ;;
save) answer save ;;
sort) answer sorted ;;
contains | range | delete | show) answer "$work" ;;
*) exit 3 ;;
esac
