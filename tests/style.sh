#!/usr/bin/env bash
# usage: style.sh BUILD [--all]: checks the layout of the tree and, in the sources changed since the
# last commit or with --all in all sources, format and names. BUILD is the folder of a finished
# build.
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "$0")/.."

if [[ ${2-} == --all ]]; then
    files=$(git ls-files -- '*.cpp' '*.h')
else
    files=$(git diff --name-only --diff-filter=d HEAD -- '*.cpp' '*.h'
        git ls-files --others --exclude-standard -- '*.cpp' '*.h')
fi

# clang-tidy checks a header through the sources that include it.
including() {
    local header
    for header in $(grep '\.h$'); do
        git grep -lF "$(basename "$header")\"" -- '*.cpp' || true
    done
}
# Leave out the files that this system does not compile: clang-tidy cannot check them.
compiled() {
    sed -n "s|^ *\"file\": \"$PWD/\(.*\)\".*|\1|p" "$build/compile_commands.json"
}
units=$( (echo "$files" && including <<<"$files") | grep -xF "$(compiled)" | sort -u || true)

tests/rooms.sh
xargs -r clang-format --dry-run --Werror <<<"$files"
xargs -r -P "$(nproc)" -n 1 clang-tidy-16 -p "$build" --quiet <<<"$units" \
    2> >(grep -v 'warnings\? generated' >&2)
# cppcheck needs all sources at once to find what none of them uses.
[[ ${2-} != --all ]] || xargs cppcheck -j "$(nproc)" --quiet --error-exitcode=1 --inline-suppr \
    --enable=warning,performance,portability --library=googletest --std=c++20 -I src -I . <<<"$units"
