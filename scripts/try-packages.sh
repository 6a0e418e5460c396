#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Tries the packages of scripts/package.sh as somebody would who has nothing but a bare Debian 12 and
# them: follows the installed pages there, what is printed compared with what the page shows.
# `try-packages.sh FOLDER` keeps the bare system and what it fetched in FOLDER, for the next time.
# Needs root.
set -euo pipefail

fail() { echo "$*" >&2; exit 1; }
[ $# -eq 1 ] || fail "Usage: try-packages.sh FOLDER, in which the bare system is to lie"
folder=$(realpath -m "$1")
cd "$(dirname "$0")/.."
[ "$(id -u)" -eq 0 ] || fail "Only root can make a system to try them on."
# What is mounted from here on goes with this process, however it ends.
[ "${MOUNTS:-}" = own ] || MOUNTS=own exec unshare --mount scripts/try-packages.sh "$folder"
scripts/setup.sh night

packages=(build/package/packages/*.deb)
[ -e "${packages[0]}" ] || fail "There are no packages; run scripts/package.sh first."
read -ra flags <<<"$(pkg-config --cflags --libs Qt5Core)"
c++ -std=c++17 -fPIC -Itests tests/docs/{followpage,blocks,pages}.cpp -o build/followpage \
    "${flags[@]}"
mkdir -p "$folder/fetched"
if [ ! -d "$folder/bare" ]; then
    debootstrap --variant=minbase bookworm "$folder/unfinished" http://deb.debian.org/debian
    mv "$folder/unfinished" "$folder/bare"
fi

inside() {
    chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin DEBIAN_FRONTEND=noninteractive "$@"
}
# machine NAME: the bare system, and on it somebody who may use sudo, installs nothing that is only
# recommended, and says yes.
machine() {
    root=$folder/$1
    rm -rf --one-file-system "$root"
    cp -a "$folder/bare" "$root"
    mount -t proc proc "$root/proc"
    mount --bind /dev "$root/dev"
    mount --bind /dev/pts "$root/dev/pts"
    mount --bind "$folder/fetched" "$root/var/cache/apt/archives"
    cat >"$root/etc/apt/apt.conf.d/90reader" <<'END'
APT::Get::Assume-Yes "true";
APT::Install-Recommends "false";
Binary::apt::APT::Keep-Downloaded-Packages "true";
END
    echo force-unsafe-io >"$root/etc/dpkg/dpkg.cfg.d/90reader" # it is not kept
    echo "127.0.0.1 localhost $(hostname)" >"$root/etc/hosts" # or sudo complains
    inside apt-get -qq update
    inside apt-get -qq install sudo >/dev/null 2>&1
    inside useradd --create-home reader
    cat >"$root/etc/sudoers.d/reader" <<'END'
reader ALL=(ALL) NOPASSWD: ALL
Defaults env_keep += "DEBIAN_FRONTEND"
END
    # There is neither a sound card nor a stick.
    for receiver in arecord rtl_fm nc; do
        install -D tests/docs/receiver.sh "$root/home/reader/.receivers/$receiver"
    done
    cp -r tests/install/consumer "$root/home/reader/"
    page pages <<'END'
```sh bare-machine
sudo apt install ./morsehandler-doc_*.deb
```
END
}

status=0
# follow PAGE [COMMAND]: as the reader, in a folder with the packages, after a command of his.
follow() {
    local here reader
    here=/home/reader/$(basename "$1" .md)
    reader=(chroot --userspec=reader:reader "$root" /usr/bin/env -i -C "$here"
        PATH=/home/reader/.receivers:/usr/bin HOME=/home/reader LC_ALL=C.UTF-8
        DEBIAN_FRONTEND=noninteractive)
    inside install -d -o reader -g reader "$here"
    cp "${packages[@]}" "$root$here/"
    [ $# -eq 1 ] || "${reader[@]}" bash -euc "$2" >/dev/null 2>&1 || fail "fails: $2"
    build/followpage "$1" "${reader[@]}" || status=1
}
# page NAME: the same for what no page of ours shows, in the words of one.
page() {
    cat >"$folder/$1.md"
    follow "$folder/$1.md"
}

echo "As an operator:"
machine operator
pages=$root/usr/share/doc/morsehandler
follow "$pages/operator-guide.md"
data="ln -s /usr/share/morsehandler data"
for name in tables inspect station page mqtt cluster formats/alphabet formats/map formats/codec \
    formats/decodermodules; do
    follow "$pages/$name.md" "$data"
done
follow "$pages/formats/result-document.md" "$data; sudo apt install libxml2-utils"
page programs <<'END'
```sh bare-machine
sudo apt install man-db
```

```console
$ man morsehost | head -n 4
MORSEHOST(1)                     User Commands                    MORSEHOST(1)

NAME
       morsehost - turn Morse code and the output of radio decoders into text
$ ls /usr/bin/arecord /usr/bin/rtl_fm /usr/bin/nc
/usr/bin/arecord
/usr/bin/nc
/usr/bin/rtl_fm
$ rtl_fm=/usr/bin/rtl_fm; $rtl_fm -h 2>&1 | grep -wE 'direct2?'
…direct: …
…direct2: …
```
END

echo "As a service, with the example file:"
inside apt-get -qq install systemd-sysv dbus >/dev/null 2>&1
inside install -D /usr/share/morsehandler/station/example.ini /etc/morsehost/station.ini
umount "$root"/{var/cache/apt/archives,dev/pts,dev,proc} # booted, it has its own
systemd-nspawn --quiet --register=no --keep-unit --directory="$root" --boot \
    </dev/null >"$folder/boot.log" 2>&1 &
container=$!
trap 'kill -9 "$container" 2>/dev/null || true' EXIT
booted() { nsenter --all --target "$(pgrep --oldest --parent "$container")" "$@"; }
# await WORDS...: until they succeed; ten minutes at most.
await() {
    local end=$((SECONDS + 600))
    until "$@" >/dev/null 2>&1; do
        [ $SECONDS -lt $end ] || fail "waited in vain for: $*"
        sleep 0.5
    done
}
# shellcheck disable=SC2317 # await calls it
says() { booted journalctl --unit morsehost --no-pager | grep "$1"; }
see() { PATH=/usr/bin:$PATH scripts/see-page.py http://127.0.0.1:8073/ "$folder/service.png" example live "$@"; }
await booted systemctl is-active multi-user.target
begin=$SECONDS
booted systemctl enable --now morsehost 2>/dev/null || status=1
see 'GOOD EVENING' || status=1
shown=$((SECONDS - begin))
echo "The page shows text after $shown s"
[ $shown -le 60 ] || status=1
booted systemctl reload morsehost || status=1
await says 'station.ini: taken over'
# While it runs, and without leaving a file that it cannot write.
booted morsehost search EVENING | grep -q 'GOOD EVENING' || status=1
booted systemctl kill --signal KILL morsehost
await says 'restart counter is at 1'
see running || status=1
booted systemctl stop morsehost || status=1
booted journalctl --unit morsehost --no-pager >"$folder/service.log"
[ $status -eq 0 ] || cat "$folder/service.log"
booted morsehost search EVENING | grep -q 'GOOD EVENING' || status=1
booted systemctl poweroff
wait $container || status=1
trap - EXIT

echo "As a developer of a host:"
machine developer
follow "$root/usr/share/doc/morsehandler/host-guide.md"
follow README.md "$data; cp -r /usr/share/doc/libmorsehandler-dev/examples ."
page consumer <<'END'
```console
$ cmake -S ../consumer -B build >/dev/null && cmake --build build >/dev/null && build/consumer
SOS
$ c++ -std=c++17 -fPIC ../consumer/main.cpp -o by-hand \
    $(pkg-config --cflags --libs morsehandler morsehandler-hoststandin) && ./by-hand
SOS
```
END
page removal <<'END'
```sh bare-machine
sudo apt purge morsehost libmorsehandler-dev libmorsehandler0 libhoststandin0 morsehandler-doc
```

```console
$ sudo find / -xdev '(' -name '*morseh*' -o -name '*hoststandin*' ')' ! -path '/home/*'
```
END
[ $status -eq 0 ] || echo "What is printed is not what is shown."
exit $status
