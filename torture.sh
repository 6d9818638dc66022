#!/usr/bin/env bash
# Tries to break the program: ./torture.sh [SEED] [--minutes N]. Runs each driver for its share of N
# minutes with a seed that it prints, and ends with a table of cases tried and lost. Fails when a
# case was lost. For an ordinary user it leaves out the cases that need root (another user, a full
# disk) and says so.
set -euo pipefail
cd "$(dirname "$0")"
. ./packages.sh

# Each driver is a program of tests/torture/, called with SEED SECONDS. It prints progress on stderr
# and rows "what|tried|lost" on stdout, and succeeds when nothing was lost.
drivers=(hours calls saving)

seed=$((RANDOM * 32768 + RANDOM)) minutes=5
while (($#)); do
    case $1 in
    --minutes) minutes=${2-} && shift ;;
    *) seed=$1 ;;
    esac
    shift
done
if [[ ! "$seed $minutes" =~ ^[0-9]+\ [1-9][0-9]*$ ]]; then
    echo "usage: ./torture.sh [SEED] [--minutes N]" >&2
    exit 2
fi

need "${build_packages[@]}" "${test_packages[@]}"
build release ON "${drivers[@]}"
echo "Seed $seed"
seconds=$((minutes * 60 / ${#drivers[@]}))
rows='' failed=()
for driver in "${drivers[@]}"; do
    echo "Running $driver for $seconds s" >&2
    # A driver that hangs counts as failed.
    driver_rows=$(timeout $((2 * seconds + 600)) "build/release/bin/$driver" "$seed" "$seconds") ||
        failed+=("$driver")
    rows+=$driver_rows$'\n'
done

awk -F'|' 'BEGIN { printf "%-56s %14s %6s\n", "what", "tried", "lost" }
           NF == 3 { printf "%-56s %14s %6s\n", $1, $2, $3; lost += $3 }
           END { exit lost > 0 }' <<<"$rows" || failed+=(rows)
if ((${#failed[@]})); then
    echo "Failed: ${failed[*]}. Again: ./torture.sh $seed --minutes $minutes"
    exit 1
fi
