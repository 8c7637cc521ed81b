# bash completion for kolum: commands, their options, and files.

_kolum_words() { COMPREPLY=($(compgen -W "$1" -- "$cur")); }
# Adds files; their names may hold anything but a newline.
_kolum_files() {
  local files
  compopt -o filenames
  mapfile -t files < <(compgen -f -- "$cur")
  COMPREPLY+=("${files[@]}")
}

# A list of kinds: the last one is completed.
_kolum_kinds() {
  local before="" cur=$cur
  [[ $cur == *,* ]] && before=${cur%,*},
  cur=${cur##*,}
  compopt -o nospace
  _kolum_words "music photo playlist video"
  COMPREPLY=("${COMPREPLY[@]/#/$before}")
}

# What may follow the option in $1; 1 when it takes no value.
_kolum_value() {
  case $1 in
    --files-from | --payload | --socket) _kolum_files ;;
    --kinds) _kolum_kinds ;;
    --language) _kolum_words "cs da de el en es fi fr hu it ja ko nl no pl pt ro ru sv th tr zh-cn zh-tw" ;;
    --mask) compopt -o nospace; _kolum_words "music= photo= playlist= video=" ;;
    --codec) _kolum_words "$("$kolum" ids codecs 2>/dev/null | awk 'NR > 1 { sub("CODEC_ID_", "", $3); print $3 }')" ;;
    --exclude | --tag | --text | --seconds | --audio-stream | --zoom | --seek) ;;
    *) return 1 ;;
  esac
}

_kolum() {
  local cur prev command="" nested="" operands=0 word i kolum=$1
  local IFS=$' \t\n'
  cur=${COMP_WORDS[COMP_CWORD]}
  prev=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  local valued="--files-from --exclude --payload --socket --kinds --language --mask --codec --tag --text --seconds --audio-stream --zoom --seek"
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ $word == -* ]]; then
      [[ " $valued " == *" $word "* ]] && ((++i))
    elif [[ -z $command ]]; then
      command=$word
    else
      ((operands++ == 0)) && nested=$word
    fi
  done

  local commands="probe info keyframe tracks dlna dsf cover classify extensions ids artwork geocode config send serve-echo notify doctor"
  if [[ -z $command ]]; then
    _kolum_words "$commands --help --version --json --debug"
    return
  fi
  _kolum_value "$prev" && return

  local options="--help --json --debug" words="" files=yes
  case $command in
    probe) options+=" --null --files-from --all --exclude --audio-stream"; [[ -z $nested ]] && words="video audio photo" ;;
    info) options+=" --null --files-from --all --exclude --seek" ;;
    keyframe|dsf|tracks) options+=" --null --files-from --all --exclude" ;;
    cover) options+=" --null --files-from --names" ;;
    artwork)
      [[ $nested == transcoded ]] && options+=" --null --files-from"
      [[ -z $nested ]] && files= && words="album artist transcoded folder"
      ;;
    geocode) options+=" --zoom --language"; files= ;;
    dlna) options+=" --null --files-from --all --exclude --explain --audio-stream" ;;
    classify) options+=" --null --files-from --kinds --mask --tag" ;;
    extensions) options+=" --kinds --xml"; files= ;;
    ids) options+=" --codec --ffmpeg"; files=; [[ -z $nested ]] && words="formats brands codecs profiles exceptions" ;;
    config)
      files=
      [[ -z $nested ]] && words="show set"
      [[ $nested == set && $operands == 1 ]] && words="KOLUMSERVER THUMBNAIL"
      ;;
    send) options+=" --text --payload"; files= ;;
    serve-echo) options+=" --socket"; files= ;;
    doctor) files= ;;
    notify) files=; [[ $nested == wait ]] && options+=" --stop --seconds"; [[ -z $nested ]] && words="post stop wait clear" ;;
  esac

  if [[ $cur == -* ]]; then
    _kolum_words "$options"
    return
  fi
  _kolum_words "$words"
  [[ $files ]] && _kolum_files
}

complete -F _kolum kolum
