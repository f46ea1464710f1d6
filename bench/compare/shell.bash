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

# Times one function that writes rows to $output and prints the participant's line.
# With "none" as the second argument there are no rows to count but those of the input.
answer() {
    local start=${EPOCHREALTIME/./} took rows
    "$1"
    took=$(( (${EPOCHREALTIME/./} - start) * 1000 ))
    rows=$(( $(wc -l <"$([ "${2-}" = none ] && echo "$input" || echo "$output")") - 1 ))
    echo "{\"version\":\"$version\",\"threads\":$threads,\"rows\":$rows,\"ns\":[$took]}"
}
