#!/usr/bin/env bash
# The Debian package from CPack: its name, its control fields with the Debian 12 names of the
# libraries the program links, and its contents (listed, then compared with what an install
# holds); the program unpacked from it runs.
# Usage: check_package.sh BUILD_DIR APP_ID VERSION
set -euo pipefail
source "$(dirname "$0")/expected_files.sh" "$2"
build=$1 version=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

(cd "$build" && cpack -G DEB -B "$work/out" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; fail "cpack"; }
deb=$work/out/pxcallsigns_${version}_$(dpkg --print-architecture).deb
[ -f "$deb" ] || fail "no $(basename "$deb"): $(ls "$work/out")"
dpkg-deb -I "$deb"
dpkg-deb -c "$deb"

field() { dpkg-deb -f "$deb" "$1"; }
[ "$(field Package)" = pxcallsigns ] || fail "Package: $(field Package)"
[ "$(field Version)" = "$version" ] || fail "Version: $(field Version)"
[ "$(field Section)" = hamradio ] || fail "Section: $(field Section)"
[ "$(field Description | head -1)" = "call-sign companion for SSTV picture exchange" ] || fail "Description"
[ "$(field Description | wc -l)" -ge 3 ] || fail "the description has no long text"
# Each library the program links, by its Debian 12 package name (dpkg-shlibdeps adds a version
# where the library's symbols ask for one).
depends=", $(field Depends),"
for lib in libc6 libstdc++6 libqt6core6 libqt6gui6 libqt6widgets6 libqt6network6 libgumbo1 libx11-6; do
    [[ "$depends" == *", $lib ("* || "$depends" == *", $lib,"* ]] || fail "Depends lacks $lib: $depends"
done
# Sound is opened only when the program beeps: recommended, and no dependency.
[[ "$depends" != *"libasound"* ]] || fail "Depends names ALSA: $depends"
[ "$(field Recommends)" = "xdg-utils, libasound2" ] || fail "Recommends: $(field Recommends)"

dpkg-deb -x "$deb" "$work/root"
[ "$(find "$work/root" -mindepth 1 -maxdepth 1)" = "$work/root/usr" ] || fail "files outside /usr"
diff -u <(px_expected_files) <(px_files_outside_data "$work/root/usr") || fail "files outside the data folder"
diff -r "$build/share/Norvane" "$work/root/usr/$px_data" || fail "packaged data folder differs from the build's"
[[ "$(file -b "$work/root/usr/bin/pxcallsigns")" == *", stripped" ]] || fail "the program is not stripped"
[ "$(env -i PATH=/usr/bin:/bin HOME="$work" "$work/root/usr/bin/pxcallsigns" --version)" = "pxcallsigns $version" ] ||
    fail "the packaged program does not run"
echo "package $(basename "$deb"): $(stat -c %s "$deb") bytes"
