#!/usr/bin/env bash
# Checks what other projects get from a build (build/default unless named):
# the installed tree, staged with DESTDIR, where each public header compiles
# alone, the demo of examples/ builds with CMake and with pkg-config and
# runs, and so do the documentation's programs; then the Debian packages,
# their contents and, where lintian is installed, lintian's verdict.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build/default}
work=$PWD/$build/package-check
rm -rf "$work"
mkdir -p "$work/run"
stage=$work/stage
DESTDIR=$stage cmake --install "$build" >/dev/null
config=$(dirname "$(find "$stage" -name nvkutilConfig.cmake)")
pcdir=$(dirname "$(find "$stage" -name nvkutil.pc)")
include=$(dirname "$(find "$stage" -path '*/include/nvk' -type d)")

echo "-- each installed header alone"
(cd "$include" && find nvk -name '*.h' | xargs -P2 -I{} sh -c \
    'echo "#include \"{}\"" | c++ -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I. -x c++ - ||
     { echo "does not compile alone: {}"; exit 255; }')

echo "-- the demo, with find_package (shared, then static)"
cmake -S examples -B "$work/demo-cmake" -G Ninja -Dnvkutil_DIR="$config" >/dev/null
cmake --build "$work/demo-cmake" >/dev/null
(cd "$work/run" && "$work/demo-cmake/demo" && "$work/demo-cmake/demo_static" >/dev/null)

echo "-- the demo, with pkg-config"
mkdir -p "$work/demo-pc"
(cd "$work/demo-pc" && PKG_CONFIG_PATH=$pcdir make -s -f "$OLDPWD/examples/Makefile")
(cd "$work/run" && "$work/demo-pc/demo" >/dev/null)

echo "-- the documentation's programs"
cmake -S docs/examples -B "$work/docs" -G Ninja -Dnvkutil_DIR="$config" >/dev/null
cmake --build "$work/docs" >/dev/null
ctest --test-dir "$work/docs" -j2 --output-on-failure >"$work/docs.log" || { cat "$work/docs.log"; exit 1; }
grep 'tests passed' "$work/docs.log"

echo "-- the Debian packages"
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/deb" >"$work/cpack.log" 2>&1 ||
    { cat "$work/cpack.log"; exit 1; }
for file in "$work"/deb/*.deb; do
    dpkg-deb --contents "$file" | awk '{print $6}' | sed "s|^|$(dpkg-deb -f "$file" Package): |"
done >"$work/contents"
for expected in 'libnvkutil0: ./usr/lib/.*/libnvkutil.so.0$' 'libnvkutil0: ./usr/lib/.*/libnvkos.so.0$' \
                'libnvkutil0: ./usr/lib/.*/nvkutil/libdzip32.so$' 'libnvkutil0: ./usr/lib/.*/nvkutil/dunzip32.dll$' \
                'libnvkutil0: ./usr/lib/.*/nvkutil/libDlsbar32.so$' 'libnvkutil-dev: ./usr/lib/.*/libnvkframe.a$' \
                'libnvkutil-dev: ./usr/lib/.*/nvkutilConfig.cmake$' 'libnvkutil-dev: ./usr/lib/.*/nvkutil.pc$' \
                'libnvkutil-dev: ./usr/include/nvk/nvkutil_export.h$' 'libnvkutil-dev: ./usr/bin/nvkrc$' \
                'nvk: ./usr/bin/nvk$' 'nvk: ./usr/share/man/man1/nvk.1.gz$' \
                'nvk: ./usr/share/bash-completion/completions/nvk$'; do
    grep -q "$expected" "$work/contents" || { echo "missing from the packages: $expected"; exit 1; }
done
for file in "$work"/deb/*.deb; do
    echo "$(basename "$file"): $(dpkg-deb -f "$file" Depends)"
done
if command -v lintian >/dev/null; then
    # A local build has no Debian changelog or copyright file to ship.
    lintian --fail-on error --suppress-tags no-copyright-file,no-changelog "$work"/deb/*.deb
fi
