#!/usr/bin/env bash
# Installs the Debian packages that the build, the tests, the benchmarks and the
# fuzzers need. Safe to run again.
set -euo pipefail

packages=(
    cmake ninja-build g++ clang libclang-rt-14-dev pkg-config clang-format
    libicu-dev libgtest-dev libgmock-dev libbenchmark-dev
    libinih-dev libsqlite3-dev liblmdb-dev
    python3  # the tool's contract test
    tzdata   # the time tests name real zones
    binutils-mingw-w64-x86-64 gcc-mingw-w64-x86-64  # Windows executables for the version tests
    libcairo2-dev libpango1.0-dev fonts-dejavu-core  # device contexts and their text
    liblnk-utils desktop-file-utils  # readers of the shell links and desktop entries we write
    libzip-dev zip unzip 7zip libarchive-tools  # the zip and unzip engines; other writers and readers in their tests, and their benchmarks' peers
    libsystemd-dev dbus-daemon  # DDE over the session bus, and the tests' private bus
    libzint-dev  # the bar-code engine
    zbar-tools poppler-utils librsvg2-bin  # the bar-code tests read what is drawn
    valgrind  # scripts/bench.sh --callgrind counts the hot paths' instructions
    help2man  # the tool's manual page, made from its help at build time
    make file dpkg-dev lintian  # scripts/check_package.sh: the pkg-config demo, cpack's dpkg-shlibdeps, the packages' check
    doxygen  # the docs target's API reference
    g++-mingw-w64-x86-64-posix  # the mingw preset: the library and its tests for Windows
    googletest  # GoogleTest's sources, built for Windows by the mingw preset
    libz-mingw-w64-dev  # zlib for Windows, for the engines of the mingw preset
    wine64 wine  # the mingw preset's tests run under Wine
)

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
if [ ${#missing[@]} -gt 0 ]; then
    $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
# Debian's sources of what the mingw preset builds for Windows itself.
"$(dirname "$0")/mingw_sources.sh"
