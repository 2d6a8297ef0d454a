#!/bin/sh
# Installs the Debian packages that building and testing need, when they are missing and this user may; else names the
# command that does it.
set -eu

packages="cmake g++ make python3 binutils libgtest-dev libbenchmark-dev clang-format clang-tidy"

missing=""
for package in $packages; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "ok installed" || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" = 0 ]; then
    echo "installing:$missing"
    apt-get update -qq
    # shellcheck disable=SC2086 # a list of words
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
else
    echo "Some packages are missing. Install them with:" >&2
    echo "    sudo apt-get install$missing" >&2
    exit 1
fi
