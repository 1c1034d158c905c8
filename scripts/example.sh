#!/usr/bin/env bash
# Builds the examples against the installed library, as a client application would, and runs one against qdsim.
#
# Usage: scripts/example.sh [--build FOLDER] sendfax | followlogs | findcontacts | all
#   --build   takes the library from this build, which must be complete, and builds nothing of it
# Connects only to 127.0.0.1. The library is installed into a folder of the build.
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
rm -rf "$stage"
cmake --install "$build" --prefix "$stage" >/dev/null
cmake -S "$root/examples" -B "$examples" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$stage" >/dev/null
cmake --build "$examples"

speed=20
[ "$name" != all ] || speed=500 # where nobody looks
work=$(mktemp -d)
trap 'stop_qdsim; rm -rf "$work"' EXIT
export APPDATA=$work
start_qdsim "$stage/bin/qdsim" "$work" --user anna:secret --speed "$speed" --inbound 3 --contacts 200 --groups 3 \
  --fail-pattern 99

password=secret
run() { say "$1"; "$examples/$1" "$address" anna "$password" "${@:2}"; }

sendfax() {
  printf '%%PDF-1.4\n%%%%EOF\n' >"$work/note.pdf"
  run sendfax "${1:-+49305550100}" "$work/note.pdf"
}
followlogs() { sendfax; run followlogs; }
findcontacts() { run findcontacts; }

has() { grep -q "$1" "$work/out" || { echo "No \"$1\" in what was printed" >&2; return 1; }; }

if [ "$name" = all ]; then
  # "all" is a test: each runs to its end, with the proof of its work, and pkg-config tells a compiler the same as CMake
  export PKG_CONFIG_PATH
  PKG_CONFIG_PATH=$(dirname "$(find "$stage" -name qdcore.pc)")
  # shellcheck disable=SC2046
  g++ -std=c++17 -fPIC "$root/examples/followlogs.cpp" -o "$work/followlogs" $(pkg-config --cflags --libs qdcore)
  { sendfax; sendfax 5550199; } | tee "$work/out"
  [ "$(grep -c '^queued: ' "$work/out")" -eq 2 ]
  for _ in $(seq 100); do # until both faxes have ended
    run followlogs 1 >"$work/out"
    [ "$(grep -c '^\(not \)\?sent' "$work/out")" -lt 2 ] || break
    sleep 0.2
  done
  cat "$work/out"
  has '^sent.*0100'
  has '^not sent.*0199'
  [ "$(grep -c '^received' "$work/out")" -eq 3 ]
  run findcontacts --grab "$work/contacts.png"
  [ "$(head -c 4 "$work/contacts.png" | tail -c 3)" = PNG ]
  password=wrong
  for what in followlogs "findcontacts --grab $work/contacts.png"; do
    # shellcheck disable=SC2086
    run $what >"$work/out" && status=0 || status=$?
    [ $status -eq 1 ] || { echo "$what with a wrong password ended with $status" >&2; exit 1; }
    [[ $what != followlogs ]] || has '^failed: AuthError'
  done
  say "The components"
  for part in runtime development tools; do
    cmake --install "$build" --component $part --prefix "$work/$part" >/dev/null
    (cd "$work/$part" && find . ! -type d ! -path './share/doc/*')
  done | sort >"$work/parts"
  # each file is in one of them
  (cd "$stage" && find . ! -type d) | sort | diff - "$work/parts"
  while read -r part file; do
    find "$work/$part" -name "$file" | grep -q . || { echo "No $file in $part" >&2; exit 1; }
  done <<'EOF'
runtime libqdcore.so.[0-9]
runtime qdcore_de.qm
development libqdcore.so
development faxserver.h
development qdcoreConfig.cmake
development qdcore.pc
tools qdfax
tools qdsim
tools qdfax.1
EOF
  # qdfax needs the library, and nothing else
  cmake --install "$build" --component runtime --prefix "$work/tools" >/dev/null
  "$work/tools/bin/qdfax" --version
else
  "$name"
fi
