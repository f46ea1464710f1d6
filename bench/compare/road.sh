#!/usr/bin/env bash
# One road from file to file by one program: road.sh PROGRAM --work ROAD --input LOG.vek ... The
# logs in the other formats, and the second one, stand beside the first.
set -euo pipefail
program=$1
shift
source "$(dirname "$0")/shell.bash" "$@"
base=${input%.vek}
job=${work#road-}
threads=1
run=()

vek() {
    version=$("$VEK" --version)
    version=${version##* }
    case $job in
    copy | csv | quoted | tsv | ale | jsonl) output+=.vek ;;
    set | tag | delete | column | sort) output+=.vek && cp "$input" "$output" ;;
    to-*) output+=.${job#to-} ;;
    esac
    case $job in
    library) run=(--work load-save --input "$input" --scratch "$output") ;;
    library-both) run=(--work load-both --input "$base-a.vek" --scratch "$output") ;;
    copy) run=(convert "$input" "$output") ;;
    csv | quoted | tsv | ale | jsonl) run=(convert "$(logOf)" "$output") ;;
    to-*) run=(convert "$input" "$output") ;;
    info | check | stats) run=("$job" "$input") ;;
    set) run=(set "$output" Notes=x --where Take==1) ;;
    tag) run=(tag "$output" --where Take==3) ;;
    delete) run=(delete "$output" --where Take==3) ;;
    column) run=(column add "$output" Circled) ;;
    sort) run=(sort "$output" --by "Scene,Start time") ;;
    merge-tables) run=(merge "$base-a.vek" "$base-b.vek" -o "$output" --to vekdb) ;;
    merge) run=(merge "$base-a.csv" "$base-b.csv" -o "$output" --to csv) ;;
    merge-key)
        run=(merge "$base-a.csv" "$base-b.csv" --key Id --prefer last -o "$output" --to csv) ;;
    diff) run=(diff "$input" "$base-a.vek") ;;
    diff-key) run=(diff "$base-a.csv" "$base-b.csv" --key Id) ;;
    esac
    case $job in
    library*) run=("$LIBRARY" "${run[@]}") ;;
    *) run=("$VEK" "${run[@]}") ;;
    esac
}

# What is read of the roads that begin with one log.
logOf() {
    case $job in
    quoted) echo "$base-quoted.csv" ;;
    *) echo "$base.$job" ;;
    esac
}

node() {
    case $job in
    csv | quoted | tsv | jsonl | merge | merge-key | diff-key) ;;
    *) exit 3 ;;
    esac
    version=$(sed -n "/\"$package\"/s/[^0-9.]//gp" "$(dirname "$0")/node/package.json")
    threads=${COMPARE_THREADS:-$(nproc)}
    run=("$(type -P node)" "$(dirname "$0")/road.mjs" "$program" "$job" "$base" "$output")
}

miller() {
    version=$(mlr --version)
    version=${version##* }
    threads=${COMPARE_THREADS:-$(nproc)}
    export GOMAXPROCS=$threads
    case $job in
    csv | quoted) run=(mlr -S --icsv --ocsv cat "$(logOf)") ;;
    tsv) run=(mlr -S --itsv --ocsv cat "$base.tsv") ;;
    jsonl) run=(mlr -S --ijsonl --ocsv cat "$base.jsonl") ;;
    merge) run=(mlr -S --icsv --ocsv cat "$base-a.csv" "$base-b.csv") ;;
    *) exit 3 ;;
    esac
}

sqlite() {
    version=$(sqlite3 --version)
    version=${version%% *}
    local read="import '$base-a.csv' a" and="import '$base-b.csv' b"
    case $job in
    csv | quoted) run=(".import '$(logOf)' a" "SELECT * FROM a") ;;
    merge) run=(".$read" ".$and" "SELECT * FROM a UNION ALL SELECT * FROM b") ;;
    merge-key)
        run=(".$read" ".$and" "CREATE INDEX i ON b(Id)"
            "SELECT * FROM b UNION ALL SELECT * FROM a WHERE Id NOT IN (SELECT Id FROM b)") ;;
    *) exit 3 ;;
    esac
    run=(sqlite3 :memory: -cmd '.mode csv' -cmd '.headers on' "${run[@]}")
}

case $program in
vek) vek ;;
duckdb) package=@duckdb\\/node-api node ;;
polars) package=nodejs-polars node ;;
*) "$program" ;;
esac

# A program that found differences ends with 1.
travel() { "${run[@]}" >"$output.said" 2>"$output.told" || [ "$?$program" = 1vek ]; }
timed travel || { tail -n 1 "$output.told" >&2 && exit 1; }
[ -s "$output" ] || mv "$output.said" "$output"
case $job in
to-csv | to-tsv | to-ale | to-jsonl | copy | csv | quoted | tsv | ale | jsonl | set | tag | delete \
    | column | sort) [ "$program" != vek ] || mv "$output" "${result:-$scratch}" ;;
esac
rm -f "$output.said" "$output.told" "$output.second"
rows=$(wc -l <"${result:-$scratch}")
echo "{\"version\":\"$version\",\"threads\":$threads,\"rows\":$rows," \
    "\"ns\":[$wall],\"cpu\":$cpu}"
