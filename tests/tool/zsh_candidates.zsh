# zsh_candidates.zsh FOLDER LINE: what zsh offers at the end of LINE with the completion in FOLDER, a
# line each. A zsh of its own at a terminal of its own completes; its compadd writes down what is added.
emulate -R zsh
zmodload zsh/zpty zsh/zselect
export ZDOTDIR=$(mktemp -d) COMPLETIONS=$1
trap 'zpty -d shell 2>/dev/null; rm -rf $ZDOTDIR' EXIT

cat >$ZDOTDIR/.zshrc <<'END'
fpath=($COMPLETIONS $fpath)
autoload -Uz compinit && compinit -u -D
compadd() {
  local -a hits
  # These ask what would be added.
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

# A file of that name comes once the shell has got so far.
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
