#!/bin/sh
# wheel_test.sh PYTHON PACKAGE: builds the wheel without a network, and uses the package out of it.
set -eu
python=$1 package=$2
if ! "$python" -c "import setuptools, wheel, pip" 2>/dev/null; then
    echo "skipped: pip, setuptools or wheel is not installed (tools/deps.sh python)"
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -R "$package" "$work/source"
"$python" -m pip wheel -q --no-build-isolation --no-deps --no-index -w "$work" "$work/source"
"$python" -m pip install -q --no-deps --no-index --target "$work/site" "$work/kxstr-$KXSTR_VERSION-py3-none-any.whl"
test -f "$work/site/kxstr/py.typed"
cd "$work"
PYTHONPATH=$work/site "$python" -c "
import kxstr
assert kxstr.__file__.startswith('$work/site'), kxstr.__file__
assert kxstr.decode(b'\x9f', 852) == b'\x9f'.decode('kx-852') == 'č'"
