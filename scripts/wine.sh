#!/usr/bin/env bash
# Runs a Windows program under Wine; the preset "mingw" runs its tests this way. scripts/windows.sh copies the DLLs and
# plugins that the programs need beside them.
#
# Usage: scripts/wine.sh PROGRAM.exe [ARGUMENT...]
set -euo pipefail

program=$1; shift
folder=$(dirname "$(realpath "$program")")
export WINEPREFIX=${WINEPREFIX:-$folder/../wine} WINEDLLOVERRIDES="mscoree,mshtml="

case $(basename "$program") in
  tst_*)
    # What goes to a console that is none gets lost: the report goes to a file. And Wine passes on no variable that
    # begins with QT_, so that the platform is an argument, which a program without windows would not know.
    report=$(mktemp)
    trap 'rm -f "$report"' EXIT
    if grep -qa QApplication "$program"; then set -- -platform offscreen "$@"; fi
    status=0
    wine "$program" -o "Z:$report,txt" "$@" || status=$?
    cat "$report"
    exit $status ;;
  *) exec wine "$program" "$@" ;;
esac
