#!/usr/bin/env bash
# grep and GNU sort as a participant of bench/compare/run.
set -euo pipefail
source "$(dirname "$0")/shell.bash" "$@"
threads=${COMPARE_THREADS:-$(nproc)}
version=$(sort --version | head -n 1)
version=${version##* }

# A reel is a letter and digits, so it holds A1 only at its start.
matching() { tail -n +2 "$input" | grep -i '^A1.*dolly'; }
names() { head -n 1 "$input"; }

contains() { { names; matching; } >"$output"; }
rows() { tail -n +2 "$input"; }
by() { sort --parallel="$threads" -t , "$@"; }
sorted() { { names; rows | by -k 2,2 -k 5,5; } >"$output"; }
# Version order puts 9 before 10, as people read scenes.
sorted_as_read() { { names; rows | by -k 2,2V -k 5,5; } >"$output"; }
show() { { names; matching | by -s -k 2,2V -k 5,5; } >"$output"; }

case $work in
sort) answer sorted ;;
sort-people) answer sorted_as_read ;;
contains | show) answer "$work" ;;
*) exit 3 ;;
esac
