#!/usr/bin/env bash
# Fetches and unpacks Debian's sources of the libraries that the mingw preset
# builds for Windows itself (Debian ships them for Linux only), into a cache
# outside the build trees: $NVK_SOURCE_CACHE, /var/cache/nvkutil by default,
# which the mingw preset reads (its NVK_MINGW_SOURCES). A private source list
# leaves the system's apt configuration alone. apt checks the downloads against
# the signed archive's index, dpkg-source checks the files against the .dsc's
# checksums and applies Debian's patches (the maintainer's own signature on
# the .dsc would need debian-keyring: its warning is expected). Safe to run
# again.
set -euo pipefail

cache=${NVK_SOURCE_CACHE:-/var/cache/nvkutil}
# The release whose package versions the build was made with.
suite=bookworm
# Source package and the folder dpkg-source unpacks it to.
sources=(
    "libzip libzip-1.7.3"  # the zip engine
    "zint zint-2.11.1"  # the bar-code engine
)

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi
$sudo mkdir -p "$cache/apt/lists/partial"
$sudo chmod 755 "$cache"
printf 'deb-src http://deb.debian.org/debian %s main\n' "$suite" | $sudo tee "$cache/apt/sources.list" >/dev/null
apt_options=(-o "Dir::Etc::sourcelist=$cache/apt/sources.list" -o "Dir::Etc::sourceparts=-"
             -o "Dir::State::Lists=$cache/apt/lists"
             # Downloads into the cache as root, which apt's own user cannot write.
             -o "APT::Sandbox::User=root")

updated=0
for entry in "${sources[@]}"; do
    read -r package folder <<<"$entry"
    if [ -d "$cache/$folder" ]; then
        continue
    fi
    if [ $updated -eq 0 ]; then
        $sudo apt-get "${apt_options[@]}" update -qq
        updated=1
    fi
    (cd "$cache" && $sudo apt-get "${apt_options[@]}" source --download-only -qq "$package")
    dsc=$(ls "$cache/${package}"_*.dsc | tail -n 1)
    # Unpacked under a temporary name, so that an interrupted run is redone.
    $sudo rm -rf "$cache/$folder.partial"
    (cd "$cache" && $sudo dpkg-source -x "$dsc" "$folder.partial")
    $sudo mv "$cache/$folder.partial" "$cache/$folder"
done
