#!/usr/bin/env bash
# Static analysis of the library, the programs, the examples, the fuzz targets and the benchmarks: cppcheck, clazy (level 1)
# and clang-tidy, two files at a time.
# Prints the findings and exits with 1 if there are any. Installs missing dependencies (Debian packages).
#
# Usage: scripts/lint.sh [FILE...]     FILE: a source; all but the tests without one
#
# All files take ten minutes on two cores and half an hour on busy ones, nearly all of it clang-tidy; one file seconds.
# Suppressions stand, with their reasons, in .clang-tidy, .cppcheck-suppressions or beside the code.
set -euo pipefail
. "$(dirname "$0")/common.sh"

folders=(qdcore qdwidgets qdfax qdsim fuzz bench examples)
sources=()
for file in "$@"; do
  [[ $file == *.cpp && -f $file ]] || { echo "Usage: scripts/lint.sh [FILE...]: no source $file" >&2; exit 2; }
  sources+=("$(realpath --relative-to="$root" "$file")")
done
cd "$root"
[ ${#sources[@]} -gt 0 ] || mapfile -t sources < <(find "${folders[@]}" -name '*.cpp' | sort)

install_packages clang-14 clang-tidy-14 clazy cppcheck
# the linters want the commands, and the headers that Qt's tools make
build lint qdcore_autogen

work=$root/build/lint
in_project="^$root/($(IFS='|'; echo "${folders[*]}"))/"
failed=0

# Files that are not compiled here (those for Windows; the examples, which want an installed library) are for cppcheck
# alone, which needs no commands.
compiled=()
for file in "${sources[@]}"; do
  if grep -qF "\"file\": \"$root/$file\"" "$work/compile_commands.json"; then
    compiled+=("$file")
  else
    echo "Not compiled here, so read by cppcheck alone: $file"
  fi
done

# lint NAME COMMAND...: runs it, its output into a log, and prints the findings, each once.
lint() {
  local name=$1 status=0 begin=$SECONDS; shift
  local log=$work/$name.log
  say "$name"
  nice -n 10 "$@" >"$log" 2>&1 || status=$?
  local findings
  findings=$(grep -E '^[^ ]+:[0-9]+(:[0-9]+)?: (fatal )?(error|warning|style|performance|portability)' "$log" \
    | sed "s|^$root/||" | sort -u || true)
  if [ -n "$findings" ]; then
    printf '%s\n' "$findings"
    failed=1
  elif [ $status -ne 0 ]; then # it did not run
    tail -n 15 "$log"
    failed=1
  fi
  local count
  count=$(grep -c . <<<"$findings" || true)
  printf '%d findings in %d s (%s)\n' "$count" $((SECONDS - begin)) "$log"
}

# cppcheck does not see Qt's headers, so the macros that would break its parsing are defined away.
lint cppcheck cppcheck --quiet -j 2 --std=c++17 --library=qt --enable=warning,style,performance,portability \
  --inline-suppr --suppressions-list=.cppcheck-suppressions --error-exitcode=1 \
  --template='{file}:{line}: {severity}: {message} [{id}]' \
  -DQT_WARNING_PUSH= -DQT_WARNING_POP= -DQT_WARNING_DISABLE_DEPRECATED= \
  -Iqdcore -Iqdwidgets -Iqdfax -Iqdsim $(printf -- '-I%s ' qdcore/*/) "${sources[@]}"
if [ ${#compiled[@]} -gt 0 ]; then
  lint clazy xargs -P 2 -n 4 -a <(printf '%s\n' "${compiled[@]}") \
    clazy-standalone -p "$work" -checks=level1 -header-filter="$in_project"
  lint clang-tidy xargs -P 2 -n 1 -a <(printf '%s\n' "${compiled[@]}") \
    clang-tidy-14 --quiet -p "$work" --header-filter="$in_project"
fi
exit $failed
