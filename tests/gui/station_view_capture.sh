#!/bin/sh
# pxcallsigns station-view URL --capture OUT.png: the written picture is the page area, its corners
# the stand-in's coloured blocks; a page that fails ends with exit 1 after the retries, a local
# file with exit 2. Usage: station_view_capture.sh PXCALLSIGNS SOURCE_DIR
set -eu
cli=$1 src=$2
tmp=$(mktemp -d)
trap 'kill $server 2>/dev/null; rm -rf "$tmp"' EXIT
python3 "$src/tools/callbook_server.py" --lifetime 280 > "$tmp/port" &
server=$!
for _ in $(seq 50); do [ -s "$tmp/port" ] && break; sleep 0.1; done
port=$(head -1 "$tmp/port")
export PX_STATIONVIEW_TIMEOUT_MS=1500

"$cli" station-view "http://127.0.0.1:$port/blocks" --capture "$tmp/page.png" --size 320x240 2>/dev/null
python3 "$src/tests/gui/png_corners.py" "$tmp/page.png" 320 240 ff0000 00ff00 0000ff ffff00

status=0
"$cli" station-view "http://127.0.0.1:$port/qrz/db/ZZ404" --capture "$tmp/x.png" 2>"$tmp/err" || status=$?
[ "$status" = 1 ] || { echo "404: exit $status, not 1"; exit 1; }
grep -q "attempt 4" "$tmp/err" || { echo "404: no fourth attempt"; cat "$tmp/err"; exit 1; }
[ ! -e "$tmp/x.png" ] || { echo "404: a picture was written"; exit 1; }

status=0
"$cli" station-view "file:///etc/hostname" --capture "$tmp/x.png" 2>/dev/null || status=$?
[ "$status" = 2 ] || { echo "file: exit $status, not 2"; exit 1; }
for size in 10x10 0x0 abc 5000x200; do
  status=0
  "$cli" station-view "http://127.0.0.1:$port/blocks" --capture "$tmp/x.png" --size "$size" 2>/dev/null || status=$?
  [ "$status" = 2 ] || { echo "--size $size: exit $status, not 2"; exit 1; }
done
echo ok
