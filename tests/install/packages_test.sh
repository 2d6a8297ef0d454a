#!/bin/sh
# packages_test.sh FOLDER: installs the Debian packages of the folder, tries them from outside, and removes them.
# Only root can; nothing of the packages may be installed before, since it would be removed.
set -eu
folder=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
packages="libkxstr1 libkxstr-dev kxstr python3-kxstr kxstr-doc"

if [ "$(id -u)" != 0 ]; then
    echo "installing packages needs root" >&2
    exit 1
fi
for package in $packages; do
    if dpkg-query -W "$package" >/dev/null 2>&1; then
        echo "$package is installed already" >&2
        exit 1
    fi
done
# shellcheck disable=SC2086 # a list of names
trap 'dpkg --purge $packages >/dev/null 2>&1 || true' EXIT
dpkg -i "$folder"/*.deb
ldconfig -p | grep -q 'libkxstr\.so\.1 '
(cd / && unset KXSTR_LIBRARY PYTHONPATH && /usr/bin/python3 -c "
import kxstr
assert kxstr.__file__ == '/usr/lib/python3/dist-packages/kxstr/__init__.py', kxstr.__file__
assert b'\x9f'.decode('kx-852') == 'č' and kxstr.detect('čeština a němčina'.encode('cp852')).page == '852'")
python3 "$here/install_test.py" cmake "$folder" --prefix /usr
echo "the installed packages work"
