# Shared by ./run, ./check and .ci/run: installs missing packages, configures, builds.
# Sourced, not run; expects the working directory to be the project's root.

readonly kPackageList=scripts/packages.txt

say() { printf 'kolum: %s\n' "$*" >&2; }

debian_release() {
  . /etc/os-release
  printf '%s' "${VERSION_ID:-unknown}"
}

# wanted_packages GROUP...: "package reason" lines for this Debian release.
wanted_packages() {
  awk -v release="$(debian_release)" -v groups=" $* " '
    /^#/ || NF == 0 { next }
    index(groups, " " $3 " ") && ($2 == "*" || $2 == release) {
      reason = $4; for (i = 5; i <= NF; i++) reason = reason " " $i
      print $1, reason
    }' "$kPackageList"
}

# ensure_packages GROUP...: installs what is missing and says what and why.
ensure_packages() {
  local wanted missing=() name reason installed
  wanted=$(wanted_packages "$@")
  # dpkg-query fails when it has never heard of one of them, having told about the others.
  installed=$({ dpkg-query -W -f='${Package} ${db:Status-Status}\n' \
    $(awk '{ print $1 }' <<<"$wanted") 2>/dev/null || true; } |
    awk '$2 == "installed" { print $1 }')
  while read -r name reason; do
    grep -qxF -- "$name" <<<"$installed" && continue
    missing+=("$name")
    say "needs $name ($reason)"
  done <<<"$wanted"
  [ ${#missing[@]} -eq 0 ] && return 0

  command -v apt-get >/dev/null || { say "apt-get is missing: install the packages above by hand"; return 1; }
  local root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { say "run as root or install sudo"; return 1; }
    root=(sudo)
  fi
  say "installing ${#missing[@]} package(s) with apt-get"
  local apt=("${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0)
  "${apt[@]}" update >&2
  "${apt[@]}" install -y --no-install-recommends "${missing[@]}" >&2
}

# build PRESET [TARGET...]: configures once (Ninja re-configures by itself later) and builds quietly.
build() {
  local preset=$1 dir=build/$1 log
  shift
  if [ ! -f "$dir/build.ninja" ]; then
    say "configuring $dir"
    mkdir -p "$dir"
    cmake --preset "$preset" >"$dir/configure.log" 2>&1 || { cat "$dir/configure.log" >&2; return 1; }
  fi
  if [ -t 2 ]; then
    ninja -C "$dir" "$@" >&2
  else
    log=$(ninja -C "$dir" "$@" 2>&1) || { printf '%s\n' "$log" >&2; return 1; }
  fi
}
