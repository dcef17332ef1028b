#!/usr/bin/env bash
# Measures what the driver costs, and writes the tables and plots of docs/performance.md.
#
#   scripts/bench.sh            everything; takes some minutes
#   scripts/bench.sh --check    only counts the instructions of the driver's work, and fails where they exceed their limit
set -euo pipefail
cd "$(dirname "$0")/.."

check_only=""
case "${1:-}" in
"") ;;
--check) check_only=yes ;;
*)
    echo "usage: $0 [--check]" >&2
    exit 2
    ;;
esac

scripts/install-dependencies.sh build test bench
cmake --preset bench >/dev/null
cmake --build --preset bench >build/bench.log || { cat build/bench.log; exit 1; }
counts=build/bench/bench/bench_counts
times=build/bench/bench/bench_times
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

# Instructions that repeating a work so often takes, start of the program included.
instructions_of() {
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "$counts" repeat "$1" "$2" 2>&1 |
        sed -n 's/.*Collected : //p'
}

# Instructions of one repetition: the difference of two run lengths leaves the start of the program out.
count_instructions() {
    local few many
    few="$(instructions_of "$1" 500)"
    many="$(instructions_of "$1" 1500)"
    echo $(((many - few) / 1000))
}

# The most that the driver's work may cost: a tenth more than it does, since compilers differ.
declare -A limits=([unchanged]=5100 [changed]=12700 [read]=2100 [write]=8300)

if [ -n "$check_only" ]; then
    failed=""
    for name in unchanged changed read write; do
        count="$(count_instructions "$name")"
        printf '%-10s %6d instructions, at most %6d\n' "$name" "$count" "${limits[$name]}"
        [ "$count" -le "${limits[$name]}" ] || failed=yes
    done
    [ -z "$failed" ] || { echo "the driver has become dearer"; exit 1; }
    exit 0
fi

# Puts a file between the lines <!-- NAME --> and <!-- /NAME --> of the page.
page=docs/performance.md
put() {
    awk -v name="$1" -v file="$2" '
        $0 == "<!-- /" name " -->" { skip = 0 }
        !skip { print }
        $0 == "<!-- " name " -->" { skip = 1; while ((getline line < file) > 0) print line }
    ' "$page" >"$work/page"
    cp "$work/page" "$page"
}

echo "counting instructions"
"$counts" allocations >"$work/allocations"
{
    echo "| work | instructions | allocations |"
    echo "|---|---|---|"
    while IFS=$'\t' read -r name allocations; do
        count="$(count_instructions "$name")"
        printf '%s\t%s\n' "$name" "$count" >>"$work/instructions"
        printf '| %s | %d | %s |\n' "$("$counts" words "$name")" "$count" "$allocations"
    done <"$work/allocations"
} >"$work/table"
put instructions "$work/table"

echo "timing"
"$times" --benchmark_repetitions=9 --benchmark_report_aggregates_only=true --benchmark_enable_random_interleaving=true \
    --benchmark_min_time=0.1 --benchmark_format=json >"$work/times.json" 2>/dev/null
median() {
    jq -r --arg name "$1" '.benchmarks[] | select(.run_name == $name and .aggregate_name == "median") | .real_time' \
        "$work/times.json"
}
{
    echo "| work | time | against the first row |"
    echo "|---|---|---|"
    first="$(median unchanged)"
    while IFS=$'\t' read -r name _; do
        awk -v words="$("$counts" words "$name")" -v time="$(median "$name")" -v first="$first" \
            'BEGIN { printf "| %s | %.2f µs | %.1f |\n", words, time / 1000, time / first }'
    done <"$work/allocations"
} >"$work/table"
put times "$work/table"
{
    echo "| units in the poll list | a changed transaction | against 96 units |"
    echo "|---|---|---|"
    small="$(median changed_of/96)"
    for units in 96 992 9984 99968; do
        awk -v units="$units" -v time="$(median "changed_of/$units")" -v small="$small" \
            'BEGIN { printf "| %d | %.2f µs | %.2f |\n", units, time / 1000, time / small }'
        printf '%s\t%s\n' "$units" "$(median "changed_of/$units")" >>"$work/growth"
    done
} >"$work/table"
put growth "$work/table"
{
    echo "| keys in the poll list | handing it over | a key |"
    echo "|---|---|---|"
    for keys in 100 1000 10000 100000; do
        awk -v keys="$keys" -v time="$(median "plan_keys/$keys")" \
            'BEGIN { printf "| %d | %.3f ms | %.2f µs |\n", keys, time, 1000 * time / keys }'
    done
} >"$work/table"
put planning "$work/table"
{
    echo "| requests that wait | posting one word |"
    echo "|---|---|"
    for waiting in 0 512; do
        awk -v waiting="$waiting" -v time="$(median "post_behind/$waiting")" \
            'BEGIN { printf "| %d | %.2f µs |\n", waiting, time / 1000 }'
    done
} >"$work/table"
put posting "$work/table"

echo "memory and size"
strip --strip-all -o "$work/stripped.so" build/bench/src/libtanek_vs.so
"$counts" memory 100000 >"$work/memory"
{
    echo "| what | size |"
    echo "|---|---|"
    printf '| poll list of 100,000 words: the most that handing it over takes | %s |\n' "$(sed -n 's/^peak\t//p' "$work/memory")"
    printf '| what stays of it | %s |\n' "$(sed -n 's/^kept\t//p' "$work/memory")"
    printf '| a unit, its share of the blocks included | %s |\n' "$(sed -n 's/^unit\t//p' "$work/memory")"
    printf '| the library, stripped (x86-64) | %d KiB |\n' $(($(stat -c %s "$work/stripped.so") / 1024))
} >"$work/table"
put memory "$work/table"

echo "the line"
"$counts" line >"$work/line"
{
    echo "| list | merging | requests | bytes | ms at 9600 | ms at 19200 | ms at 115200 |"
    echo "|---|---|---|---|---|---|---|"
    awk -F'\t' '$2 == "none" || $2 == 0 || $2 == 4 || $2 == 8 || $2 == 16 || $2 == 32 || $2 == 64 {
        merging = $2 == "none" ? "a request an item" : $2 == 0 ? "touching only" : "gap " $2
        printf "| %s | %s | %s | %s | %s | %s | %s |\n", $1, merging, $3, $4, $5, $6, $7
    }' "$work/line"
} >"$work/table"
put line "$work/table"

echo "plots"
gnuplot <<PLOT
set terminal svg size 720,400 font "sans,12" background "white"
set grid
set output "docs/line.svg"
set title "One poll cycle at 19200 baud"
set xlabel "merge gap, in units"
set ylabel "milliseconds"
set xrange [0:64]
set yrange [0:*]
set key top right
plot for [list in "dense scattered stations"] \
    "< awk -F'\t' -v list=".list." '\$1 == list && \$2 != \"none\" { print \$2, \$6 }' $work/line" \
    with linespoints pointsize 0.4 title list
unset xrange
set output "docs/growth.svg"
set title "A transaction whose 32 words all change"
set xlabel "units in the poll list"
set ylabel "microseconds"
set logscale x
unset key
plot "$work/growth" using 1:(\$2 / 1000) with linespoints
unset logscale x
set output "docs/instructions.svg"
set title "Instructions for 32 words, and for one written word"
unset xlabel
set ylabel "instructions"
set style data histogram
set style fill solid 0.7
set boxwidth 0.7
plot "$work/instructions" using 2:xtic(1) linecolor rgb "#4477aa"
PLOT
echo "docs/performance.md and its plots are written"
