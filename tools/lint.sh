#!/bin/sh
# lint.sh BUILD: clang-format over all hand-written sources, what reads the scripts, cppcheck, gcc's analyzer for what is C,
# then clang-tidy over each public header and by the build folder's compile commands.
set -eu
cd "$(dirname "$0")/.."
build=$1

sources=$(git ls-files -- '*.h' '*.cpp' '*.c' | grep -v -e '^src/tables/.*\.cpp$' -e '^detect/src/tables/.*\.cpp$' | grep -v '^tests/layers/')
# shellcheck disable=SC2086 # a list of files
clang-format --dry-run -Werror $sources
echo "clang-format: clean"

# shellcheck disable=SC2046 # a list of files
shellcheck .ci/run $(git ls-files -- '*.sh')
# shellcheck disable=SC2046
pyflakes3 $(git ls-files -- '*.py')
echo "scripts: clean"

# As 64-bit Linux, which is what its own lists of the C library and of POSIX are about. Not the benchmarks, which chain
# calls in a way that it takes for the use of what was moved away. It takes the result of a call through a table of
# functions, such as the kernels, for an address.
hand_written() {
    git ls-files -- "$@" | grep -v -e '^src/tables/' -e '^detect/src/tables/' -e '^tests/layers/'
}
hand_written 'src/*.cpp' 'detect/*.cpp' 'tools/*.cpp' 'tests/*.cpp' | grep -v windows >"$build/cppcheck.txt"
cppcheck -j "$(nproc)" --quiet --error-exitcode=1 --enable=warning,performance,portability --inline-suppr --std=c++20 \
    --language=c++ --platform=unix64 --library=posix --library=googletest --suppress=missingIncludeSystem \
    --suppress=CastAddressToIntegerAtReturn --suppress=AssignmentAddressToInteger \
    -Iinclude -Isrc -Itools/kx -Idetect/include -Idetect/src -Itests -Itests/support/portable \
    --file-list="$build/cppcheck.txt"
echo "cppcheck: clean"

# gcc's analyzer knows C alone: of C++ its own manual says that it is not for it yet. What these programs have open is
# closed when they end, which is where they leave it.
git ls-files -- 'examples/*.c' bench/load.c tests/install/pkgconfig_consumer.c tests/install/plugin_host.c |
    xargs -I '{}' gcc -std=gnu99 -O1 -Wall -Wextra -Werror -fanalyzer -Wno-analyzer-file-leak \
        -Wno-analyzer-malloc-leak -Iinclude -c -o /dev/null '{}'
echo "gcc -fanalyzer: clean"

# As C and as C++, since users read them as either.
for language in c c++; do
    git ls-files -- 'include/*.h' 'detect/include/*.h' |
        xargs -P "$(nproc)" -I '{}' clang-tidy --quiet '{}' -- -x $language -Iinclude -Idetect/include
done
echo "clang-tidy of the headers: clean"

# clang-tidy reads gcc's options, too, some of which clang does not know.
# Generated tables have nothing to say to clang-tidy; what this machine does not build has no compile command.
hand_written 'src/*.cpp' 'detect/*.cpp' 'tools/*.cpp' 'tests/*.cpp' 'fuzz/*.cpp' 'bench/*.cpp' 'examples/*.c' |
    while read -r file; do grep -q "\"file\": \".*/$file\"" "$build/compile_commands.json" && echo "$file"; done |
    xargs -P "$(nproc)" -n 1 clang-tidy --quiet --extra-arg=-Wno-unknown-warning-option -p "$build"
echo "clang-tidy: clean"
