#!/bin/bash
# Benchmarks the library against baselines, on two processors, and prints one line per row: name, library, baseline,
# ratio, limit, ok or OVER. Fails when a row exceeds its limit (status 1) or could not be measured. With names, runs only
# the rows whose names are or begin with one of them:
#
#   scripts/bench.sh [--verbose] [NAME...]
#   scripts/bench.sh --growth        the rows that have a size at 1,000, 10,000 and 100,000, into docs/benchmarks.md
#
# bench/README.md describes each row and its baseline.
set -euo pipefail
. "$(dirname "$0")/common.sh"

install_packages >&2
(cd "$root" && cmake --preset release -Wno-dev -DQDCORE_BUILD_BENCHMARKS=ON >/dev/null &&
  cmake --build --preset release --target bench/all) >&2

export LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen
unset XDG_CURRENT_DESKTOP
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export APPDATA=$work XDG_RUNTIME_DIR=$work

programs=(records tasks store sync gaps submit logger captures load)

# pin: keeps this script and what it starts to two of the processors that it may use.
pin() {
  local allowed cpus
  allowed=$(sed -n 's/^Cpus_allowed_list:[[:space:]]*//p' /proc/self/status)
  mapfile -t cpus < <(tr , '\n' <<<"$allowed" | while IFS=- read -r from to; do seq "$from" "${to:-$from}"; done)
  [ ${#cpus[@]} -le 2 ] || taskset -cp "${cpus[0]},${cpus[1]}" $$ >/dev/null
}

# run ARGUMENT...: every program with these arguments. Fails with 1 when a row was over, with more when a program
# failed otherwise.
run() {
  local result=0 status
  for program in "${programs[@]}"; do
    status=0
    "$root/build/release/bin/bench_$program" "$@" || status=$?
    [ "$status" -le 1 ] || echo "bench_$program failed ($status)." >&2
    [ "$status" -le "$result" ] || result=$status
  done
  return "$result"
}

# The lines of one size, of three rounds: the figures grow by far more than they waver.
growth() {
  local sizes=(1000 10000 100000) size status
  for size in "${sizes[@]}"; do
    say "Size $size" >&2
    # being over is no failure here: the limits are meant for the sizes promised
    status=0
    run --size "$size" --rounds 3 >"$work/$size" || status=$?
    cat "$work/$size" >&2
    if [ "$status" -gt 1 ]; then
      echo "docs/benchmarks.md is left as it was." >&2
      return "$status"
    fi
  done
  {
    cat <<TEXT
# How cost grows with size

Made by \`scripts/bench.sh --growth\` on $(nproc) processors. Each cell: ours beside the baseline, in milliseconds
(\`submit-memory\`: MB), and the ratio. What the size counts, and what each row and its baseline do, is described in
[bench/README.md](../bench/README.md). \`reader-wait\` has no baseline.

| row | 1,000 | 10,000 | 100,000 |
|---|---|---|---|
TEXT
    awk '
         { name = $1; if (!(name in known)) { known[name] = 1; order[++count] = name }
           cells[name, FILENAME] = $3 == "-" ? $2 : $2 " / " $3 " = " $4 }
         END { for (i = 1; i <= count; ++i) {
                 line = "| `" order[i] "` |"
                 for (f = 1; f < ARGC; ++f)
                   line = line " " ((order[i], ARGV[f]) in cells ? cells[order[i], ARGV[f]] : "-") " |"
                 print line } }' "${sizes[@]/#/$work/}"
  } >"$root/docs/benchmarks.md"
  say "Written: docs/benchmarks.md" >&2
}

pin
if [ "${1:-}" = --growth ]; then
  growth
  exit
fi

echo "name ours baseline ratio limit" >&2
status=0
run "$@" | tee "$work/lines" || status=$?
for name in "$@"; do
  if [[ $name != --* ]] && ! grep -q "^$name[ -]" "$work/lines"; then
    echo "There is no row $name." >&2
    status=2
  fi
done
exit $status
