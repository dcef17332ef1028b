#!/usr/bin/env bash
# Measures how much of src/ the driver's own tests run; fails below 97 % of the lines or 92 % of the branches.
# Branches that only an exception takes are left out: the driver throws none.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-dependencies.sh coverage
[ ! -d build/coverage ] || find build/coverage -name '*.gcda' -delete
mkdir -p build
scripts/test.sh coverage >build/coverage.log 2>&1 || { cat build/coverage.log; exit 1; }
gcovr --root . --filter 'src/' --exclude-throw-branches --exclude-unreachable-branches \
    --fail-under-line 97 --fail-under-branch 92 --print-summary build/coverage | tail -n +4
