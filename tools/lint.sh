#!/bin/sh
# lint.sh BUILD: clang-format over all hand-written sources, then clang-tidy by the build folder's compile commands.
set -eu
cd "$(dirname "$0")/.."
build=$1

sources=$(git ls-files -- '*.h' '*.cpp' '*.c' | grep -v '^src/tables/.*\.cpp$' | grep -v '^tests/layers/')
# shellcheck disable=SC2086 # a list of files
clang-format --dry-run -Werror $sources
echo "clang-format: clean"

# Generated tables have nothing to say to clang-tidy.
git ls-files -- 'src/**/*.cpp' 'tools/**/*.cpp' 'tests/**/*.cpp' 'bench/**/*.cpp' |
    grep -v -e '^src/tables/' -e '^tests/layers/' |
    while read -r file; do grep -q "\"file\": \".*/$file\"" "$build/compile_commands.json" && echo "$file"; done |
    xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p "$build"
echo "clang-tidy: clean"
