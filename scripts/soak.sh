#!/usr/bin/env bash
# Soak test: the library works continuously against a simulated server that changes its data and injects faults (1 % of the
# replies truncated, 1 % malformed, 1 % delayed). Prints one line per minute; at the end checks that memory and the number of
# open files did not grow, that the store equals the server's books, and that start and stop signals are paired. Exits with 1
# if a check fails.
#
# Usage: scripts/soak.sh [MINUTES [SEED [KIB]]]     MINUTES: 30 by default; KIB: leak this much per second, which must be detected
set -euo pipefail
. "$(dirname "$0")/common.sh"

install_packages
build release soak
say "Working for ${1:-30} minutes"
QT_QPA_PLATFORM=offscreen exec "$root/build/release/bin/soak" "${1:-30}" "${@:2}"
