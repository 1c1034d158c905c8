#!/usr/bin/env bash
# Fuzzes the code that reads untrusted input, under the address and undefined-behaviour sanitizers: one program per target
# of fuzz/, two at a time, and prints one line per target. Installs Clang if it is missing (Debian packages).
#
# Usage: scripts/fuzz.sh [SECONDS [TARGET...]]     SECONDS for each target (default 60); TARGET: all of them
#
# Inputs that reach new code are stored in build/fuzz/corpus, from which the next run continues. A finding stops its target,
# and the script exits with 1; the input is in build/fuzz/findings.
set -euo pipefail
. "$(dirname "$0")/common.sh"

seconds=${1:-60}
shift || true
[[ $seconds =~ ^[1-9][0-9]*$ ]] || { echo "Usage: scripts/fuzz.sh [SECONDS [TARGET...]]" >&2; exit 2; }
all=$(cd "$root/fuzz/corpus" && ls)
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets <<<"$all"
for target in "${targets[@]}"; do
  grep -qx "$target" <<<"$all" || { echo "No target $target; there are: ${all//$'\n'/, }" >&2; exit 2; }
done

install_packages clang-14 libclang-rt-14-dev llvm-14
build fuzz fuzzers

work=$root/build/fuzz
mkdir -p "$work/findings"
export ASAN_OPTIONS=detect_stack_use_after_return=1
# undefined behaviour would otherwise be a line in a log that nobody reads
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
export LSAN_OPTIONS=suppressions=$root/tests/lsan.supp:print_suppressions=0
ASAN_SYMBOLIZER_PATH=$(command -v llvm-symbolizer-14 || command -v llvm-symbolizer || true)
export ASAN_SYMBOLIZER_PATH

# One target: its line, and with a finding where it is and how to see it again.
fuzz_one() {
  local target=$1 corpus=$work/corpus/$1 log=$work/findings/$1.log status=0
  mkdir -p "$corpus"
  "$work/bin/fuzz_$target" "$corpus" "$root/fuzz/corpus/$target" -max_total_time="$seconds" -max_len=8192 -timeout=20 \
    -rss_limit_mb=2048 -dict="$root/fuzz/words.dict" -print_final_stats=1 -artifact_prefix="$work/findings/$target-" \
    >"$log" 2>&1 || status=$?
  local runs covered
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  covered=$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$log" | tail -1)
  if [ $status -eq 0 ]; then
    printf '%-10s %10s runs in %s s, %s places of the code reached, nothing found\n' \
      "$target" "$runs" "$seconds" "$covered"
    return 0
  fi
  local input
  input=$(sed -n 's/.*Test unit written to //p' "$log" | tail -1)
  printf '%-10s FOUND after %s runs: %s\n' "$target" "${runs:-?}" \
    "$(grep -m 1 -E 'does not hold|ERROR: |runtime error|SUMMARY' "$log" || echo "see the log")"
  printf '           input  %s\n           log    %s\n           replay %s %s\n' \
    "${input:-none}" "$log" "$work/bin/fuzz_$target" "${input:-}"
  return 1
}

say "Fuzzing ${targets[*]}, $seconds s each"
failed=0
running=0
for target in "${targets[@]}"; do
  fuzz_one "$target" &
  running=$((running + 1))
  if [ $running -ge 2 ]; then
    wait -n || failed=1
    running=$((running - 1))
  fi
done
while [ $running -gt 0 ]; do
  wait -n || failed=1
  running=$((running - 1))
done
exit $failed
