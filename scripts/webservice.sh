#!/usr/bin/env bash
# Updates the examples in docs/webservice.md: starts qdsim, runs every operation of the web service with qdfax, and writes
# the recorded exchanges between the markers of that document.
#
# Usage: scripts/webservice.sh [--check] [FOLDER]     FOLDER: where the programs are, build/release/bin by default
#   --check   writes nothing and fails if the document is out of date
#
# A marker is "<!-- recorded: SERVER METHOD TARGET STATUS -->", where SERVER is one of those started below; the first matching
# exchange follows it, up to "<!-- end -->". "; cut NAME" after the status omits the content of these elements.
# Dates and numbers are the same in every run: the clock of the simulated server advances with the requests, and its
# address is shown as fax.example.org.
set -euo pipefail
. "$(dirname "$0")/common.sh"

# The broadcast of discovery must reach nobody.
if [ -z "${QDCORE_OWN_NETWORK:-}" ]; then
  QDCORE_OWN_NETWORK=tried exec "$root/tests/kit/own-network.sh" "$0" "$@"
fi
has_own_network() { [[ $(ip -4 address show dev lo 2>/dev/null) == *127.77.0.1/* ]]; }

check=
[ "${1:-}" != --check ] || { check=yes; shift; }
bin=${1:-$root/build/release/bin}
[ -n "$check" ] || install_packages
[ -x "$bin/qdfax" ] || build release qdfax qdsim
document=$root/docs/webservice.md

work=$(mktemp -d)
trap 'stop_qdsim; rm -rf "$work"' EXIT
export LC_ALL=C.UTF-8 TZ=UTC QDFAX_PASSWORD=secret
mkdir "$work/shown"

# record SERVER [OPTION...]: starts a server that records, and a client that knows nothing of others.
record() {
  local server=$1; shift
  export APPDATA=$work/$server/appdata
  mkdir -p "$APPDATA"
  start_qdsim "$bin/qdsim" "$work/$server" --record "$work/$server/records" --clock 2026-11-15T14:30:00 --speed 100 "$@"
}
run() { "$bin/qdfax" "$@" >>"$work/output" 2>&1 || { echo "qdfax $* failed:" >&2; tail -n 5 "$work/output" >&2; exit 1; }; }
run_in_vain() { ! "$bin/qdfax" "$@" >>"$work/output" 2>&1 || { echo "qdfax $* was to fail" >&2; exit 1; }; }

# show SERVER: makes the recorded exchanges presentable, the first of each kind in a file "SERVER METHOD TARGET STATUS".
# Documents on one line are indented, the rest of a long attachment is left out, and so are lengths and hosts.
show() {
  local server=$1 record key
  for record in "$work/$server/records"/*.txt; do
    sed -E "s|${address//./\\.}|fax.example.org|g; s|(<content>.{40})[^<]+|\1…|; /^(Host|Content-Length): /d" "$record" |
      awk '
        function indented(line,    parts, count, i, depth) {
          count = split(line, parts, /></)
          for (i = 1; i <= count; i++) {
            line = (i > 1 ? "<" : "") parts[i] (i < count ? ">" : "")
            if (line ~ /^<[^\/<>]+>$/ && parts[i + 1] ~ /^\//) line = line "<" parts[++i] (i < count ? ">" : "")
            if (line ~ /^<\//) depth--
            printf "%*s%s\n", 2 * depth, "", line
            if (line ~ /^<[^?\/]/ && line !~ /<\// && line !~ /\/>$/) depth++
          }
        }
        /^<\?xml.*\?><./ { end = index($0, "?>"); print substr($0, 1, end + 1); indented(substr($0, end + 2)); next }
        /^<.*><./        { indented($0); next }
                         { print }' >"$work/exchange"
    key=$(awk '/^DISCOVER$/ { print "UDP DISCOVER 200"; exit }
               NR == 1      { request = $1 " " $2 }
               /^HTTP\/1.1 [0-9]+$/ { print request " " $2; exit }' "$work/exchange")
    key="$server $key"
    [ -e "$work/shown/${key//\//:}" ] || cp "$work/exchange" "$work/shown/${key//\//:}"
  done
}

# A server of protocol version 2.
discovery=()
! has_own_network || discovery=(--discovery 0.0.0.0 --announce 192.0.2.7)
record new --inbound 2 --contacts 2 --groups 1 "${discovery[@]}"
QDFAX_PASSWORD=wrong run_in_vain server add "$address" --login alice
run server add "$address" --login alice
run whoami
run profile set --name 'Alice Poe' --phone '+49 30 5550101' --cover Standard --receipt always
run covers
run printers
printf 'Terms and conditions\n\nPay within 30 days.\n' >"$work/terms.txt"
run send "$work/terms.txt" --to '+49 30 5550100,Mary Poe,Poe & Sons' --cover Standard --subject 'Our offer' \
  --comments 'As agreed' --priority 4 --at 2040-05-06T14:30
run queue
run queue --finished 3
run status --limit 25
run reschedule /qdws/v1/ofax/1 --at 2040-05-07T09:00
run reschedule /qdws/v1/ofax/1
run send "$work/terms.txt" --to 5550123 --no-cover --at 2040-05-06T14:30
run abort /qdws/v1/ofax/2
run_in_vain abort /qdws/v1/ofax/2
run sent --limit 25
run inbox --limit 25
run download --inbox 1 --to "$work"
run contacts sync
run contacts sync
run contacts add 'Rosa Demo' --fax 5550199
run contacts modify 'Rosa Demo' --organization 'Demo & Co.'
run contacts add 'Demo team' --book personal-groups --member 'Rosa Demo'
run contacts modify 'Demo team' --description 'Who shows things'
run contacts delete 'Rosa Demo'
run contacts delete 'Demo team'
[ ${#discovery[@]} -eq 0 ] || run discover --timeout 500
stop_qdsim
show new

# The same, to a user who may not change the global book.
record denied --user bob:secret
run server add "$address" --login bob
run_in_vain contacts add 'Rosa Demo' --fax 5550199 --book global
stop_qdsim
show denied

# A server of protocol version 1, without printed receipts and page sizes.
record old --model QDF20X --firmware 1.3
run server add "$address" --login alice
run whoami
run profile set --name 'Alice Poe' --cover Standard
run send "$work/terms.txt" --to 5550123 --no-cover
stop_qdsim
show old

awk -v shown="$work/shown" '
  /^<!-- recorded: .* -->$/ {
    print
    key = $0; sub(/^<!-- recorded: /, "", key); sub(/ -->$/, "", key)
    cut = ""
    if (match(key, /; cut .*$/)) { cut = substr(key, RSTART + 6); key = substr(key, 1, RSTART - 1) }
    marks++
    skipping = inside = 0
    file = key; gsub("/", ":", file); file = shown "/" file
    if ((getline line < file) < 0) {
      if (key ~ / UDP /) next          # no network of its own: what is there stays
      print "nothing was recorded for \"" key "\"" > "/dev/stderr"
      failed = 1; next
    }
    print "```http"
    do {
      if (cut != "" && line ~ "^ *<" cut ">$") { sub(/$/, "…</" cut ">", line); print line; inside = 1 }
      if (!inside) print line
      if (cut != "" && line ~ "^ *</" cut ">$") inside = 0
    } while ((getline line < file) > 0)
    print "```"
    close(file)
    skipping = 1
    next
  }
  /^<!-- end -->$/ { skipping = 0 }
  !skipping
  END { if (skipping || !marks) { print "a mark without an end, or no marks" > "/dev/stderr"; failed = 1 }; exit failed }
' "$document" >"$work/webservice.md"

if [ -n "$check" ]; then
  diff -u "$document" "$work/webservice.md" || { echo "scripts/webservice.sh brings docs/webservice.md up to date" >&2; exit 1; }
else
  cp "$work/webservice.md" "$document"
fi
