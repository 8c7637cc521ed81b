# bash completion for kolum. The program itself knows what may follow: "kolum complete -- WORD..."
# prints a line that may contain "files" (file names fit too) and "nospace", then for each candidate
# its word, a tab and its meaning.

# Adds files; their names may contain anything except a newline.
_kolum_files() {
  local files
  compopt -o filenames
  mapfile -t files < <(compgen -f -- "$cur")
  COMPREPLY+=("${files[@]}")
}

_kolum() {
  local kolum=${1/#\~\//$HOME/} cur=${COMP_WORDS[COMP_CWORD]} word before="" joins=""
  local words=() answer=()
  COMPREPLY=()
  # Bash splits words at "=": the program gets them joined, and only the part after "=" is replaced.
  for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    if [[ ${#words[@]} -gt 0 && ($word == = || $joins) ]]; then words[-1]+=$word; else words+=("$word"); fi
    [[ $word == = ]] && joins=yes || joins=""
  done
  [[ $cur == = ]] && cur=""
  before=${words[-1]%"$cur"}
  mapfile -t answer < <("$kolum" complete -- "${words[@]}" 2>/dev/null)
  [[ ${answer[0]} == *nospace* ]] && compopt -o nospace
  for word in "${answer[@]:1}"; do
    word=${word%%$'\t'*}
    COMPREPLY+=("${word#"$before"}")
  done
  [[ ${answer[0]} == *files* ]] && _kolum_files
  return 0
}

complete -F _kolum kolum
