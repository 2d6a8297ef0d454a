#!/bin/sh
# check.sh LIBRARY [--renew]: fails unless the exported functions, tables and layouts of the library are those of
# kxstr.abi, the state that programs out there are linked against. --renew writes that state anew, for a change that is
# wanted: read its diff. The library must have debug information; the file is for 64-bit x86.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
library=$1
headers=$here/../../include

if [ "${2-}" = --renew ]; then
    abidw --headers-dir "$headers" --drop-private-types --exported-interfaces-only --no-corpus-path \
        --no-comp-dir-path --no-show-locs --out-file "$here/kxstr.abi" "$library"
else
    abidiff --headers-dir2 "$headers" --drop-private-types --exported-interfaces-only --no-show-locs \
        "$here/kxstr.abi" "$library"
    echo "exported names, arguments and layouts: as before"
fi
