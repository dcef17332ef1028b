#!/usr/bin/env bash
# Shows the driver at work: builds everything, starts a simulated controller, and has the reference host poll it, write
# to it, and carry a recipe there and back, while one of the three stations is silent. Ends with exit code 0 when all
# was as it should be.
set -euo pipefail
cd "$(dirname "$0")/.."

work="$(mktemp -d)"
children=()
clean_up() {
    for child in "${children[@]}"; do kill "$child" 2>/dev/null || true; done
    rm -rf "$work"
}
trap clean_up EXIT

bold="" plain=""
if [ -t 1 ]; then bold=$'\e[1;36m' plain=$'\e[0m'; fi
heading() { printf '\n%s== %s ==%s\n' "$bold" "$*" "$plain"; }
fail() {
    printf '%sdemo failed: %s%s\n' "$bold" "$*" "$plain" >&2
    exit 1
}

# wait_for FILE PATTERN [COUNT]: until so many lines of the file match; at most ten seconds.
wait_for() {
    local deadline=$((SECONDS + 10))
    until [ "$(grep -cE "$2" "$1" || true)" -ge "${3:-1}" ]; do
        [ "$SECONDS" -lt "$deadline" ] || fail "no '$2' within ten seconds"
        sleep 0.05
    done
}

# expect_code CODE COMMAND...: the command has to end with that exit code.
expect_code() {
    local expected="$1" code=0
    shift
    "$@" || code=$?
    [ "$code" -eq "$expected" ] || fail "exit code $code instead of $expected: $*"
}

heading "Packages and build"
scripts/install-dependencies.sh build
cmake --preset release -B build/demo -DTANEK_VS_TESTS=OFF >"$work/build.log" || { cat "$work/build.log"; exit 1; }
cmake --build build/demo --target tanek_vs vssim vshost >"$work/build.log" || { cat "$work/build.log"; exit 1; }
vssim=build/demo/tools/simulator/vssim
vshost=build/demo/tools/host/vshost
tail -n 1 "$work/build.log"
started=$SECONDS

heading "A simulated controller: stations 1 to 3, of which 3 is silent"
"$vssim" --tcp 127.0.0.1:0 --station 1-3 --fault silence@3 --animate-every 200ms \
    --set 1:D110=5 --set 2:D100=215 >"$work/vssim.out" 2>&1 &
vssim_id=$!
children+=("$vssim_id")
wait_for "$work/vssim.out" '^listening on '
address="$(sed -n 's/^listening on //p' "$work/vssim.out")"
echo "vssim is listening on $address"
sed "s/^tcp = .*/tcp = \"$address\"/; s/^timeout_ms = .*/timeout_ms = 100/" examples/plant.toml >"$work/plant.toml"

heading "vshost run: values change on the screen; then setpoint = 42, pump = on and mixer = 7 are written"
mkfifo "$work/lines"
touch "$work/run.out" "$work/run.err"
"$vshost" run "$work/plant.toml" <"$work/lines" > >(tee "$work/run.out") 2> >(tee "$work/run.err" >&2) &
vshost_id=$!
children+=("$vshost_id")
exec 3>"$work/lines"
wait_for "$work/run.out" ' setpoint .* 5$'
wait_for "$work/run.out" ' cycle ' 6
wait_for "$work/run.err" 'station 3 does not answer'
echo "setpoint = 42" >&3
echo "pump = on" >&3
echo "mixer = 7" >&3
wait_for "$work/run.out" 'setpoint = 42: confirmed'
wait_for "$work/run.out" 'pump = on: confirmed'
wait_for "$work/run.out" 'mixer = 7: given up: station 3 does not answer'
seen="$(grep -c ' cycle ' "$work/run.out")"
wait_for "$work/run.out" ' cycle ' $((seen + 4))
kill -INT "$vshost_id"
exec 3>&-
expect_code 0 wait "$vshost_id"
wait_for "$work/run.err" '^ +3 +[0-9]+ +[0-9]+ +[1-9]'

heading "The controller has what was written; station 3 is still silent (exit code 4)"
read_back="$("$vshost" read --tcp "$address" D110 M10)"
echo "$read_back"
[ "$read_back" = $'D110 = 42\nM10 = 1' ] || fail "the controller does not hold what was written"
expect_code 4 "$vshost" read --tcp "$address" --station 3 --timeout 100ms D100

heading "A recipe goes down and comes back"
"$vshost" recipe upload "$work/plant.toml" batch --csv "$work/before.csv"
sed -e 's/^speed,\(.*\),.*/speed,\1,1750/' -e 's/^lot,\(.*\),.*/lot,\1,4000000001/' \
    -e 's/^steps\(.*\),.*/steps\1,77/' -e 's/^temperature,\(.*\),.*/temperature,\1,-12.625/' \
    -e 's/^hold,\(.*\),.*/hold,\1,-1234/' "$work/before.csv" >"$work/down.csv"
cmp -s "$work/before.csv" "$work/down.csv" && fail "the recipe to download is what the controller holds already"
expect_code 0 "$vshost" recipe download "$work/plant.toml" batch --csv "$work/down.csv"
expect_code 0 "$vshost" recipe upload "$work/plant.toml" batch --csv "$work/up.csv"
cat "$work/up.csv"
diff "$work/down.csv" "$work/up.csv" || fail "the recipe came back changed"
echo "the recipe came back equal"

heading "What the controller counted"
kill -INT "$vssim_id"
expect_code 0 wait "$vssim_id"
tail -n +2 "$work/vssim.out"
grep -q 'silence' "$work/vssim.out" || fail "the silent station was never asked"

heading "All as it should be, in $((SECONDS - started)) s"
