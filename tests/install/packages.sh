#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The Debian packages hold what they should, depend on what they need, and the program runs from
# them, unpacked into an empty folder.
set -euo pipefail

for tool in dpkg-deb dpkg-shlibdeps file; do
    command -v $tool >/dev/null || { echo "$tool is not installed"; exit 77; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
cpack -G DEB --config "$BUILD/CPackConfig.cmake" -B "$work" >log 2>&1 || { cat log; exit 1; }

status=0
fail() { echo "$*"; status=1; }
package() { echo "$work/$1_$VERSION-1_"*.deb; }
holds() { # PACKAGE FILE...
    local file list
    list=$(dpkg-deb -c "$(package "$1")")
    for file in "${@:2}"; do
        grep -qE " \./usr/$file( -> .*)?$" <<<"$list" || fail "$1 does not hold $file"
    done
}
depends() { # PACKAGE DEPENDENCY...
    local dependency field
    field=", $(dpkg-deb -f "$(package "$1")" Depends),"
    for dependency in "${@:2}"; do
        [[ $field == *", $dependency"[\ ,]* ]] || fail "$1 does not depend on $dependency: $field"
    done
}

debs=(./*.deb)
[ ${#debs[@]} -eq 5 ] || fail "packages: ${debs[*]}"
# Of what is compiled, so that a trace of a crash names functions and lines.
for binary in libmorsehandler0:$LIBDIR/libmorsehandler.so.0 libhoststandin0:$LIBDIR/libhoststandin.so.0 \
    morsehost:bin/morsehost; do
    name=${binary%%:*}
    dpkg -x "$(package "$name")" built
    built=$(file -L "built/usr/${binary#*:}")
    [[ $built == *", stripped"* ]] || fail "not stripped: $built"
    id=$(sed -n 's/.*BuildID\[sha1\]=\(..\)\([0-9a-f]*\),.*/\1\/\2/p' <<<"$built")
    dpkg-deb -c "${name}-dbgsym_$VERSION-1_"*.ddeb | grep -q "/usr/lib/debug/.build-id/$id.debug$" ||
        fail "no debug information of $name, $id"
done
holds libmorsehandler0 "$LIBDIR/libmorsehandler.so.0" "$LIBDIR/libmorsehandler.so.$VERSION"
holds libhoststandin0 "$LIBDIR/libhoststandin.so.0" "$LIBDIR/libhoststandin.so.$VERSION"
holds libmorsehandler-dev "$LIBDIR/libmorsehandler.so" "$LIBDIR/libhoststandin.so" \
    include/morsehandler/session/morsehandler.h include/morsehandler/host/standin/hosttree.h \
    "$LIBDIR/cmake/morsehandler/morsehandlerConfig.cmake" "$LIBDIR/pkgconfig/morsehandler.pc" \
    share/doc/libmorsehandler-dev/examples/{CMakeLists.txt,own_host.cpp,host/standin/datetime.cpp}
holds morsehost bin/morsehost share/man/man1/morsehost.1.gz \
    share/bash-completion/completions/morsehost share/morsehandler/maps/Greek.ascii.map \
    share/morsehandler/samples/{three-overs,teleprinters/minimodem-ita2}.flac share/morsehandler/station/example.ini \
    lib/systemd/system/morsehost.service
holds morsehandler-doc share/doc/morsehandler/{operator-guide.md,host-guide.md,formats/map.md} \
    share/doc/morsehandler/api/{index.html,classMorseHandler.html}
[ "$(dpkg-deb -f "$(package morsehandler-doc)" Architecture)" = all ] ||
    fail "morsehandler-doc is for one architecture only"
for name in libmorsehandler0 libhoststandin0 libmorsehandler-dev morsehost morsehandler-doc; do
    holds $name "share/doc/$name/copyright" "share/doc/$name/changelog.Debian.gz"
    for field in Maintainer Section Description; do
        [ -n "$(dpkg-deb -f "$(package $name)" $field)" ] || fail "$name has no $field"
    done
done

# A library has no business with the program's libraries, nor the plug-in with its stand-in host.
depends libmorsehandler0 libqt5core5a libstdc++6
depends libhoststandin0 libqt5core5a
depends libmorsehandler-dev "libmorsehandler0 (= $VERSION-1)" "libhoststandin0 (= $VERSION-1)" \
    qtbase5-dev
depends morsehost "libmorsehandler0 (= $VERSION-1)" "libhoststandin0 (= $VERSION-1)" libsndfile1 librsvg2-2 libqt5sql5-sqlite
for name in libmorsehandler0 libhoststandin0; do
    ! grep -qE 'sndfile|kissfft|morsehandler|hoststandin' \
        <<<"$(dpkg-deb -f "$(package $name)" Depends)" || fail "$name depends on too much"
    grep -qE "^${name%0} 0 $name \(>= " <<<"$(dpkg-deb -I "$(package $name)" shlibs)" ||
        fail "$name does not declare how others depend on it"
    [ "$(uname -m)" != x86_64 ] || diff "$SOURCE/cmake/debian/$name.symbols" \
        <(dpkg-deb -I "$(package $name)" symbols) || fail "$name does not declare its symbols"
done

# Unpacked elsewhere, it runs; and nothing in it knows where it was built.
for deb in "${debs[@]}"; do
    dpkg -x "$deb" root
done
! grep -rl "$SOURCE" root || fail "These name the folder that they were built in."
text=$(LD_LIBRARY_PATH=$work/root/usr/$LIBDIR root/usr/bin/morsehost \
    decode root/usr/share/morsehandler/samples/evening.flac)
[[ $text == *"GOOD EVENING FROM THE NORTH SEA"* ]] || fail "decoded: $text"

# Let through: what is only for the archive of Debian; scripts that cpack writes and that do no
# harm; and the folder of pkg-config files, which follows the prefix of the build.
if command -v lintian >/dev/null; then
    lintian --allow-root --fail-on error,warning --suppress-tags \
        initial-upload-closes-no-bugs,maintscript-calls-ldconfig,pkg-config-unavailable-for-cross-compilation \
        "${debs[@]}" || status=1
fi
exit $status
