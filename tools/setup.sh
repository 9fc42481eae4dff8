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
          python3 qt6-webengine-dev libasound2-dev clang libclang-rt-14-dev openbox xdotool librsvg2-bin
          libshp-dev libmagics++-data)
# The user-session test also puts text on the clipboard and reads window states and pixels.
[ "$mode" = test ] && packages+=(xclip x11-utils x11-apps)
# The print test renders the PDF pages it prints.
[ "$mode" = test ] && packages+=(poppler-utils)
# The Windows platform file is compiled (syntax only) by the MinGW compiler in the test run, and
# the GoogleTest suites run once more under a German locale.
[ "$mode" = test ] && packages+=(g++-mingw-w64-x86-64-posix locales)
# The install checks validate the desktop entry and the AppStream metadata, and build the Debian
# package (dpkg-shlibdeps finds its dependencies).
[ "$mode" = test ] && packages+=(desktop-file-utils appstream dpkg-dev file)
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

# The locales that a user's LC_ALL may name in the test run; generated once.
if [ "$mode" = test ]; then
  wanted=()
  for l in de_DE fr_FR; do locale -a 2>/dev/null | grep -qx "$l.utf8" || wanted+=("$l.UTF-8 UTF-8"); done
  if [ ${#wanted[@]} -gt 0 ]; then
    sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
    for w in "${wanted[@]}"; do
      grep -qx "$w" /etc/locale.gen 2>/dev/null || echo "$w" | $sudo tee -a /etc/locale.gen >/dev/null
    done
    $sudo locale-gen
  fi
fi

# The test run treats warnings as errors. The demo takes the build as it is (warnings as errors
# too when a test run made it), so that switching between the two rebuilds nothing.
werror=(); [ "$mode" = test ] && werror=(-DPX_WERROR=ON)
cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${werror[@]}" >/dev/null
cmake --build "$build" -j "$(nproc)"

if [ "$mode" = test ]; then
  # Window tests need an X server: a private Xvfb for the whole run.
  (cd "$build" && xvfb-run -a -s "-screen 0 1280x1024x24" ctest --output-on-failure -j "$(nproc)")
  # No test may depend on the user's locale: the same suites under German number formats.
  (cd "$build/tests" && LC_ALL=de_DE.UTF-8 ./core_tests && LC_ALL=de_DE.UTF-8 ./lookup_tests)

  # The same core, lookup engine and command line built with clang under AddressSanitizer
  # (leaks included) and UBSan, their tests run again: the first finding fails the test.
  asan="$top/build-asan"
  CC=clang CXX=clang++ cmake -S "$top" -B "$asan" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DPX_SANITIZE=ON -DPX_WERROR=ON >/dev/null
  cmake --build "$asan" -j "$(nproc)"
  export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
  (cd "$asan" && ctest --output-on-failure -j "$(nproc)")

  # Every fuzz target a short while over its committed seeds (fuzz/README.md).
  "$top/fuzz/smoke.sh" "$asan" 20
  exit 0
fi

# The demo: data and settings under the build folder, a stand-in Pictaro install folder whose
# app.cfg names the own call (line 1) and the language (line 59: 0 = English), and the local
# call-book stand-in on 127.0.0.1 in place of the five services.
demo="$build/demo"
export XDG_DATA_HOME="$demo/data" XDG_CONFIG_HOME="$demo/config"
mkdir -p "$demo/Pictaro" "$XDG_DATA_HOME" "$XDG_CONFIG_HOME"
if [ ! -f "$demo/Pictaro/app.cfg" ]; then
  { echo "PA3XYZ"; for i in $(seq 2 58); do echo "0"; done; echo "0"; echo "0"; } | sed 's/$/\r/' > "$demo/Pictaro/app.cfg"
  echo "stand-in for the Pictaro program file" > "$demo/Pictaro/Pictaro.exe"
fi
python3 "$top/tools/callbook_server.py" --lifetime 43200 > "$demo/server.port" &
server=$!
# The stand-in Pictaro beside the program: a window titled "Pictaro" that shows what a paste
# from the picture menu (right button on the station picture) hands it.
"$build/pictaro_standin" --log "$demo/pictaro.log" --received "$demo/pictaro-received.png" >/dev/null 2>&1 &
pictaro=$!
trap 'kill $server $pictaro 2>/dev/null' EXIT
# A busy machine may take a while to start Python: wait up to 30 s for the port.
for _ in $(seq 300); do [ -s "$demo/server.port" ] && break; sleep 0.1; done
url="http://127.0.0.1:$(head -n 1 "$demo/server.port")"
cat > "$XDG_CONFIG_HOME/PX Callsigns.conf.new" <<CONF
[Pictaro]
Install=$demo/Pictaro/

[Hosts]
eHam=$url/eham
QRZ=$url/qrz
QRZCQ=$url/qrzcq
Callook=$url/callook
HamCall=$url/hamcall
Pictures=$url/pictures
Updates=$url/updates
WebMaps=$url/webmaps
CONF
# Keep the user's other demo settings (unit, service, position); the hosts follow the new port.
if [ -f "$XDG_CONFIG_HOME/PX Callsigns.conf" ]; then
  python3 - "$XDG_CONFIG_HOME/PX Callsigns.conf" "$XDG_CONFIG_HOME/PX Callsigns.conf.new" <<'PY'
import configparser, sys
old, new = configparser.RawConfigParser(), configparser.RawConfigParser()
for c in (old, new):
    c.optionxform = str
old.read(sys.argv[1]); new.read(sys.argv[2])
for section in new.sections():
    if not old.has_section(section):
        old.add_section(section)
    for key, value in new.items(section):
        old.set(section, key, value)
with open(sys.argv[1], "w") as f:
    old.write(f, space_around_delimiters=False)
PY
  rm "$XDG_CONFIG_HOME/PX Callsigns.conf.new"
else
  mv "$XDG_CONFIG_HOME/PX Callsigns.conf.new" "$XDG_CONFIG_HOME/PX Callsigns.conf"
fi
echo "Demo: copy a call sign and press F8 over the window, or type one into the box and press Enter."
echo "  In the call-sign file: G4ABC, W1XYZ, JA1XYZ.  On the stand-in services: DL1ABC and LU1ABC (QRZ,"
echo "  the service chosen at start), LA1ABC (eHam), F5ABC (QRZCQ), KP4ABC (Callook), EA4ABC (HamCall)."
echo "  Right button on the station picture: copy, save, or paste to the stand-in Pictaro window (F7)."
"$build/pxcallsigns"
