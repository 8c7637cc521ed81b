# zsh_candidates.zsh FOLDER LINE: prints what zsh offers at the end of LINE with the completion in
# FOLDER, one per line. A separate zsh at a pseudo-terminal completes; its compadd records what is
# added.
emulate -R zsh
zmodload zsh/zpty zsh/zselect
export ZDOTDIR=$(mktemp -d) COMPLETIONS=$1
trap 'zpty -d shell 2>/dev/null; rm -rf $ZDOTDIR' EXIT

cat >$ZDOTDIR/.zshrc <<'END'
fpath=($COMPLETIONS $fpath)
autoload -Uz compinit && compinit -u -D
compadd() {
  local -a hits
  # With these options compadd only reports matches.
  if (( ! $argv[(I)-[AOD]] )); then
    builtin compadd -O hits "$@"
    (( $argv[(I)-[a-zA-Z]#Q[a-zA-Z]#] )) && hits=("${(@Q)hits}")
    (( $#hits )) && print -rl -- $hits >>$ZDOTDIR/offered
  fi
  builtin compadd "$@"
}
offer() { zle complete-word; : >$ZDOTDIR/done }
zle -N offer
bindkey '^X' offer
LISTMAX=100000
: >$ZDOTDIR/offered
: >$ZDOTDIR/ready
END

# await NAME: waits until the shell has created the file NAME.
await() {
  local -i tries
  for ((tries = 0; tries < 1000; tries++)); do
    zpty -r -t shell >/dev/null
    [[ -e $ZDOTDIR/$1 ]] && return
    zselect -t 3
  done
  print -u2 "zsh is not $1"
  exit 1
}

zpty shell zsh -d -i
await ready
zpty -w -n shell "$2"$'\C-X'
await done
sort -u $ZDOTDIR/offered
