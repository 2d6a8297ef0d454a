#!/bin/sh
# lint.sh BUILD: clang-format over all hand-written sources, then clang-tidy by the build folder's compile commands and
# over each public header, then what reads the scripts.
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

# As C and as C++, since users read them as either.
for language in c c++; do
    git ls-files -- 'include/*.h' 'detect/include/*.h' |
        xargs -P "$(nproc)" -I '{}' clang-tidy --quiet '{}' -- -x $language -Iinclude -Idetect/include
done
echo "clang-tidy of the headers: clean"

# clang-tidy reads gcc's options, too, some of which clang does not know.
# Generated tables have nothing to say to clang-tidy; what this machine does not build has no compile command.
git ls-files -- 'src/*.cpp' 'detect/*.cpp' 'tools/*.cpp' 'tests/*.cpp' 'bench/*.cpp' 'examples/*.c' |
    grep -v -e '^src/tables/' -e '^detect/src/tables/' -e '^tests/layers/' |
    while read -r file; do grep -q "\"file\": \".*/$file\"" "$build/compile_commands.json" && echo "$file"; done |
    xargs -P "$(nproc)" -n 1 clang-tidy --quiet --extra-arg=-Wno-unknown-warning-option -p "$build"
echo "clang-tidy: clean"
