#!/usr/bin/env bash
# A long run: the library works all the time against a simulated server that changes and sometimes fails (1 % of the
# replies cut, 1 % malformed, 1 % late). A line a minute; at the end, whether memory and open files stayed, the store is
# the server's, and starts and stops are paired. Ends with 1 where that is not so.
#
# Usage: scripts/soak.sh [MINUTES [SEED [KIB]]]     MINUTES: 30 by default; KIB: leak so much a second, which must be noticed
set -euo pipefail
. "$(dirname "$0")/common.sh"

install_packages
build release soak
say "Working for ${1:-30} minutes"
QT_QPA_PLATFORM=offscreen exec "$root/build/release/bin/soak" "${1:-30}" "${@:2}"
