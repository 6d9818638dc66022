#!/usr/bin/env bash
# usage: run.sh SECONDS: builds the targets for libFuzzer and runs each for its share of that time,
# from the committed inputs and those of earlier runs. Fails when it finds a fault, and prints the
# file of the input.
set -euo pipefail
cd "$(dirname "$0")/../.."
. ./packages.sh

seconds=$1
need "${build_packages[@]}" "${test_packages[@]}" "${fuzz_packages[@]}"
configure build/fuzz -G Ninja -S tests/fuzz -DCMAKE_CXX_COMPILER=clang++-14
cmake --build build/fuzz -- --quiet

# Keep the temporary files in RAM.
TMPDIR=$(mktemp -d -p /dev/shm)
export TMPDIR
trap 'rm -r "$TMPDIR"' EXIT
targets=(tests/fuzz/corpus/*)
for target in "${targets[@]}"; do
    target=$(basename "$target")
    mkdir -p "build/fuzz/found/$target"
    if ! "build/fuzz/$target" -max_total_time=$((seconds / ${#targets[@]})) -print_final_stats=1 \
        -artifact_prefix="build/fuzz/$target-" "build/fuzz/found/$target" "tests/fuzz/corpus/$target" \
        &>"build/fuzz/$target.log"; then
        tail -n 40 "build/fuzz/$target.log" >&2
        exit 1
    fi
    awk -v target="$target" '/number_of_executed_units/ { runs = $2 }
        /average_exec_per_sec/ { printf "%-14s %10d runs %8d a second\n", target, runs, $2 }' \
        "build/fuzz/$target.log"
done
