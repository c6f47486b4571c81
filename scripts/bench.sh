#!/usr/bin/env bash
# The benchmarks in one table.
#
#   scripts/bench.sh [--force] [PROGRAM...]
#       Runs every program of build/default/bench (or the ones named, e.g.
#       bench_chaine) and prints one table of their same-run ratios, also kept
#       in build/default/bench/ratios.md. Timings only mean something on a
#       quiet machine: it refuses while the 1-minute load average is 1 or more,
#       unless --force.
#   scripts/bench.sh --callgrind
#       Counts, under valgrind's callgrind, the instructions a fixed workload of
#       the string's and the block storage's hot paths runs, against the same
#       work done by std::string and malloc. Counts don't move with the load,
#       so they show a regression on a busy machine too. Table kept in
#       build/default/bench/instructions.md.
#
# The programs are built first (the default preset).
set -euo pipefail
cd "$(dirname "$0")/.."

bench=build/default/bench
usage() {
    echo "usage: scripts/bench.sh [--force] [PROGRAM...] | --callgrind" >&2
    exit 2
}

force=0
callgrind=0
programs=()
for arg in "$@"; do
    case $arg in
    --force) force=1 ;;
    --callgrind) callgrind=1 ;;
    -*) usage ;;
    *) programs+=("$arg") ;;
    esac
done
if [ $callgrind -eq 1 ] && { [ $force -eq 1 ] || [ ${#programs[@]} -ne 0 ]; }; then
    usage
fi

[ -d build/default ] || cmake --preset default >/dev/null

if [ $callgrind -eq 1 ]; then
    command -v valgrind >/dev/null || {
        echo "scripts/bench.sh: valgrind is not installed" >&2
        exit 1
    }
    cmake --build --preset default --target hot_paths_workload >/dev/null
    workload=$bench/hot_paths_workload
    out=$(mktemp -d)
    trap 'rm -rf "$out"' EXIT
    i=0
    while IFS= read -r name; do
        valgrind --tool=callgrind --callgrind-out-file="$out/$i.out" --collect-atstart=no \
            --toggle-collect='*Measured*' "$workload" "$i" >"$out/$i.ops" 2>"$out/$i.log" || {
            echo "scripts/bench.sh: case $i ($name) failed, see its log:" >&2
            cat "$out/$i.log" >&2
            exit 1
        }
        count=$(sed -n 's/^\(summary\|totals\): *\([0-9]*\).*/\2/p' "$out/$i.out" | head -n 1)
        printf '%s\t%s\t%s\n' "$name" "$count" "$(cat "$out/$i.ops")"
        i=$((i + 1))
    done < <("$workload" list) >"$out/counts.tsv"
    python3 - "$out/counts.tsv" <<'PY' | tee "$bench/instructions.md"
import sys
rows = {}
order = []
for line in open(sys.argv[1]):
    name, count, ops = line.rstrip("\n").split("\t")
    case, subject = name.split(" | ")
    if case not in rows:
        order.append(case)
        rows[case] = []
    rows[case].append((subject, int(count) / int(ops)))
print("| case | ours (instructions/op) | peer (instructions/op) | peer/ours |")
print("|---|---|---|---|")
for case in order:
    (ours, mine), (peer, theirs) = rows[case]
    print(f"| {case} | {ours} {mine:.1f} | {peer} {theirs:.1f} | {theirs / mine:.2f}x |")
PY
    exit 0
fi

load=$(cut -d ' ' -f 1 /proc/loadavg)
if [ $force -eq 0 ] && awk -v load="$load" 'BEGIN { exit !(load >= 1) }'; then
    echo "scripts/bench.sh: the 1-minute load average is $load; timings would mean" \
        "nothing (wait for a quiet machine, or --force)" >&2
    exit 1
fi

if [ ${#programs[@]} -eq 0 ]; then
    for source in bench/*.cpp; do
        programs+=("bench_$(basename "$source" .cpp)")
    done
fi
cmake --build --preset default --target "${programs[@]}" >/dev/null

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
for program in "${programs[@]}"; do
    if [ ! -x "$bench/$program" ]; then
        echo "scripts/bench.sh: no benchmark program $bench/$program" >&2
        exit 2
    fi
    echo "running $program" >&2
    "$bench/$program" >"$out/$program.log" 2>&1 || {
        echo "scripts/bench.sh: $program failed, see its output:" >&2
        cat "$out/$program.log" >&2
        exit 1
    }
done

python3 - "$out" "$load" "${programs[@]}" <<'PY' | tee "$bench/ratios.md"
import re, sys
folder, load, programs = sys.argv[1], sys.argv[2], sys.argv[3:]
print(f"1-minute load average at the start: {load}\n")
print("| program | case | ratio | peer |")
print("|---|---|---|---|")
for program in programs:
    ours = None
    for line in open(f"{folder}/{program}.log"):
        header = re.match(r"ratios \(how many times as fast (.*) is, same run\):", line)
        if header:
            ours = header.group(1)
            continue
        if ours is None:
            continue
        ratio = re.match(r"  (.*?) +" + re.escape(ours) + r" is ([0-9.]+)x (.*)$", line)
        if ratio:
            case, times, peer = ratio.groups()
            print(f"| {program} | {case} | {times}x | {peer} |")
PY
