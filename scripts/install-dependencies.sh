#!/usr/bin/env bash
# Installs what a part of the project needs, from Debian's packages. Installs nothing that is there already.
#
#   scripts/install-dependencies.sh PART...    of build, test, check, fuzz, bench, qt6, armhf, coverage
set -euo pipefail

build="cmake ninja-build g++ pkg-config qtbase5-dev libasio-dev libcli11-dev libtomlplusplus-dev nlohmann-json3-dev libfmt-dev"
test="libgtest-dev googletest librapidcheck-dev binutils"
armhf="g++-arm-linux-gnueabihf qemu-user"
qt6="qt6-base-dev"
coverage="gcovr"
fuzz="clang libclang-rt-14-dev"
bench="libbenchmark-dev libmodbus-dev libqt5serialbus5-dev valgrind gnuplot-nox jq binutils"
check="clang-format clang-tidy cppcheck git"

packages=""
for part in "$@"; do
    case "$part" in
    build | test | check | fuzz | bench | qt6 | armhf | coverage) packages+=" ${!part}" ;;
    *)
        echo "$0: no part named '$part'; there are build, test, check, fuzz, bench, qt6, armhf and coverage" >&2
        exit 2
        ;;
    esac
done

missing=""
for package in $packages; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' || missing+=" $package"
done
[ -n "$missing" ] || exit 0

echo "installing:$missing"
as_root=""
[ "$(id -u)" -eq 0 ] || as_root="sudo"
$as_root apt-get update -qq
# shellcheck disable=SC2086 # the list is words
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-remove --no-install-recommends $missing >/dev/null
