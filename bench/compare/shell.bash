# What the participants that are programs of their own share; they read the log anew for every
# work item, so their times hold reading and writing too.

export LC_ALL=C

work= input= result= scratch=
while [ $# -gt 1 ]; do
    case $1 in
    --work) work=$2 ;;
    --input) input=$2 ;;
    --result) result=$2 ;;
    --scratch) scratch=$2 ;;
    esac
    shift 2
done
output=${result:-$scratch}

# Nanoseconds of a time in seconds with three digits behind the point.
nanoseconds() { printf '%d' "$((10#${1/./}))000000"; }

# Runs a command and sets `wall` and `cpu`, the time by the clock and that of the processor.
timed() {
    local took user system status=0 TIMEFORMAT='%3R %3U %3S'
    { time "$@" 2>&3 || status=$?; } 3>&2 2>"$output.times"
    took=$(tail -n 1 "$output.times")
    rm -f "$output.times"
    read -r wall user system <<<"$took"
    wall=$(nanoseconds "$wall")
    cpu=$(($(nanoseconds "$user") + $(nanoseconds "$system")))
    return "$status"
}

# Times one function that writes rows to $output and prints the participant's line.
# With "none" as the second argument there are no rows to count but those of the input.
answer() {
    local rows wall cpu
    timed "$1"
    rows=$(( $(wc -l <"$([ "${2-}" = none ] && echo "$input" || echo "$output")") - 1 ))
    echo "{\"version\":\"$version\",\"threads\":$threads,\"rows\":$rows," \
        "\"ns\":[$wall],\"cpu\":$cpu}"
}
