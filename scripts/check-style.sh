#!/usr/bin/env bash
# Checks format and runs static analysis over all sources; any finding fails. Wants a configured build folder.
#
#   scripts/check-style.sh [BUILD-FOLDER]    build/ci by default
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build/ci}"

scripts/install-dependencies.sh check
list="$(git ls-files '*.cpp' '*.h')"
mapfile -t files <<<"$list"
mapfile -t units < <(grep -E '^(src|tools)/.*\.cpp$' <<<"$list")
[ "${#units[@]}" -gt 0 ] || { echo "no sources: not a clone?" >&2; exit 1; }

echo "clang-format: ${#files[@]} files"
clang-format --dry-run -Werror "${files[@]}"

echo "clang-tidy: ${#units[@]} files"
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy -p "$build" --quiet --warnings-as-errors='*' 2>/dev/null

echo "cppcheck: src and tools"
cppcheck --quiet --error-exitcode=1 --std=c++17 --language=c++ --inline-suppr --library=qt \
    --enable=warning,performance,portability --suppressions-list=cmake/cppcheck-suppressions.txt \
    -I src -I include -I tools src tools
