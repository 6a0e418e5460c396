#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing on Debian 12: `setup.sh build` what the program and the demo need, `package`
# what its packages need beside that, `test` (the default) what the tests need, `all` what .ci/run needs,
# `night` what scripts/night.sh needs. Does nothing where all is there.
set -euo pipefail

packages=(build-essential cmake ninja-build pkg-config qtbase5-dev libsndfile1-dev libkissfft-dev librsvg2-dev flac
    libqt5sql5-sqlite libqt5sql5-psql libsystemd-dev libboost-dev libssl-dev libcrypt-dev libmosquitto-dev
    gzip
)
[ "${1:-test}" = build ] || packages+=(doxygen dpkg-dev file)
[[ ${1:-test} = @(build|package) ]] || packages+=(
    mold libbenchmark-dev libicu-dev
    ebook2cw sox catdoc libxml2-utils
    abigail-tools man-db mandoc strace zsh fish mosquitto openssl python3
)
[[ ${1:-test} != @(all|night) ]] || packages+=(
    clang-format
    clang-tidy clazy cppcheck codespell shellcheck pyflakes3
    lintian minimodem
    clang libclang-rt-14-dev llvm
    python3-clang-14
    gcovr
)
[ "${1:-test}" != night ] || packages+=(postgresql mosquitto-clients chromium
    debootstrap python3-websocket libnss3-tools slurm-wlm faketime systemd-container)

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
        missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
# In English, since what it says is looked at.
apt_get() { "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive LC_ALL=C apt-get -qq "$@"; }

# A fresh machine installs packages of its own in its first minutes: wait until it is done, as long
# as the installation below waits.
lock_timeout_s=600
for ((waited_s = 0; ; waited_s += 2)); do
    ! said=$(apt_get update 2>&1) || break
    if [[ $said != *'Could not get lock'* ]] || [ $waited_s -ge $lock_timeout_s ]; then
        echo "$said" >&2
        exit 1
    fi
    [ $waited_s -gt 0 ] || echo "Waiting until another program has installed its packages" >&2
    sleep 2
done
apt_get install -y -o DPkg::Lock::Timeout=$lock_timeout_s --no-install-recommends "${missing[@]}" >/dev/null
