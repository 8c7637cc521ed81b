#!/usr/bin/env bash
# check_documentation.sh KOLUM SOURCE-FOLDER MAN-FOLDER: checks that every command has a manual
# page, a section in docs/tool.md, an example in its help, and its JSON in the schema.
set -euo pipefail
kolum=$1 source=$2 man=$3
failures=0
fail() { printf '%s\n' "$*"; failures=$((failures + 1)); }

commands_of() { awk '/^Commands:/ { on = 1; next } on && NF == 0 { exit } on { print $1 }'; }

commands=$("$kolum" --help | commands_of)
[ -n "$commands" ] || fail "no commands"
for command in $commands; do
  page=$man/kolum-$command.1
  grep -qF "kolum\\-${command//-/\\-} (1)" "$man/kolum.1" || fail "kolum.1 lacks $command"
  grep -qx "## $command" "$source/docs/tool.md" || fail "docs/tool.md lacks $command"
  grep -q '^Examples\?:$' <<<"$("$kolum" "$command" --help)" || fail "$command has no example"
  [ -f "$page" ] || fail "no page for $command"
  [ "$command" = help ] && continue  # prints text only
  grep -qF "\"#/\$defs/$command\"" "$source/docs/kolum.schema.json" || fail "the schema lacks $command"
  grep -rqE "^(.*do )?fits $command( |\$)|expectFitsSchema\(\"$command\"" "$source/tests/tool" ||
    fail "no test of the JSON of $command"
done
# The tool, its documentation and the schema must have the same codes of failures.
codes=$(sed -n 's/^ *{Cause::k[A-Za-z]*, "\([a-z-]*\)"},$/\1/p' "$source/src/describe/failure.cpp" | sort)
[ "$(wc -l <<<"$codes")" -ge 20 ] || fail "codes of failures: $codes"
documented=$(sed -n '/^| `code` |/,/^$/p' "$source/docs/tool.md" | sed '1,2d' | cut -d'|' -f2 | grep -o '[a-z-]*' | sort)
[ "$documented" = "$codes" ] || fail "docs/tool.md has other codes of failures: $documented"
warnings=$(sed -n 's/^ *{"\([a-z-]*\)", [a-zA-Z]*},$/\1/p' "$source/src/describe/warnings.cpp")
[ -n "$warnings" ] || fail "no codes of warnings"
documented=$(sed -n '/^| `code` of a warning/,/^$/p' "$source/docs/tool.md" | sed '1,2d' | cut -d'|' -f2 | grep -o '[a-z-]*')
[ "$documented" = "$warnings" ] || fail "docs/tool.md has other codes of warnings: $documented"
published=$(python3 -c 'import json, sys
print(*sorted(json.load(sys.stdin)["$defs"]["error"]["properties"]["code"]["enum"]), sep="\n")' <"$source/docs/kolum.schema.json")
[ "$(sort <<<"$published")" = "$codes" ] || fail "the schema has other codes of failures: $published"

for page in "$man"/*.1; do
  said=$(mandoc -Tlint -W warning "$page") || fail "$said"
done
for test in $(grep -o '`[A-Z][A-Za-z0-9]*\.[A-Z][A-Za-z0-9]*`' "$source/docs/oddities.md" | tr -d '`'); do
  grep -rqE "\(${test%.*}, ${test#*.}\)" "$source/tests" || fail "docs/oddities.md names $test, which does not exist"
done
exit $((failures > 0))
