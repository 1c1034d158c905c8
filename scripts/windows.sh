#!/usr/bin/env bash
# Builds the library, qdfax and the tests for Windows with mingw-w64, and runs the tests under Wine.
#
# Usage: scripts/windows.sh [qt | build | test [NAME...] | demo]     without an argument: all, one after the other
#   qt      builds Qt for Windows from Debian's source packages into the cache (once, about 45 minutes on 2 cores)
#   build   cross-compiles into build/mingw
#   test    runs the tests under Wine, as they were built
#   demo    runs the demonstration with qdfax under Wine, against qdsim on this system
#
# The cache is $QDCORE_WINDOWS_CACHE, or ~/.cache/qdcore-windows: 3 GB while Qt is built, 750 MB afterwards.
set -euo pipefail
. "$(dirname "$0")/common.sh"

cache=${QDCORE_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/qdcore-windows}
triple=x86_64-w64-mingw32
prefix=$cache/windows       # what is built for Windows
host=$cache/host            # moc, rcc and their like, which run here

# once NAME COMMAND...: runs the command unless it has succeeded before.
once() {
  local stamp=$cache/stamps/$1
  [ -e "$stamp" ] && return 0
  say "$1"
  "${@:2}"
  mkdir -p "$cache/stamps" && touch "$stamp"
}

# logged NAME FOLDER COMMAND...: runs the command in the folder. Its output goes to a log of its own, of which the first
# error is shown if the command fails: what follows it in the log of a parallel make comes from other jobs.
logged() {
  local log=$cache/logs/$1.log
  mkdir -p "$cache/logs" "$2"
  (cd "$2" && "${@:3}") >"$log" 2>&1 && return 0
  { grep -n -m1 -B2 -A12 -E '(^|[^[:alnum:]_])([Ee]rror:|ERROR:|undefined reference|\*\*\* )|^E: |No space left' "$log" || tail -20 "$log"
    echo "failed: ${*:3} (in $2); all of its output: $log"; } >&2
  exit 1
}

# The sources come from Debian, through package lists of our own: the machine's lists stay as they are.
fetch_sources() {
  mkdir -p "$cache"/apt/{lists,archives}/partial
  echo "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] http://deb.debian.org/debian bookworm main" \
    >"$cache/apt/sources.list"
  local own=(-o Dir::Etc::sourcelist="$cache/apt/sources.list" -o Dir::Etc::sourceparts=/dev/null
             -o Dir::State::lists="$cache/apt/lists" -o Dir::Cache="$cache/apt" -o APT::Sandbox::User=)
  logged apt-update "$cache" apt-get "${own[@]}" update
  rm -rf "$cache"/{qtbase,qtsvg}-opensource-src-* "$cache"/sqlite3-* "$cache"/libcsv-*
  logged apt-source "$cache" apt-get "${own[@]}" source --only-source \
    qtbase-opensource-src qtsvg-opensource-src sqlite3 libcsv
}

# Debian leaves the copy of SQLite out of Qt's source; it goes back in from the package of SQLite itself.
put_sqlite_into_qt() {
  logged sqlite "$cache/sqlite-build" bash -c '"$0"/sqlite3-*/configure --disable-tcl && make sqlite3.c sqlite3.h' "$cache"
  local into
  into=$(echo "$cache"/qtbase-opensource-src-*/src/3rdparty)/sqlite
  mkdir -p "$into"
  cp "$cache"/sqlite-build/sqlite3.[ch] "$into"
}

# Qt asks for two of Windows' libraries with capitals, which files here have not.
link_capital_libraries() {
  local libraries=/usr/$triple/lib
  mkdir -p "$cache/capitals"
  ln -sf "$libraries/libsecur32.a" "$cache/capitals/libSecur32.a"
  ln -sf "$libraries/libcrypt32.a" "$cache/capitals/libCrypt32.a"
}

configure_qt() {
  rm -rf "$cache/qt-build"
  logged qt-configure "$cache/qt-build" "$cache"/qtbase-opensource-src-*/configure \
    -xplatform win32-g++ -device-option CROSS_COMPILE=$triple- \
    -prefix "$prefix" -hostprefix "$host" -extprefix "$prefix" \
    -opensource -confirm-license -release -shared \
    -no-opengl -no-feature-vulkan -no-feature-tabletevent -no-direct2d -no-icu -no-openssl -schannel \
    -qt-zlib -qt-pcre -qt-freetype -qt-harfbuzz -qt-libpng -no-libjpeg -no-dbus -no-pch \
    -nomake examples -nomake tests -qt-sqlite \
    -L "$cache/capitals"
}

# Interrupted, make goes on where it was: an object that was being written is removed by make itself.
make_qt() {
  logged qt-make "$cache/qt-build" make -j"$(nproc)"
}

install_qt() {
  logged qt-install "$cache/qt-build" make install
  rm -rf "$cache/qt-build"
}

# The icons are SVG, which a plugin of a module of its own reads.
build_svg() {
  logged svg "$cache/svg-build" bash -c 'set -e
    "$0" "$1"/qtsvg-opensource-src-*/
    make -j"$(nproc)"
    make install' "$host/bin/qmake" "$cache"
}

build_libcsv() {
  logged libcsv "$cache" bash -c 'set -e
    '$triple'-gcc -O2 -c libcsv-*/libcsv.c -o libcsv.o
    '$triple'-ar rcs "$0/lib/libcsv.a" libcsv.o
    cp libcsv-*/csv.h "$0/include/"' "$prefix"
}

qt() {
  install_packages g++-mingw-w64-x86-64-posix perl python3 tcl dpkg-dev fonts-dejavu-core
  once "Fetching Debian's sources of Qt, SQLite and libcsv" fetch_sources
  once "Preparing Qt's source" put_sqlite_into_qt
  link_capital_libraries
  once "Configuring Qt for Windows" configure_qt
  once "Building Qt for Windows (about 45 minutes on 2 cores)" make_qt
  once "Installing Qt for Windows" install_qt
  once "Building Qt SVG" build_svg
  once "Building libcsv" build_libcsv
}

# Beside the programs lies what they load: Qt, the compiler's libraries, Qt's plugins.
gather() {
  local bin=$1
  cp -u "$prefix"/bin/Qt5{Core,Gui,Network,Sql,Svg,Test,Widgets,Xml}.dll "$bin"
  cp -u "$($triple-g++-posix -print-file-name=libstdc++-6.dll)" "$($triple-g++-posix -print-file-name=libgcc_s_seh-1.dll)" \
    /usr/$triple/lib/libwinpthread-1.dll "$bin"
  # Qt for Windows takes the fonts of the system, but for windows that nobody sees
  mkdir -p "$bin/lib/fonts"
  cp -u /usr/share/fonts/truetype/dejavu/*.ttf "$bin/lib/fonts"
  for plugins in platforms sqldrivers imageformats iconengines styles; do
    mkdir -p "$bin/$plugins"
    cp -u "$prefix/plugins/$plugins"/*.dll "$bin/$plugins"
  done
}

build_for_windows() {
  export QDCORE_WINDOWS_PREFIX=$prefix
  build mingw
  gather "$root/build/mingw/bin"
}

# without_noise LOG COMMAND...: all output of the command goes to the log; what Wine says of itself is not shown.
without_noise() {
  local log=$1; shift
  "$@" 2>&1 | tee "$log" |
    sed -u -E '/^[0-9a-f]{4}:(err|fixme|warn):|^wine: |^(it looks like|apt-get install) wine32|^multiarch needs|^execute "dpkg/d'
}

# under_wine PREFIX COMMAND...: for Wine there has to be a display also where no window is shown, and what Wine leaves
# running has to end before the display does.
under_wine() {
  install_packages wine wine64 xvfb xauth
  WINEPREFIX=$1 xvfb-run -a bash -c '"$@"; status=$?; wineserver -w; exit $status' bash "${@:2}"
}

run_tests() {
  [ -e "$root/build/mingw/bin/tst_tasks.exe" ] || { echo "Nothing is built for Windows yet: scripts/windows.sh build" >&2; exit 1; }
  install_packages
  build release simhost
  local folder=$root/build/mingw
  # tests find there the servers that they use, which need Unix
  : >"$folder/simhost" # which may be read before the background job has begun
  "$root/build/release/bin/simhost" >"$folder/simhost" &
  local simhost=$!
  trap 'kill '$simhost EXIT
  until [ -s "$folder/simhost" ]; do sleep 0.1; done
  SIMHOST=$(cat "$folder/simhost")
  export SIMHOST
  say "Testing under Wine"
  (cd "$root" && without_noise "$folder/test.log" under_wine "$folder/wine" ctest --preset mingw "$@")
}

# The demonstration, with a qdfax for Windows and qdsim on this system: they meet over loopback.
run_demo() {
  install_packages
  build release qdsim
  say "Demonstrating under Wine"
  local folder=$root/build/mingw/demo
  rm -rf "$folder" && mkdir -p "$folder"/{programs,wrote}
  ln -s "$root/build/release/bin/qdsim" "$folder/programs"
  printf '#!/bin/sh\nexec "%s" "%s" "$@"\n' "$root/scripts/wine.sh" "$root/build/mingw/bin/qdfax.exe" \
    >"$folder/programs/qdfax"
  chmod +x "$folder/programs/qdfax"
  # a user of its own, whose APPDATA is empty
  without_noise "$root/build/mingw/demo.log" under_wine "$folder/wine" "$root/scripts/demo.sh" "$folder/programs" "$folder/wrote"
}

case ${1:-all} in
  all) # the demonstration shows what works also where a test fails
    qt
    build_for_windows
    status=0
    for step in test demo; do "$root/scripts/windows.sh" $step || status=1; done
    exit $status ;;
  qt) qt ;;
  build) qt; build_for_windows ;;
  demo) run_demo ;;
  test) shift; run_tests ${@:+-R "$(IFS='|'; echo "^($*)$")"} ;;
  *) sed -n '2,/^set/{/^#/p}' "$0" >&2; exit 2 ;;
esac
