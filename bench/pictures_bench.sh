#!/usr/bin/env bash
# The pictures benchmark on a private X server with a window manager and the stand-in Pictaro, so
# that the paste goes the whole way (window activated, F7 sent).
#   bench/pictures_bench.sh BUILD_DIR [benchmark options]
set -eu
build=$(cd "$1" && pwd); shift
top=$(cd "$(dirname "$0")/.." && pwd)
exec "$top/tools/with-wm.sh" bash -c '
  "$0/pictaro_standin" --log /dev/null >/dev/null 2>&1 & standin=$!
  trap "kill $standin" EXIT
  sleep 1
  "$0/bench/pictures_bench" "$@"' "$build" "$@"
