# Converts a command's --help to the sections of a manual page: NAME holds its first line, SYNOPSIS
# the usage, DESCRIPTION what follows the options, then OPERANDS, OPTIONS, COMMANDS and EXAMPLES.
# With nested=1 everything goes into the section of the parent command.

function escaped(text) {
  gsub(/\\/, "\\e", text)
  gsub(/-/, "\\-", text)
  sub(/^[.']/, "\\\\\\&&", text)
  return text
}

function listHeading(title) { return nested ? "" : ".SH " title "\n" }

# The lines of a list: "  -x,--name VALUE   meaning", or the meaning alone on the next line.
function entry(line,   name, meaning) {
  if (line ~ /^   /) {
    sub(/^ +/, "", line)
    return escaped(line)
  }
  sub(/^  /, "", line)
  name = line
  if (match(line, /  +/)) {
    name = substr(line, 1, RSTART - 1)
    meaning = substr(line, RSTART + RLENGTH)
  }
  gsub(/,--/, ", --", name)
  return ".TP\n.B " escaped(name) (meaning == "" ? "" : "\n" escaped(meaning))
}

NR == 1 { title = $0; next }
/^Usage: / { usage = substr($0, 8); next }
/^Operands:$/ { part = "list"; list = list listHeading("OPERANDS"); next }
/^Options:$/ { part = "list"; list = list listHeading("OPTIONS"); next }
/^Commands:$/ { part = "list"; list = list listHeading("COMMANDS"); next }
/^Examples?:$/ { part = "examples"; next }
NF == 0 { if (part == "list") part = "text"; if (part == "text") text = text "\n.PP"; next }
part == "list" { list = list entry($0) "\n"; next }
part == "examples" { sub(/^  /, ""); examples = examples escaped($0) "\n"; next }
{ part = "text"; text = text "\n" escaped($0) }

END {
  gsub(/(\n\.PP)+$/, "", text)
  gsub(/^(\n\.PP)+/, "", text)
  if (nested) {
    print ".B " escaped(usage) "\n.PP\n" escaped(title) "."
  } else {
    print ".SH NAME\n" escaped(name) " \\- " tolower(substr(title, 1, 1)) escaped(substr(title, 2))
    print ".SH SYNOPSIS\n.B " escaped(usage)
    print ".SH DESCRIPTION" (text == "" ? "\n" escaped(title) "." : text)
    text = ""
  }
  printf "%s", list
  if (text != "") print ".PP" text
  if (examples != "") {
    print (nested ? ".PP\nExample:" : ".SH EXAMPLES")
    printf ".nf\n%s.fi\n", examples
  }
}
