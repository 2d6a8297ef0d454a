#!/bin/sh
# deps.sh [GROUP...]: installs the Debian packages that a group of make targets needs, when they are missing and this
# user may; else names the command that does it. Without a group: what building and testing on this machine needs.
set -eu

packages_of() {
    case $1 in
    default) echo "cmake g++ make python3 binutils libgtest-dev" ;;
    clang) echo "clang" ;;
    valgrind) echo "valgrind" ;;
    lint) echo "clang-format clang-tidy cppcheck shellcheck pyflakes3 mandoc zsh" ;;
    coverage) echo "gcovr" ;;
    mutate) echo "lld ninja-build" ;;
    demo) echo "cmake make g++ python3" ;;
    python) echo "python3-pip python3-setuptools python3-wheel python3-mypy python3-dask python3-distributed" ;;
    docs) echo "make doxygen" ;;
    abi) echo "abigail-tools" ;;
    package) echo "dpkg-dev fakeroot file gzip lintian pkg-config" ;;
    windows) echo "cmake make python3 binutils g++-mingw-w64-i686 g++-mingw-w64-x86-64" ;;
    wine) echo "wine wine64 googletest locales" ;;
    # Not g++-multilib, which excludes all cross compilers; it only adds a link to the headers in /usr/include/asm.
    32)
        version=$(gcc_version)
        [ -n "$version" ] || { echo "No lists of packages here; run apt-get update first." >&2 && exit 1; }
        echo "cmake make python3 g++ g++-$version-multilib googletest qemu-user"
        ;;
    be) echo "cmake make python3 g++-s390x-linux-gnu googletest qemu-user" ;;
    # The headers of a newer C++ library than emscripten's own: cmake/toolchains/wasm.cmake.
    web) echo "cmake make python3 emscripten libc++-16-dev-wasm32" ;;
    browser) echo "chromium chromium-driver python3-selenium fonts-dejavu-core" ;;
    # Peers, and the texts and word lists of bench/corpus.py.
    bench)
        echo "libbenchmark-dev libicu-dev icu-devtools zlib1g wamerican wspanish wswedish hunspell-cs hunspell-he skkdic"
        echo "manpages-fr manpages-ru manpages-el manpages-ja manpages-zh locales"
        echo "libuchardet-dev python3-chardet python3-charset-normalizer"
        ;;
    *) echo "deps.sh: no group '$1'" >&2 && exit 2 ;;
    esac
}

# Of the compiler behind g++, also before it is installed.
gcc_version() {
    # A fresh machine has no lists of packages yet.
    [ "$(id -u)" != 0 ] || apt-cache show g++ >/dev/null 2>&1 || apt-get update -qq >&2
    apt-cache depends g++ | sed -n 's/.*Depends: g++-\([0-9]*\)$/\1/p' | head -n 1
}

[ $# -gt 0 ] || set -- default
missing=""
for group in "$@"; do
    packages=$(packages_of "$group")
    for package in $packages; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "ok installed" || missing="$missing $package"
    done
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
