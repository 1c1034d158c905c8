#!/usr/bin/env bash
# Generates the manual pages of qdfax and qdsim (docs/man) from the help output of the programs.
#
# Usage: scripts/manuals.sh [--check] [FOLDER]     FOLDER: where the programs are, build/release/bin by default
#   --check   writes nothing and fails if the pages are out of date; exits with 77 if the page of qdsim could not be checked
#             because help2man is missing
set -euo pipefail
. "$(dirname "$0")/common.sh"

check=
[ "${1:-}" != --check ] || { check=yes; shift; }
bin=${1:-$root/build/release/bin}
[ -n "$check" ] || install_packages help2man
[ -x "$bin/qdfax" ] || build release qdfax qdsim

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export APPDATA=$work/appdata LC_ALL=C.UTF-8
version=$("$bin/qdfax" --version | grep -o '[0-9][0-9.]*' | head -n 1)

# The text of help, on standard input, as a manual page: what is indented by two columns and followed by an explanation
# becomes a tagged paragraph; a heading becomes a section if "sections" is said, else a line.
as_manual() { # [sections]
  awk -v heading="${1:-}" '
    function escaped(text) { gsub(/\\/, "\\e", text); gsub(/-/, "\\-", text); sub(/^[.'"'"']/, "\\\\\\&&", text); return text }
    /^[A-Z][^.]*:$/        { section = substr($0, 1, length($0) - 1)
                             if (heading) print ".SH \"" toupper(section) "\""
                             else print ".PP\n" section ":"
                             next }
    /^          +[^ ]/ && tag { sub(/^ +/, ""); print escaped($0); next }
    /^  / && section == "Examples" { sub(/^ +/, ""); print ".RS\n.nf\n" escaped($0) "\n.fi\n.RE"; next }
    /^  [^ ]/              { line = substr($0, 3)
                             if (match(line, /  +/)) { tag = substr(line, 1, RSTART - 1); rest = substr(line, RSTART + RLENGTH) }
                             else { tag = line; rest = "" }
                             print ".TP\n.B " escaped(tag); if (rest != "") print escaped(rest); next }
    /^$/                   { tag = ""; if (NR > 1) print ".PP"; next }
                           { tag = ""; print escaped($0) }' |
    # no empty paragraph before a section
    awk '/^\.PP$/ { held = 1; next } { if (held && !/^\.(SS|SH|TP)/) print ".PP"; held = 0; print }'
}

qdfax_page() {
  local general names
  general=$("$bin/qdfax" help)
  names=$(sed -n '/^Commands:$/,/^$/p' <<<"$general" | sed -n 's/^  \([a-z][a-z-]*\( [a-z][a-z-]*\)\?\)  .*/\1/p')
  echo ".TH QDFAX 1 \"\" \"qdcore $version\" \"User Commands\""
  cat <<'EOF'
.SH NAME
qdfax \- send and watch faxes through a network fax server
.SH SYNOPSIS
.B qdfax
.RI [ OPTIONS ]
.I COMMAND
.RI [ ARGUMENTS ]
EOF
  sed '1,/^Usage:/d; /^Settings: /d; /^A UID is/d' <<<"$general" | as_manual sections
  echo '.SH "WHAT THE COMMANDS DO"'
  local name
  while read -r name; do
    local text
    # shellcheck disable=SC2086 # a name is one word or two
    text=$("$bin/qdfax" help $name)
    echo ".SS \"$(head -n 1 <<<"$text" | sed 's/\\/\\e/g; s/-/\\-/g; s/"/\\(dq/g')\""
    sed '1,2d; /^Options of every command:$/,/^$/d; s/^Options:$//' <<<"$text" | as_manual
  done <<<"$names"
  cat <<'EOF'
.SH ENVIRONMENT
.TP
.B APPDATA
The folder below which settings, log and contact cache lie. Where it is not set, that of the desktop's data
.RI ( ~/.local/share ).
.TP
.B QDFAX_PASSWORD
The password for
.BR "qdfax server add" ,
which is asked for otherwise.
.SH FILES
All in the folder "Quendra Client Software" below
.BR APPDATA :
.TP
.I Settings/qdfax.xml
The servers, with enciphered passwords, and the other settings.
.TP
.I Logs
A log file a day.
.TP
.I Contacts
The cache of contact books.
.SH "SEE ALSO"
.BR qdsim (1)
EOF
}

qdsim_page() {
  # help2man asks the program itself, by a name without a folder
  (cd "$bin" && PATH=.:$PATH help2man --no-info --no-discard-stderr --version-string "$version" \
    --name 'simulate a network fax server' --source "qdcore $version" qdsim) |
    sed -e '/^\.\\" DO NOT MODIFY/d' -e 's/^\.TH \([^ ]*\) "1" "[^"]*"/.TH \1 "1" ""/'
}

qdfax_page >"$work/qdfax.1"
if [ -n "$check" ]; then
  diff -u "$root/docs/man/qdfax.1" "$work/qdfax.1" || { echo "scripts/manuals.sh brings the manual up to date" >&2; exit 1; }
  command -v help2man >/dev/null || { echo "There is no help2man: the manual of qdsim is not checked"; exit 77; }
  qdsim_page >"$work/qdsim.1"
  diff -u "$root/docs/man/qdsim.1" "$work/qdsim.1" || { echo "scripts/manuals.sh brings the manual up to date" >&2; exit 1; }
else
  qdsim_page >"$work/qdsim.1"
  mkdir -p "$root/docs/man"
  cp "$work"/*.1 "$root/docs/man"
fi
