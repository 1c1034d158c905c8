#!/usr/bin/env bash
# Builds the Debian packages (build/package/*.deb) and checks them with lintian.
#
# Usage: scripts/package.sh [--try]
#   --try   also installs them into a minimal Debian (debootstrap, as root) and runs the installed programs
set -euo pipefail
. "$(dirname "$0")/common.sh"

install_packages lintian dpkg-dev
folder=$root/build/package
say "Building for /usr"
cmake -S "$root" -B "$folder" -G Ninja -Wno-dev -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=/usr \
  -DQDCORE_BUILD_TESTS=OFF >/dev/null
cmake --build "$folder"
say "Packing"
rm -f "$folder"/*.deb
(cd "$folder" && cpack -G DEB >cpack.log 2>&1) || { cat "$folder/cpack.log" >&2; exit 1; }
ls -l "$folder"/*.deb
say "Asking lintian"
lintian --fail-on error --suppress-tags initial-upload-closes-no-bugs "$folder"/*.deb

[ "${1:-}" = --try ] || exit 0
install_packages debootstrap
[ "$(id -u)" -eq 0 ] || { echo "--try needs root, for debootstrap and chroot" >&2; exit 1; }
bare=$(mktemp -d)
trap 'rm -rf "$bare"' EXIT
say "Installing into a bare Debian"
debootstrap --variant=minbase bookworm "$bare" >"$folder/debootstrap.log" 2>&1 ||
  { tail -20 "$folder/debootstrap.log" >&2; exit 1; }
cp "$folder"/*.deb "$bare/tmp"
chroot "$bare" sh -c 'apt-get update -qq && DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -qq --no-install-recommends /tmp/*.deb' >"$folder/install.log" 2>&1 ||
  { tail -20 "$folder/install.log" >&2; exit 1; }
chroot "$bare" qdfax --version
chroot "$bare" qdsim --version
say "The packages install and run"
