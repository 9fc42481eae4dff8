#!/usr/bin/env bash
# `cmake --install` into a temporary prefix: exactly the program, its desktop entry, metadata and
# icons outside the data folder (no test tools, no stand-ins), the data folder as the build made it,
# icons of the sizes their folders name. Then the tree is moved elsewhere and the program run
# there on a fresh home: it reports its version, finds its data folder beside itself and seeds
# the user's folder from it on first use, and leaves the user's files alone after that.
# Usage: check_install_tree.sh BUILD_DIR APP_ID VERSION
set -euo pipefail
source "$(dirname "$0")/expected_files.sh" "$2"
build=$1 version=$3
work=$(mktemp -d)
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
diff -u <(px_expected_files) <(px_files_outside_data "$work/prefix") || fail "files outside the data folder"
diff -r "$build/share/Norvane" "$work/prefix/$px_data" || fail "installed data folder differs from the build's"
for sub in Maps images/qrzImages Languages; do
    [ -d "$work/prefix/$px_data/$sub" ] || fail "no $sub in the installed data folder"
done
for n in $px_icon_sizes; do
    png=$work/prefix/share/icons/hicolor/${n}x$n/apps/$px_app_id.png
    [[ "$(file -b "$png")" == "PNG image data, $n x $n, 8-bit/color RGBA, non-interlaced" ]] ||
        fail "${n}x$n icon is: $(file -b "$png")"
done

# No path of the build tree in the program: moved, it must still find its data.
grep -qaF "$build/share" "$work/prefix/bin/pxcallsigns" && fail "the build's data folder is built into the program"
mv "$work/prefix" "$work/moved"
# The shipped files read-only, as a package installs them for a user.
chmod -R a-w "$work/moved/$px_data"
home=$work/home
mkdir "$home"
run() { env -i PATH=/usr/bin:/bin HOME="$home" LANG=C.UTF-8 "$work/moved/bin/pxcallsigns" "$@"; }

[ "$(run --version)" = "pxcallsigns $version" ] || fail "--version says '$(run --version)'"
sample=$work/moved/$px_data/Norvane-DB.db
records=$(( $(stat -c %s "$sample") / 167 ))
[ "$records" -gt 0 ] || fail "the sample call-sign file is empty"
[ "$(run db count)" = "$records" ] || fail "db count on a fresh home says '$(run db count)', want $records"
user=$home/.local/share/Norvane
diff -r "$work/moved/$px_data" "$user" || fail "the user's folder is not a copy of the shipped one"
[ "$(stat -c %A "$user/Norvane-DB.db" | cut -c3)" = w ] || fail "the user's call-sign file is not writable"

run db add --call DL9NEW --name Neu >/dev/null
echo "DL1XYZ*Mine" > "$user/nicknames.txt"
[ "$(run db count)" = $((records + 1)) ] || fail "the added record is gone"
[ "$(cat "$user/nicknames.txt")" = "DL1XYZ*Mine" ] || fail "the user's nicknames were overwritten"
echo "installed tree complete, moved and run: $records sample records seeded into a fresh home"
