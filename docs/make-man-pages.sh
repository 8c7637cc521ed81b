#!/usr/bin/env bash
# make-man-pages.sh KOLUM VERSION FOLDER: generates a manual page for each command of the kolum
# program from its --help, so that the two cannot differ. The page of kolum itself is written by
# hand (kolum.1); only the list of commands replaces its line "COMMANDS".
set -euo pipefail
kolum=$1 version=$2 folder=$3
here=$(cd "$(dirname "$0")" && pwd)

# commands_of HELP: the names under "Commands:".
commands_of() { awk '/^Commands:/ { on = 1; next } on && NF == 0 { exit } on { print $1 }' <<<"$1"; }

# All pages have the date of the hand-written one.
date=$(awk '$1 == ".TH" { print $4; exit }' "$here/kolum.1")

# page COMMAND: the page's body on standard output.
page() {
  local command=$1 help nested
  help=$("$kolum" "$command" --help)
  printf '.TH "KOLUM\\-%s" 1 %s "kolum %s" "User commands"\n' "${command^^}" "$date" "$version"
  awk -v name="kolum-$command" -f "$here/help-to-man.awk" <<<"$help"
  for nested in $(commands_of "$help"); do
    printf '.SH "KOLUM %s %s"\n' "${command^^}" "${nested^^}"
    "$kolum" "$command" "$nested" --help | awk -v nested=1 -f "$here/help-to-man.awk"
  done
  cat <<'END'
.SH EXIT STATUS
0 all done, 1 something failed, 2 wrong usage.
.SH SEE ALSO
.BR kolum (1),
which describes what all commands have in common.
END
}

# command_list HELP: the commands with their descriptions.
command_list() {
  awk '/^Commands:/ { on = 1; next } on && NF == 0 { exit }
    on {
      name = "kolum-" $1; gsub(/-/, "\\-", name)
      sub(/^ *[^ ]+ +/, ""); gsub(/-/, "\\-")
      print ".TP\n.BR " name " (1)\n" $0 "."
    }' <<<"$1"
}

mkdir -p "$folder"
help=$("$kolum" --help)
for command in $(commands_of "$help"); do
  page "$command" >"$folder/kolum-$command.1"
done
awk '/^\.\\" COMMANDS$/ { while ((getline line <list) > 0) print line; next } { print }' \
  list=<(command_list "$help") "$here/kolum.1" >"$folder/kolum.1"
