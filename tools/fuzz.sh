# Sourced by ./test: runs the fuzzers of tests/fuzz.

# Where inputs come and go by the thousand: in memory, if the system has such a folder.
fuzz_scratch() {
    if [[ -d /dev/shm && -w /dev/shm ]]; then
        printf '/dev/shm'
    else
        printf '%s' "${TMPDIR:-/tmp}"
    fi
}

# fuzz_one <target> <seconds>: goes on from the inputs of earlier runs and from those that stand in
# the tree. What breaks a target is left in build/fuzz/findings. Prints a line of figures.
fuzz_one() {
    local name=$1 seconds=$2 work="$root/build/fuzz" status=0
    mkdir -p "$work/inputs/$name" "$work/findings"
    TMPDIR=$(fuzz_scratch) nice "$work/bin/fuzz_$name" \
        -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2048 -max_len=65536 \
        -print_final_stats=1 -artifact_prefix="$work/findings/$name-" \
        "$work/inputs/$name" "$root/tests/fuzz/corpus/$name" 2>"$work/$name.log" || status=1
    printf '%-10s %10s executions%s\n' "$name" \
        "$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/$name.log")" \
        "$([[ $status -eq 0 ]] || printf ', a finding: see %s' "$work/$name.log")"
    return "$status"
}

# run_fuzzers <seconds>: every target for so long; fails if any of them found something.
run_fuzzers() {
    local seconds=$1 folder status=0
    for folder in "$root"/tests/fuzz/corpus/*/; do
        fuzz_one "$(basename "$folder")" "$seconds" || status=1
    done
    return "$status"
}
