# Shared by the scripts beside it: sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '\n== %s\n' "$*"; }

# The Debian packages that building, testing and demonstrating need.
packages=(
  g++ cmake ninja-build ccache pkg-config
  qtbase5-dev qttools5-dev qttools5-dev-tools libqt5sql5-sqlite libqt5svg5-dev libqt5svg5
  libpoppler-qt5-dev
  libcpp-httplib-dev libssl-dev libsqlite3-dev libcsv-dev libkf5contacts-dev
  openssl ca-certificates wget jq iproute2 util-linux
)

# Installs what is missing of the packages; asks for nothing when all is there.
install_packages() {
  local missing=()
  for package in "${packages[@]}" "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  say "Installing ${missing[*]}"
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "These Debian packages are missing; install them as root: ${missing[*]}" >&2; exit 1; }
    as_root=(sudo)
  fi
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# build PRESET [TARGET...]: configures and builds below build/PRESET.
build() {
  local preset=$1; shift
  say "Building (preset $preset)"
  (cd "$root" && cmake --preset "$preset" -Wno-dev >/dev/null && cmake --build --preset "$preset" ${@:+--target "$@"})
}

# start_qdsim PROGRAM FOLDER [OPTION...]: starts it in the background, with its output in FOLDER/qdsim.out and
# FOLDER/qdsim.log. Sets sim, its process, and address, where it listens.
start_qdsim() {
  local program=$1 folder=$2; shift 2
  : >"$folder/qdsim.out" # which may be read before the background job has begun
  "$program" "$@" >"$folder/qdsim.out" 2>"$folder/qdsim.log" &
  sim=$!
  for _ in $(seq 100); do
    address=$(sed -n 's|.*http://\([0-9.:]*\).*|\1|p' "$folder/qdsim.out" | head -n 1)
    [ -n "$address" ] && return 0
    sleep 0.1
  done
  echo "qdsim did not start" >&2
  return 1
}

stop_qdsim() { [ -z "${sim:-}" ] || { kill "$sim" 2>/dev/null && wait "$sim" 2>/dev/null || true; sim=; }; }
