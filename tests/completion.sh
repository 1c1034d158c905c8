#!/usr/bin/env bash
# Asks the completion of qdfax for what users would type. Usage: completion.sh FOLDER-OF-QDFAX
PATH=$1:$PATH
APPDATA=$(mktemp -d)
export APPDATA
trap 'rm -rf "$APPDATA"' EXIT
# shellcheck source=/dev/null
. "$(dirname "$0")/../packaging/qdfax.bash"

failures=0
check() { # EXPECTED WORD...: what is offered for the last word
  local expected=$1; shift
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  _qdfax
  [ "${COMPREPLY[*]}" = "$expected" ] && return
  echo "$*: offered \"${COMPREPLY[*]}\" instead of \"$expected\""
  failures=$((failures + 1))
}
check "send sent server" qdfax se
check "sync search show" qdfax contacts s
check "--receipt --receipt-attachment" qdfax send --rec
check "always failure never" qdfax send a.pdf --receipt ""
check "list view delete delete-all watch" qdfax --json captures ""
check "add list remove default" qdfax --server anna@fax server ""
check "--subject" qdfax send --to 5551234 --su
exit $failures
