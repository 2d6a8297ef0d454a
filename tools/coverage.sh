#!/bin/sh
# coverage.sh BUILD: runs the tests of the library with the kernels of each family, and prints which lines and branches of
# src/ have run in any of them. Details per line are in BUILD/coverage.
set -eu
build=$1
find "$build" -name '*.gcda' -delete
# A family that this processor lacks is no choice: the best one runs once more.
for family in avx512 avx2 plain; do
    KXSTR_KERNELS=$family "$build/kxstr_tests" --gtest_brief=1 || echo "coverage.sh: a test fails with $family" >&2
done
mkdir -p "$build/coverage"
# Branches of the compiler's own for exceptions that nothing throws are no branches of ours.
gcovr --root . --filter src/ --exclude 'src/tables/.*\.cpp' --exclude-throw-branches --exclude-unreachable-branches \
    --html-details "$build/coverage/index.html" --print-summary "$build/src"
