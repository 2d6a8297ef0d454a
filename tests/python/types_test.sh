#!/bin/sh
# types_test.sh PYTHON PACKAGE: holds the types of the Python package by mypy --strict.
set -eu
if ! "$1" -c "import mypy" 2>/dev/null; then
    echo "skipped: mypy is not installed (tools/deps.sh python)"
    exit 77
fi
cd "$2"
exec "$1" -m mypy --strict --cache-dir=/dev/null kxstr
