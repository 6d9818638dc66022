#!/usr/bin/env bash
# Runs the practice simulator, which has threads, with the thread sanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
. ./packages.sh

need "${build_packages[@]}" "${test_packages[@]}"
build threads ON practice_test practice-simulator
build/threads/bin/practice_test --gtest_brief=1
# Send commands from one thread while the other serves the window.
{ yes $'gear down\ngear up\nmisbehave drop\nmisbehave none' || true; } | head -n 20000 |
    build/threads/bin/practice-simulator --headless --duration 3 | grep -c 'gear up'
