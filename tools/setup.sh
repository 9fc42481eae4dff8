#!/usr/bin/env bash
# Installs what is missing, builds, and then either starts the program on a demo setup
# ("demo") or runs every test ("test"). Safe to run again: it only installs and builds what is
# missing or changed.
set -euo pipefail

mode=${1:-}
case "$mode" in demo|test) ;; *) echo "usage: tools/setup.sh demo|test" >&2; exit 2 ;; esac

top=$(cd "$(dirname "$0")/.." && pwd)
build="$top/build"

packages=(cmake ninja-build g++ pkg-config qt6-base-dev qt6-base-dev-tools libgl-dev libgtest-dev libgmock-dev
          libbenchmark-dev libsqlite3-dev libgumbo-dev libx11-dev libxtst-dev xvfb xauth fonts-dejavu-core
          python3 qt6-webengine-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -q
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc)"

if [ "$mode" = test ]; then
  # Window tests need an X server: a private Xvfb for the whole run.
  cd "$build"
  exec xvfb-run -a -s "-screen 0 1280x1024x24" ctest --output-on-failure -j "$(nproc)"
fi

# The demo: data and settings under the build folder, a stand-in Pictaro install folder whose
# app.cfg names the own call (line 1) and the language (line 59: 0 = English).
demo="$build/demo"
export XDG_DATA_HOME="$demo/data" XDG_CONFIG_HOME="$demo/config"
mkdir -p "$demo/Pictaro" "$XDG_DATA_HOME" "$XDG_CONFIG_HOME"
if [ ! -f "$demo/Pictaro/app.cfg" ]; then
  { echo "PA3XYZ"; for i in $(seq 2 58); do echo "0"; done; echo "0"; echo "0"; } | sed 's/$/\r/' > "$demo/Pictaro/app.cfg"
  echo "stand-in for the Pictaro program file" > "$demo/Pictaro/Pictaro.exe"
fi
conf="$XDG_CONFIG_HOME/PX Callsigns.conf"
[ -f "$conf" ] || printf '[Pictaro]\nInstall=%s/\n' "$demo/Pictaro" > "$conf"
echo "Demo: type a call sign such as G4ABC, W1XYZ or JA1XYZ into the box and press Enter."
exec "$build/pxcallsigns"
