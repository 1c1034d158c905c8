#!/usr/bin/env bash
# Builds the examples against the installed library, as a client application would, and runs one beside qdsim.
#
# Usage: scripts/example.sh [--build FOLDER] sendfax | followlogs | findcontacts | all
#   --build   takes the library from this build, which must be complete, and builds nothing of it
# Nothing but 127.0.0.1 is spoken to. The library is installed into a folder of the build.
set -euo pipefail
. "$(dirname "$0")/common.sh"

build=
if [ "${1:-}" = --build ]; then
  build=$2
  shift 2
fi
name=${1:-}
case $name in
  sendfax | followlogs | findcontacts | all) ;;
  *) echo "Which one: sendfax, followlogs, findcontacts or all?" >&2; exit 2 ;;
esac
if [ -z "$build" ]; then
  install_packages
  build release qdcore qdfax qdsim
  build=$root/build/release
fi

stage=$build/stage
examples=$build/examples
cmake --install "$build" --prefix "$stage" >/dev/null
cmake -S "$root/examples" -B "$examples" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$stage" >/dev/null
cmake --build "$examples"

work=$(mktemp -d)
trap 'stop_qdsim; rm -rf "$work"' EXIT
export APPDATA=$work
start_qdsim "$stage/bin/qdsim" "$work" --user anna:secret --speed 20 --inbound 3 --contacts 200 --groups 3

run() { say "$1"; "$examples/$1" "$address" anna secret "${@:2}"; }

sendfax() {
  printf '%%PDF-1.4\n%%%%EOF\n' >"$work/note.pdf"
  run sendfax +49305550100 "$work/note.pdf"
}
followlogs() { sendfax; run followlogs "${rounds[@]}"; }
findcontacts() { run findcontacts "${grab[@]}"; }

rounds=() grab=()
if [ "$name" = all ]; then
  # "all" is a test: each runs to its end, with the proof of its work, and pkg-config tells a compiler the same as CMake
  export PKG_CONFIG_PATH
  PKG_CONFIG_PATH=$(dirname "$(find "$stage" -name qdcore.pc)")
  # shellcheck disable=SC2046
  g++ -std=c++17 -fPIC "$root/examples/followlogs.cpp" -o "$work/followlogs" $(pkg-config --cflags --libs qdcore)
  rounds=(2) grab=(--grab "$work/contacts.png")
  followlogs | tee "$work/out"
  grep -q '^queued: ' "$work/out"
  [ "$(grep -c '^received' "$work/out")" -eq 3 ]
  findcontacts
  [ "$(head -c 4 "$work/contacts.png" | tail -c 3)" = PNG ]
else
  "$name"
fi
