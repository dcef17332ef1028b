#!/usr/bin/env bash
# Runs a fuzzer, or all of them in turn; stops at the first fault, whose input is left in build/fuzz/findings.
#
#   scripts/fuzz.sh TARGET|all SECONDS    targets: replies calls requests configuration
#
# What a run finds new is kept in build/fuzz/corpus and is where the next one starts.
set -euo pipefail
cd "$(dirname "$0")/.."

targets="replies calls requests configuration"
usage() {
    echo "usage: $0 TARGET|all SECONDS    targets: $targets" >&2
    exit 2
}
[ $# -eq 2 ] && [[ "$2" =~ ^[1-9][0-9]*$ ]] || usage
wanted="$1" seconds="$2"
[ "$wanted" = all ] && wanted="$targets"
for target in $wanted; do
    [[ " $targets " == *" $target "* ]] || usage
done

scripts/install-dependencies.sh build fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz >build/fuzz/build.log || { cat build/fuzz/build.log; exit 1; }
mkdir -p build/fuzz/findings build/fuzz/corpus/configuration
cp examples/plant.toml build/fuzz/corpus/configuration

for target in $wanted; do
    mkdir -p "build/fuzz/corpus/$target"
    log="build/fuzz/$target.log"
    if ! "build/fuzz/fuzz/fuzz_$target" -max_total_time="$seconds" -max_len=8192 -timeout=120 -print_final_stats=1 \
        -verbosity=1 -dict=fuzz/wire.dict -artifact_prefix="build/fuzz/findings/$target-" \
        "build/fuzz/corpus/$target" >"$log" 2>&1; then
        tail -n 60 "$log"
        echo "fuzz_$target FOUND A FAULT"
        exit 1
    fi
    executions="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
    edges="$(grep -o ' cov: [0-9]*' "$log" | tail -n 1 | tr -dc 0-9)"
    printf '%-14s %10d executions, %5d edges covered, no fault\n' "$target" "$executions" "$edges"
done
