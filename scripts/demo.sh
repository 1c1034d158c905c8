#!/usr/bin/env bash
# Demonstrates the project: builds, starts qdsim (a simulated fax server) on this machine, sends a fax through it with
# qdfax, verifies that it arrived unmodified, and synchronises and uses the contact books. Exits with 0 only if every step
# succeeded.
#
# Usage: scripts/demo.sh                    Installs missing build dependencies (Debian packages).
#        scripts/demo.sh PROGRAMS FOLDER    Runs the programs built in PROGRAMS, and keeps all written files in FOLDER.
# Connects only to 127.0.0.1 and writes only to a temporary folder. Everything is logged. DEMO_PASSWORD is the password of the
# simulated user; it appears on no command line and in no file except, obfuscated, in qdfax's settings.
set -euo pipefail
. "$(dirname "$0")/common.sh"

if [ $# -eq 2 ]; then
  bin=$1 work=$2
else
  install_packages
  build release qdfax qdsim
  bin=$root/build/release/bin work=$(mktemp -d)
fi
keep=${2:-}
finish() {
  local status=$?
  stop_qdsim
  [ $status -eq 0 ] || { echo; echo "The demonstration FAILED (exit status $status)." >&2; sed 's/^/qdsim: /' "$work/qdsim.log" >&2 || true; }
  [ -n "$keep" ] || rm -rf "$work"
  exit $status
}
trap finish EXIT

export APPDATA=$work/appdata QDFAX_PASSWORD=${DEMO_PASSWORD:-s3cret & \"quoted\"}
mkdir "$work/appdata" "$work/spool" "$work/outbox" "$work/downloads"

qdfax() { "$bin/qdfax" "$@" --log-level 4; }
run() { printf '\n$ qdfax %s\n' "$*"; qdfax "$@"; }

# A small valid PDF of so many pages, written by hand: objects, their offsets, the trailer.
make_pdf() { # FILE PAGES
  local file=$1 pages=$2 kids='' offsets=() number=2
  object() { offsets+=("$(wc -c <"$file")"); printf '%s\n' "$@" >>"$file"; }
  printf '%%PDF-1.4\n' >"$file"
  for ((page = 1; page <= pages; page++)); do kids+="$((2 + 2 * page)) 0 R "; done
  object '1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj'
  object "2 0 obj << /Type /Pages /Count $pages /Kids [ $kids] >> endobj"
  object '3 0 obj << /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> endobj'
  number=4
  for ((page = 1; page <= pages; page++)); do
    local text="BT /F1 32 Tf 72 700 Td (Page $page of $pages) Tj ET"
    object "$number 0 obj << /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Resources << /Font << /F1 3 0 R >> >> /Contents $((number + 1)) 0 R >> endobj"
    object "$((number + 1)) 0 obj << /Length ${#text} >>" stream "$text" 'endstream endobj'
    number=$((number + 2))
  done
  local start; start=$(wc -c <"$file")
  { printf 'xref\n0 %d\n0000000000 65535 f \n' "$number"
    printf '%010d 00000 n \n' "${offsets[@]}"
    printf 'trailer << /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n' "$number" "$start"; } >>"$file"
}

say "Starting qdsim"
start_qdsim "$bin/qdsim" "$work" \
  --users <(printf 'anna:%s:global\n' "$QDFAX_PASSWORD") --spool "$work/spool" --speed 20 --inbound 5 --contacts 2000 --groups 5
cat "$work/qdsim.out"

say "Adding the server and looking around"
run server add "$address" --login anna --default
run server list
run whoami
run covers
run sent
run queue

say "Sending a PDF of 3 pages and a text to two recipients, with a cover page, tomorrow"
make_pdf "$work/outbox/offer.pdf" 3
printf 'Terms and conditions\n\nPay within 30 days.\n' >"$work/outbox/terms.txt"
cover=$(qdfax covers --json | jq -r 'map(select(.enabled)) | .[0].name')
tomorrow=$(date -d tomorrow +%Y-%m-%dT%H:%M)
run send "$work/outbox/offer.pdf" "$work/outbox/terms.txt" --to '+49 30 5550100,Mary Poe,Poe & Sons' --to 5550123,Bob \
  --cover "$cover" --subject 'Our offer' --comments 'As agreed on the phone' --at "$tomorrow"
run queue
mapfile -t urls < <(qdfax queue --json | jq -r 'sort_by(.url)[].url')
[ ${#urls[@]} -eq 2 ]

say "Aborting the first and sending the second at once"
run abort "${urls[0]}"
run reschedule "${urls[1]}"

say "Waiting for it to arrive"
for _ in $(seq 60); do
  qdfax sent --json >"$work/sent.json"
  jq -e 'any(.[]; .state == "sent")' "$work/sent.json" >/dev/null && break
  sleep 0.5
done
run sent
jq -e 'any(.[]; .state == "sent")' "$work/sent.json" >/dev/null

say "Comparing what was sent with what the server's spool holds"
for file in offer.pdf terms.txt; do
  stored=$(find "$work/spool" -name "$file" | head -n 1)
  [ -n "$stored" ] || { echo "$file did not arrive" >&2; exit 1; }
  sent_sum=$(sha256sum <"$work/outbox/$file")
  held_sum=$(sha256sum <"$stored")
  printf 'sent    %s %s\narrived %s %s\n' "${sent_sum%% *}" "$file" "${held_sum%% *}" "$file"
  [ "$sent_sum" = "$held_sum" ]
done

say "Downloading a received fax"
run inbox
run download --inbox 1 --to "$work/downloads"
qdfax inbox --json | jq -r '.[0].location | sub("://"; "://anna:\(env.QDFAX_PASSWORD | @uri)@")' |
  wget -q -O "$work/direct" --header 'Content-Type: application/xml' -i -
cmp "$work/direct" "$(find "$work/downloads" -type f)" && echo "The document is the server's, byte for byte."

say "Keeping the contact books, and sending to a group"
run contacts sync
run contacts search richter --limit 5
run contacts add 'Rosa Demo' --fax 5550199
friend=$(qdfax contacts search richter --json | jq -r 'map(select(.fax != ""))[0].id')
run contacts add 'Demo team' --book personal-groups --member 'Rosa Demo' --member "$friend"
run contacts sync
run send "$work/outbox/terms.txt" --to-contact 'Demo team' --no-cover --subject 'To the team' --wait
[ "$(qdfax sent --json | jq 'map(select(.subject == "To the team" and .state == "sent")) | length')" -eq 2 ]

say "Everything worked"
