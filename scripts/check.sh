#!/usr/bin/env bash
# Runs all reliability checks: every test, plain and under the sanitizers, the fuzzers, kill tests and a soak test. Ends with
# a table of the results and the skipped tests; exits with 1 if something failed.
#
# Usage: scripts/check.sh            about half an hour
#        scripts/check.sh --long     hours: also 200 kills, a locked file for a minute, a soak test of 30 minutes, 10 minutes a fuzzer, the packages
#
# The log of each check is in build/check. Installs missing dependencies (Debian packages).
set -uo pipefail
. "$(dirname "$0")/common.sh"

long=
fuzzing=30 minutes=2 kills=30
case "${1:-}" in
  '') ;;
  --long) long=yes fuzzing=600 minutes=30 kills=200 ;;
  *) echo "Usage: scripts/check.sh [--long]" >&2; exit 2 ;;
esac
scripts=$root/scripts
logs=$root/build/check
mkdir -p "$logs"
rows=()
missed=
failed=0

# check NAME COMMAND...: runs it, its output into a log, and remembers a row of the table.
check() {
  local name=$1 result=ok begin=$SECONDS; shift
  local log=$logs/${name// /-}.log
  say "$name"
  "$@" >"$log" 2>&1 || { result=FAILED; failed=1; tail -n 15 "$log"; }
  # what was skipped says nothing of what it is for; CTest keeps it from the terminal
  local said=("$log") skipped
  [ "$1" != "$scripts/test.sh" ] || said+=("$root/build/$2/Testing/Temporary/LastTest.log")
  skipped=$(grep -ahE '^SKIP +:' "${said[@]}" 2>/dev/null | sed -E 's/^SKIP +: //' | sort -u || true)
  if [ -n "$skipped" ]; then
    sed 's/^/skipped: /' <<<"$skipped"
    missed+=$(sed "s/^/$name: /" <<<"$skipped")$'\n'
  fi
  # the last word of the tests, of the fuzzers and of the long runs
  local figure
  figure=$(grep -aE 'tests passed|tests failed|kills, seed|^passed|^FAILED;|nothing found|FOUND after|findings in' "$log" \
    | sed -E 's/^QINFO[^)]*\) //; s/ +/ /g' | tail -n 8 || true)
  [ -z "$figure" ] || printf '%s\n' "$figure"
  rows+=("$(printf '%-28s %-7s %6d' "$name" "$result" $((SECONDS - begin)))")
}

check "tests" "$scripts/test.sh" release
check "tests with asan" "$scripts/test.sh" asan
check "tests with tsan" "$scripts/test.sh" tsan
check "lint" "$scripts/lint.sh"
check "fuzzers" "$scripts/fuzz.sh" $fuzzing
check "soak" "$scripts/soak.sh" $minutes
check "kills" env QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8 QDCORE_ROUNDS=$kills "$root/build/release/bin/tst_survival"
if [ -n "$long" ]; then
  check "locked for a minute" env QT_QPA_PLATFORM=offscreen QDCORE_LOCK_SECONDS=60 "$root/build/release/bin/tst_storesharing" lockedForLong
  check "packages" "$scripts/package.sh" --try
fi

say "Result"
printf '%-28s %-7s %6s\n' POINT RESULT SECONDS
printf '%s\n' "${rows[@]}"
if [ -n "$missed" ]; then
  say "Not tested here"
  printf '%s' "$missed"
fi
exit $failed
