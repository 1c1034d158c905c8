#!/usr/bin/env bash
# Asks the completion of qdfax for what users would type. Usage: completion.sh FOLDER-OF-QDFAX
PATH=$(cd "$1" && pwd):$PATH
APPDATA=$(mktemp -d)
export APPDATA
trap 'rm -rf "$APPDATA"' EXIT
# shellcheck source=/dev/null
. "$(dirname "$0")/../../packaging/qdfax.bash"
mkdir "$APPDATA/here" && cd "$APPDATA/here" && touch offer.pdf me@home.txt

COMP_WORDBREAKS=$' \t\n"\'><=;|&(:@' # as bash has it at its start
failures=0
check() { # EXPECTED LINE: what is offered at the end of the line, words broken as bash breaks them
  COMP_LINE=$2 COMP_POINT=${#2}
  mapfile -t COMP_WORDS < <(grep -oE '[^ @:=]+|[@:=]+' <<<"$2")
  [[ $2 != *' ' ]] || COMP_WORDS+=("")
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  _qdfax
  [ "${COMPREPLY[*]}" = "$1" ] && return
  echo "$2: offered \"${COMPREPLY[*]}\" instead of \"$1\""
  failures=$((failures + 1))
}
check "send sent server" "qdfax se"
check "sync search show" "qdfax contacts s"
check "--receipt --receipt-attachment" "qdfax send --rec"
check "always failure never" "qdfax send a.pdf --receipt "
check "always" "qdfax send a.pdf --receipt=al"
check "list view delete delete-all watch" "qdfax --json captures "
check "--subject" "qdfax send --to 5551234 --su"
check "" "qdfax send a.pdf --subject "
check "me@home.txt offer.pdf" "qdfax send "
check "@home.txt" "qdfax send offer.pdf me@h"
check "me@home.txt offer.pdf" "qdfax send terms.txt "
check "" "qdfax queue "
check "status sent" "qdfax watch s"
check "0 1 2 3 4" "qdfax --log-level "
check "personal personal-groups global global-groups" "qdfax contacts list --book "
check "personal global" "qdfax contacts export --csv --book "

# names of servers, which bash breaks: it replaces what is behind the last break, and a "@" that is the break
check "add list remove default" "qdfax --server anna@fax server "
check "sync search show" "qdfax --server anna@fax:8080 contacts s"
check "sync search show" "qdfax --server=anna@fax:8080 contacts s"
qdfax server add 127.0.0.1:8080 --login anna --no-check --password-file <(echo secret) >/dev/null
check "anna@127.0.0.1:8080" "qdfax --server "
check "@127.0.0.1:8080" "qdfax --server anna@"
check "8080" "qdfax server remove anna@127.0.0.1:"
check "" "qdfax server remove anna@127.0.0.1:8080 "
check "8080" "qdfax --server=anna@127.0.0.1:80"
exit $failures
