#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Tries the packages of scripts/package.sh as somebody would who has nothing but a bare Debian 12:
# installs them there, decodes, reads the manual page, compiles a host. `try-packages.sh FOLDER`
# makes that system in FOLDER, or takes the one that is there. Needs root and debootstrap.
set -euo pipefail
cd "$(dirname "$0")/.."

root=${1:?where the bare system is to lie}
packages=(build/package/packages/*.deb)
[ -e "${packages[0]}" ] || { echo "There are no packages; run scripts/package.sh first." >&2; exit 1; }
[ -e "$root/etc/debian_version" ] ||
    debootstrap --variant=minbase bookworm "$root" http://deb.debian.org/debian

mkdir -p "$root/proc" "$root/dev"
mount -t proc proc "$root/proc"
trap 'umount "$root/dev/pts" "$root/dev" "$root/proc" 2>/dev/null' EXIT
mount --bind /dev "$root/dev"
mount --bind /dev/pts "$root/dev/pts"
rm -rf "$root/root/packages" "$root/root/consumer"
mkdir "$root/root/packages"
cp "${packages[@]}" "$root/root/packages/"
cp -r tests/install/consumer "$root/root/"

inside() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
    LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive bash -euc "$1"; }
step() {
    echo "\$ $1"
    inside "cd /root; $1"
}

step "apt-get -qq update"
step "apt-get -qq install -y --no-install-recommends ./packages/{morsehost,libmorsehandler0,libhoststandin0}_*.deb >/dev/null"
step "morsehost decode /usr/share/morsehandler/samples/evening.flac"
step "morsehost alphabets | wc -l"
step "apt-get -qq install -y --no-install-recommends man-db >/dev/null; man morsehost | head -n 4"
step "apt-get -qq install -y --no-install-recommends ./packages/libmorsehandler-dev_*.deb g++ make cmake pkg-config >/dev/null"
step "cmake -S consumer -B build >/dev/null && cmake --build build >/dev/null && build/consumer"
step "g++ -fPIC consumer/main.cpp -o by-hand \$(pkg-config --cflags --libs morsehandler morsehandler-hoststandin) && ./by-hand"
step "apt-get -qq remove -y morsehost libmorsehandler-dev libmorsehandler0 libhoststandin0 >/dev/null; ! ls -d /usr/share/morsehandler /usr/include/morsehandler 2>/dev/null"
