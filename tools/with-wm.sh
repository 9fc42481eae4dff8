#!/usr/bin/env bash
# Runs a command on a private X server (Xvfb, 1280x1024) with a window manager (openbox), so
# that windows get title bars and borders as on a desktop. The window tests that need a frame
# run through this; PX_EXPECT_WM tells them that one is coming.
set -u
dir=$(mktemp -d)
trap 'kill $wm $xvfb 2>/dev/null; wait 2>/dev/null; rm -rf "$dir"' EXIT
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$dir/display" 2>"$dir/xvfb.log" &
xvfb=$!
wm=
for _ in $(seq 300); do [ -s "$dir/display" ] && break; sleep 0.1; done
if [ ! -s "$dir/display" ]; then cat "$dir/xvfb.log" >&2; echo "with-wm: no X server" >&2; exit 1; fi
export DISPLAY=":$(head -n 1 "$dir/display")"
openbox --sm-disable >"$dir/wm.log" 2>&1 &
wm=$!
PX_EXPECT_WM=1 "$@"
rc=$?
if [ $rc -ne 0 ]; then echo "with-wm: display $DISPLAY; window manager's output:" >&2; cat "$dir/wm.log" >&2; fi
exit $rc
