#!/usr/bin/env bash
# Lists the Debian packages for each purpose and installs those that are missing.
# Usage: scripts/packages.sh [build] [run] [test] [check] [package] [icon] [picture] [bench]. Asks nothing; as an
# ordinary user it uses sudo.
set -euo pipefail

build_packages=(cmake ninja-build g++ g++-mingw-w64-x86-64-posix libgtest-dev)
# snmp sends the traps, libsnmp-base has MIB files for them; xwd (x11-apps) and convert (imagemagick) make the
# pictures; ip and unshare make the private network; python3 runs the tests; Open Sans replaces Segoe UI, and
# fonts-wine has the symbols of the caption buttons.
run_packages=(wine wine64 xvfb x11-apps imagemagick snmp libsnmp-base iproute2 util-linux python3
    fonts-open-sans fonts-wine)
test_packages=(git python3-pytest)
# clang is the second compiler and builds the fuzzers; evilwm is the window manager of a test display.
check_packages=(clang libclang-rt-dev clang-format clang-tidy evilwm)

# makensis (nsis) makes the installer, pandoc the guide's HTML; osslsigncode signs, with certificates from openssl in
# the tests; python3 makes the MIB file with the standard names.
package_packages=(nsis pandoc zip unzip osslsigncode openssl python3)
# rsvg-convert (librsvg2-bin) and icotool (icoutils) draw the icon.
icon_packages=(librsvg2-bin icoutils)
picture_packages=(pngquant)
# The library of the microbenchmarks, and the receiver that ours is compared with.
bench_packages=(libbenchmark-dev snmptrapd)

wanted=()
for purpose in "$@"; do
    declare -n packages="${purpose}_packages"
    wanted+=("${packages[@]}")
done

missing=()
for package in "${wanted[@]}"; do
    if ! dpkg-query --show --showformat='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed; then
        missing+=("$package")
    fi
done
if [[ ${#missing[@]} -eq 0 ]]; then
    exit 0
fi

Refuse() {
    echo "$*" >&2
    exit 1
}

as_root=()
if ! command -v apt-get >/dev/null; then
    Refuse "There is no apt-get here; install with this system's package manager: ${missing[*]}"
fi
if [[ $EUID -ne 0 ]]; then
    if ! command -v sudo >/dev/null; then
        Refuse "There is no sudo here; as root run: apt-get install --no-install-recommends ${missing[*]}"
    fi
    as_root=(sudo)
fi
echo "Installing: ${missing[*]}"
if ! "${as_root[@]}" apt-get update -qq || ! "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null; then
    Refuse "These packages could not be installed; the lines above say why: ${missing[*]}"
fi
