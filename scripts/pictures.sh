#!/usr/bin/env bash
# Takes the screenshots of the documentation (docs/images/) again, of real windows on a virtual screen.
#
# Usage: scripts/pictures.sh     Installs missing dependencies (Debian packages).
set -euo pipefail
. "$(dirname "$0")/common.sh"

install_packages xvfb xauth fonts-dejavu-core
build release pictures

images=$root/docs/images
mkdir -p "$images"
take() { # WHAT FILE [VARIABLE=VALUE...]
  local what=$1 file=$images/$2; shift 2
  env QT_QPA_PLATFORM=xcb QT_QPA_PLATFORMTHEME= QT_FONT_DPI=96 LC_ALL=C.UTF-8 "$@" \
    xvfb-run -a -s '-screen 0 1800x900x24' "$root/build/release/bin/pictures" "$what" "$file"
  echo "${file#"$root"/}"
}

say "Taking pictures"
take light captures-light.png
take dark captures-dark.png
take light captures-2x.png QT_SCALE_FACTOR=2
take empty captures-empty.png
