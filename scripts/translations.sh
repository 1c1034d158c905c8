#!/usr/bin/env bash
# Updates the translations (translations/*.ts) from the texts in the sources. New texts are marked as unfinished, to be
# translated in Qt Linguist or an editor; texts that are no longer in any source are removed.
#
# Usage: scripts/translations.sh [--check | LANGUAGE...]     LANGUAGE: a new language to add, like fr
#   --check   writes nothing; fails if the files are out of date, if a text is not translated, or if a translation loses a
#             part that does not depend on the language: a %1, an option, a "&", leading or trailing blanks
set -euo pipefail
. "$(dirname "$0")/common.sh"

check=
[ "${1:-}" != --check ] || { check=yes; shift; }
[ -n "$check" ] || install_packages
lupdate=/usr/lib/qt5/bin/lupdate
[ -x $lupdate ] || lupdate=$(command -v lupdate) ||
  { echo "There is no lupdate (on Debian in qttools5-dev-tools)" >&2; exit 1; }

# update FILE: named after the part whose texts it has, and the language
update() {
  local name=${1##*/} sources
  case $name in
    qdcore_*) sources=(qdcore qdwidgets) ;;
    qdfax_*) sources=(qdfax) ;;
    *) echo "Whose texts should $name have? It begins with qdcore_ or qdfax_." >&2; return 1 ;;
  esac
  name=${name#*_}
  local only=() # of English, which the sources have, the forms that a number asks for
  [ "$name" != en.ts ] || only=(-pluralonly)
  # without the lines where the texts stand: every change of a source would change them
  (cd "$root" && "$lupdate" -silent -locations none -no-ui-lines -no-obsolete "${only[@]}" -source-language en \
    -target-language "${name%.ts}" "${sources[@]}" -ts "$1")
}

# lost FILE: prints the translations that lack what has to stay
lost() {
  perl -CSD -Mutf8 -0777 -ne '
    sub plain { my $t = shift; $t =~ s/<byte value="xd"\/>/\r/g; $t =~ s/&lt;/</g; $t =~ s/&gt;/>/g; $t =~ s/&quot;/"/g;
                $t =~ s/&apos;/\x27/g; $t =~ s/&amp;/&/g; return $t }
    sub all { my %seen; return join " ", grep { !$seen{$_}++ } sort @_ }
    sub fixed { my $t = shift; return (all($t =~ /%L?[0-9n]/g), all($t =~ /(?<![\w-])--[a-z]+(?:-[a-z]+)*/g),
                all($t =~ /(?<=["„])qdfax [a-z]+(?:-[a-z]+)?/g), scalar(() = $t =~ /&\w/g), scalar(() = $t =~ /\r\n/g),
                $t =~ /^(\s*)/, $t =~ /(\s*)$/, $t =~ /(:?)\s*$/ && $1) }
    while (/<source>(.*?)<\/source>.*?<translation([^>]*)>(.*?)<\/translation>/gs) {
      my ($source, $state, $translation) = (plain($1), $2, $3);
      if ($state ne "") { print "Not translated: $source\n"; next }
      my @forms = $translation =~ /<numerusform>(.*?)<\/numerusform>/gs;
      for my $text (map { plain($_) } @forms ? @forms : $translation) {
        my @kept = fixed($source); my @have = fixed($text);
        # a colon may come, as the other language has it
        pop @kept, pop @have if $kept[-1] eq "";
        print "Not the same in: $source\n            and: $text\n" if join("\0", @kept) ne join("\0", @have);
      }
    }' "$1"
}

if [ -z "$check" ]; then
  for language in "$@"; do
    update "$root/translations/qdcore_$language.ts"
    update "$root/translations/qdfax_$language.ts"
    echo "translations/CMakeLists.txt has to name $language, too."
  done
  for file in "$root"/translations/*.ts; do update "$file"; done
  grep -c 'type="unfinished"' "$root"/translations/*.ts | sed "s|^$root/||; s|:| unfinished: |" || true
  exit 0
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0
for file in "$root"/translations/*.ts; do
  copy=$work/${file##*/}
  cp "$file" "$copy"
  update "$copy"
  diff -u "$file" "$copy" || { echo "scripts/translations.sh brings ${file##*/} up to date" >&2; failed=1; }
  problems=$(lost "$file")
  [ -z "$problems" ] || { printf '%s:\n%s\n' "${file##*/}" "$problems" >&2; failed=1; }
done
exit $failed
