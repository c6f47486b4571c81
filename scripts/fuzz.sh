#!/usr/bin/env bash
# A fuzzing campaign: builds the fuzz preset, runs every target (or the ones
# named) at once for SECONDS of wall time, sharing the machine's cores, keeps
# the new inputs that add coverage in fuzz/corpus/<target>, and prints one line
# a target. A crash's input is saved under build/fuzz/findings/.
#
#   scripts/fuzz.sh [SECONDS] [TARGET...]     (default 60 seconds, every target)
#
# Exit status 1 when any target found something, 0 otherwise.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
shift || true
if ! [[ $seconds =~ ^[0-9]+$ ]] || [ "$seconds" -eq 0 ]; then
    echo "usage: scripts/fuzz.sh [SECONDS] [TARGET...]" >&2
    exit 2
fi

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    for source in fuzz/*.cpp; do
        name=$(basename "$source" .cpp)
        [ "$name" = replay_main ] || targets+=("$name")
    done
fi
for target in "${targets[@]}"; do
    if [ ! -f "fuzz/$target.cpp" ]; then
        echo "scripts/fuzz.sh: no fuzz target '$target'" >&2
        exit 2
    fi
done

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${targets[@]/#/fuzz_}" >/dev/null

findings=build/fuzz/findings
work=build/fuzz/campaign
rm -rf "$work"
mkdir -p "$findings"

# Every target at once: the kernel shares the cores between them, so each
# gets the same wall time whatever the machine.
pids=()
for target in "${targets[@]}"; do
    mkdir -p "$work/$target/new" "fuzz/corpus/$target"
    build/fuzz/fuzz/fuzz_"$target" -max_total_time="$seconds" -print_final_stats=1 \
        -artifact_prefix="$findings/$target-" -close_fd_mask=1 \
        "$work/$target/new" "fuzz/corpus/$target" >"$work/$target/log" 2>&1 &
    pids+=($!)
done

status=0
for i in "${!targets[@]}"; do
    target=${targets[$i]}
    log=$work/$target/log
    if wait "${pids[$i]}"; then
        found=""
    else
        found=$(grep -o "Test unit written to .*" "$log" | tail -n 1 | sed 's/Test unit written to //')
        found=${found:-"see $log"}
        status=1
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    cov=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | sed 's/cov: //')

    # Keep only what adds coverage to the shipped corpus.
    added=0
    if [ -n "$(ls -A "$work/$target/new")" ]; then
        before=$(find "fuzz/corpus/$target" -type f | wc -l)
        build/fuzz/fuzz/fuzz_"$target" -merge=1 "fuzz/corpus/$target" "$work/$target/new" \
            >"$work/$target/merge.log" 2>&1 || true
        added=$(($(find "fuzz/corpus/$target" -type f | wc -l) - before))
    fi

    if [ -n "$found" ]; then
        echo "$target: ${runs:-?} runs, coverage ${cov:-?}, $added new corpus inputs, FOUND $found"
    else
        echo "$target: ${runs:-?} runs, coverage ${cov:-?}, $added new corpus inputs, no finding"
    fi
done
exit $status
