#!/usr/bin/env bash
# Builds the tests with counters, runs them and prints how many of the branches in the rooms below
# the windows they took; fails below 95 in a hundred.
#
# Branches by which an exception would leave do not count, nor those on lines without any source, nor
# the comparisons that the compiler writes. The branches that remain are not taken because
#   catalogue.cpp, .h   the walks end at a name that is empty; the bounds are a second fence
#   tick.cpp, actuation.cpp
#                       while there are failures the link is open, and what they queue fits; every
#                       control of the catalogue has its bit
#   sim_link.cpp        the handshake is the first in its block, so that it fits; answers that are no
#                       blocks are the fuzzer's
#   line_reader.h, settings_file.cpp
#                       they are copies that the compiler makes of a branch that is taken
set -euo pipefail
cd "$(dirname "$0")/.."
. ./packages.sh

need "${build_packages[@]}" "${test_packages[@]}" gcovr
build coverage ON program_test chance_test rehearsal_test hours
find build/coverage -name '*.gcda' -delete
build/coverage/bin/program_test --gtest_brief=1
build/coverage/bin/chance_test --gtest_brief=1
build/coverage/bin/rehearsal_test --gtest_brief=1 --gtest_filter=ReportTest.*
build/coverage/bin/hours 1 600 100
gcovr --root . --filter 'src/(model|link|engine|persist|hardcore)/' --branches \
    --exclude-throw-branches --exclude-unreachable-branches \
    --exclude-lines-by-pattern '.* = default;.*' --fail-under-branch 95 build/coverage
