# Hands a header to doxygen as this project writes and reads headers. Lines keep their numbers.
#
# - A comment over a getter speaks for the setter under it too, and over a function for its other forms under it. Between
#   "//@{" and "//@}" a comment speaks for everything under it.
# - An override without a comment does what the comment of the base says, a destructor without one what every destructor
#   does, and "= default" what the compiler does: doxygen need not see them.

# A declaration that goes on in the next line is judged as a whole.
open { held = held "\n" $0; if (/[;{}]$/) { open = 0; judge(held) }; next }
/^    [A-Za-z].*\(.*[^;{}:]$/ && !/\/\// { held = $0; open = 1; next }
{ judge($0) }

function judge(text,    line, name) {
  line = text
  gsub(/\n */, " ", line)
  if (line ~ /^ *\/\/@[{]/) { group = 1; print ""; return }
  if (line ~ /^ *\/\/@[}]/) { group = 0; spoken = ""; print ""; return }
  if (line ~ /^ *\/\/\/[^<]/) {
    sub(/^ *\/\/\/ ?/, "", line)
    comment = commented == "line" ? comment " " line : line
    commented = "line"
    print text
    return
  }
  if (line ~ /^ *\/\/ /) { print text; return } # not for doxygen; may stand between a comment and its function
  if (line ~ /\*\/$/) { commented = "block"; print text; return }

  name = match(line, /[A-Za-z_]+\(/) ? substr(line, RSTART, RLENGTH - 1) : ""
  if (commented != "") {
    spoken = commented == "line" ? name : ""
  } else if (line ~ / = default;$/ || line ~ /^ *(virtual )?~[A-Za-z]+\(\)( override)?;$/ ||
             (line ~ / override( \{.*\})?;?$/ && !group)) {
    gsub(/[^\n]/, "", text)
  } else if ((group && line ~ /^    [A-Za-z]/) ||
             (spoken != "" && (name == spoken || tolower(name) == "set" tolower(spoken)))) {
    sub(/^ */, "&/** " comment " */ ", text)
  } else {
    spoken = ""
  }
  commented = ""
  print text
}
