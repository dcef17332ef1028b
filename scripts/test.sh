#!/usr/bin/env bash
# Builds everything and passes all tests; installs what that needs.
#
#   scripts/test.sh [PRESET]    a preset of CMakePresets.json, ci by default
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-ci}"

parts="build test"
[ "$preset" != qt6 ] || parts+=" qt6"
# shellcheck disable=SC2086 # the list is words
scripts/install-dependencies.sh $parts
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset" --parallel "$(nproc)"
