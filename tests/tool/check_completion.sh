#!/usr/bin/env bash
# check_completion.sh KOLUM SOURCE-FOLDER: checks that bash, zsh and fish offer what the parser
# accepts, and files with any name. It runs the real shells, with a temporary home.
set -euo pipefail
kolum=$1 source=$2
scripts=$source/tools/kolum/completion
failures=0
fail() { printf '%s\n' "$*"; failures=$((failures + 1)); }

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/home" "$folder/files"
export HOME=$folder/home XDG_CONFIG_HOME=$folder/home XDG_DATA_HOME=$folder/home TERM=xterm
PATH=$(dirname "$kolum"):$PATH
cd "$folder/files"
touch -- 'my list.txt' 'x[1].mp4' x1.mp4 '$(touch ran).avi' "it's.avi" '-dash.mkv'

# candidates_SHELL WORD...: what the shell offers for the last word after "kolum".
candidates_bash() {
  bash --norc -c '
    . "$0"
    compopt() { :; }
    COMP_WORDS=(kolum "$@")
    COMP_CWORD=$#
    _kolum kolum
    [ ${#COMPREPLY[@]} -eq 0 ] || printf "%s\n" "${COMPREPLY[@]}"' "$scripts/kolum.bash" "$@"
}
candidates_zsh() { zsh -f "$source/tests/tool/zsh_candidates.zsh" "$scripts" "kolum $*"; }
candidates_fish() {
  fish --no-config -c 'source $argv[1]; complete -C "$argv[2]"' "$scripts/kolum.fish" "kolum $*" | cut -f1
}

# expect SHELLS EXPECTED WORD...: the shells must offer exactly these, one per line in any order.
expect() {
  local shells=$1 expected offered shell
  expected=$(LC_ALL=C sort <<<"$2")
  shift 2
  for shell in $shells; do
    offered=$("candidates_$shell" "$@" | LC_ALL=C sort)
    [ "$offered" = "$expected" ] || fail "$shell offers \"$offered\" after \"$*\", not \"$expected\""
  done
}
all="bash zsh fish"

listed() { awk '/^Commands:/ { on = 1; next } on && NF == 0 { exit } on { print $1 }'; }
expect "$all" "$("$kolum" --help | listed)" ""
expect "$all" "$("$kolum" artwork --help | listed)" artwork ""
expect "$all" $'post\nstop\nwait\nclear' --json notify ""
expect "$all" geocode geo
expect "$all" $'album\nartist' help artwork a
expect "$all" "" help probe ""
expect "$all" --files-from probe --fil
expect "$all" $'--all\n--audio-stream\n--csv\n--debug\n--exclude\n--fields\n--files-from\n--fingerprint\n--help\n--in-process\n--jobs\n--json\n--null\n--places\n--verbose' probe --
expect "$all" $'--debug\n--help\n--in-process\n--json\n--version' --
expect "$all" photo classify --kinds ph
expect "$all" $'video,photo\nvideo,playlist' classify --kinds video,p
expect "$all" $'music=\nphoto=\nplaylist=\nvideo=' classify --mask ""
expect "$all" $'zh-cn\nzh-tw' geocode --language zh
expect "$all" formats ids --codec H264 f
expect "$all" $'H263\nH263I\nH263P' ids --codec H263
expect "$all" KOLUMSERVER config set K
expect "$all" "" config set THUMBNAIL ""
expect "$all" "" send 7 --text ""
expect "$all" "" no-such-command ""

# Every option in --help is offered.
options_of() { sed -nE 's/^  (-[A-Za-z0-9],? *)?(--?[a-z0-9-]+).*/\2/p'; }
for command in $("$kolum" --help | listed); do
  expect bash "$("$kolum" "$command" --help | options_of)" "$command" -
  for nested in $("$kolum" "$command" --help | listed); do
    expect bash "$("$kolum" "$command" "$nested" --help | options_of)" "$command" "$nested" -
  done
done

# After "=", which bash treats as a separate word.
expect "zsh fish" --kinds=photo classify --kinds=ph
expect bash photo classify --kinds = ph
expect bash $'music\nphoto\nplaylist\nvideo' classify --kinds =

# Files, also along with other words and after an option.
expect "$all" x1.mp4 tracks x1
expect "$all" x1.mp4 probe --files-from list x1
expect "$all" 'my list.txt' probe --files-from my
expect "$all" video probe vi
expect "$all" x1.mp4 -- info x1
expect "$all" -dash.mkv probe -- -d
expect "$all" "it's.avi" probe it
expect bash '$(touch ran).avi' probe '$(touch ran'
expect bash 'x[1].mp4' probe 'x['
expect "zsh fish" $'x1.mp4\nx[1].mp4' probe x
expect "$all" "" probe none
[ ! -e ran ] || fail "a file's name was run as a command"
exit $((failures > 0))
