#!/usr/bin/env bash
# Builds everything and runs all tests. Installs missing build dependencies (Debian packages).
#
# Usage: scripts/test.sh [PRESET] [CTest arguments...]      PRESET: release (default), debug, asan, tsan
set -euo pipefail
. "$(dirname "$0")/common.sh"

preset=${1:-release}
shift || true

install_packages doxygen help2man
build "$preset"
say "Testing"
cd "$root"
ctest --preset "$preset" -j "$(nproc)" "$@"
