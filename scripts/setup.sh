#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what building, testing and the demo need on Debian 12. `setup.sh build` stops at what
# the program and the demo need; without an argument the tests' tools come too. Does nothing where all is there.
set -euo pipefail

build=(build-essential cmake ninja-build pkg-config qtbase5-dev libsndfile1-dev libkissfft-dev flac)
test=(clang-format libbenchmark-dev libicu-dev ebook2cw sox catdoc libxml2-utils)

packages=("${build[@]}")
[ "${1:-all}" = build ] || packages+=("${test[@]}")

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
        missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
