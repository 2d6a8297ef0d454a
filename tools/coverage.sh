#!/bin/sh
# coverage.sh BUILD: runs the tests of the library with the kernels of each family, and those of what only the tool asks of
# the settings, and prints which lines and branches of src/ have run in any of them. Details per line are in BUILD/report.
set -eu
build=$1
find "$build" -name '*.gcda' -delete
# A family that this processor lacks is no choice: the best one runs once more.
for family in avx512 avx2 plain; do
    KXSTR_KERNELS=$family "$build/kxstr_tests" --gtest_brief=1 || echo "coverage.sh: a test fails with $family" >&2
done
python3 tests/kx/registry_test.py "$build/kx" || echo "coverage.sh: kx.registry fails" >&2
mkdir -p "$build/report"
# The whole build is looked at, since inline functions are counted where the linker took them from. Branches of the
# compiler's own for exceptions that nothing throws are no branches of ours.
gcovr --root . --filter src/ --exclude 'src/tables/.*\.cpp' --exclude-throw-branches --exclude-unreachable-branches \
    --html-details "$build/report/index.html" --json "$build/report/coverage.json" --print-summary "$build"
