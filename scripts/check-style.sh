#!/usr/bin/env bash
# Checks the includes of Qt, the format, and runs static analysis over all sources; any finding fails.
#
#   scripts/check-style.sh
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-dependencies.sh build test bench fuzz check
list="$(git ls-files '*.cpp' '*.h')"
mapfile -t files <<<"$list"
mapfile -t units < <(grep -E '^(src|tools|tests|fuzz|bench)/.*\.cpp$' <<<"$list" | grep -v '^tests/package/')
[ "${#units[@]}" -gt 0 ] || { echo "no sources: not a clone?" >&2; exit 1; }

# What a header of one Qt brings along, that of another only declares: whoever uses a type of Qt includes its header,
# in the file or in the header of the same name. A text that is split gives a QStringList.
includes_what_it_uses() {
    local file="$1" header type missing=0
    header="${file%.cpp}.h"
    [ -f "$header" ] || header="$file"
    for type in $(sed -e 's://.*::' -e 's/\.split(/ QStringList /' "$file" | grep -oE '\bQ[A-Z][A-Za-z0-9]+\b' | sort -u); do
        case "$type" in
        QLatin1Char) type=QChar ;;
        QLatin1String) type=QString ;;
        esac
        grep -qE "^#include <Qt[A-Za-z]+/$type>" "$file" "$header" && continue
        echo "$file uses $type without its header"
        missing=1
    done
    return "$missing"
}

mapfile -t users < <(grep -E '^(src|include|tools|bench)/' <<<"$list")
echo "includes of Qt: ${#users[@]} files"
failed=0
for file in "${users[@]}"; do
    includes_what_it_uses "$file" || failed=1
done
[ "$failed" -eq 0 ]

echo "clang-format: ${#files[@]} files"
clang-format --dry-run -Werror "${files[@]}"

echo "clang-tidy: ${#units[@]} files"
cmake --preset style >/dev/null
printf '%s\n' "${units[@]}" |
    xargs -P "$(nproc)" -n 4 clang-tidy -p build/style --quiet --warnings-as-errors='*' 2>/dev/null

echo "cppcheck: src and tools"
cppcheck --quiet --error-exitcode=1 --std=c++17 --language=c++ --inline-suppr --library=qt \
    --enable=warning,performance,portability --suppressions-list=cmake/cppcheck-suppressions.txt \
    -I src -I include -I tools src tools
