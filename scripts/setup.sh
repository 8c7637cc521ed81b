# Shared by ./run, ./check and .ci/run: installs missing packages, configures, builds.
# Sourced, not run; expects the working directory to be the project's root.

readonly kPackageList=scripts/packages.txt
kOsRelease=/etc/os-release

say() { printf 'kolum: %s\n' "$*" >&2; }

# CMake, the linker and search paths fail in folders with such names, with misleading messages.
require_buildable_folder() {
  local odd=$'";\\#$`,:\n' brackets=${PWD//[^\[\]]/}
  while [[ $brackets == *"[]"* ]]; do brackets=${brackets//"[]"/}; done
  if [ -n "$brackets" ] || [[ $PWD == *["$odd"]* ]]; then
    say "cannot build in a folder with \" ; \\ # \$ \` , : or an unpaired [ or ] in its name: $PWD"
    return 1
  fi
}
require_buildable_folder

# The number of this Debian release. Testing and sid have no number and count as newer than all
# others.
debian_release() {
  local VERSION_ID=
  [ ! -r "$kOsRelease" ] || . "$kOsRelease"
  printf '%s' "${VERSION_ID:-9999}"
}

# wanted_packages GROUP...: "package reason" lines for this Debian release.
wanted_packages() {
  awk -v release="$(debian_release)" -v groups=" $* " '
    /^#/ || NF == 0 { next }
    index(groups, " " $3 " ") && ($2 == "*" || $2 == release || ($2 ~ /[+]$/ && release + 0 >= $2 + 0)) {
      reason = $4; for (i = 5; i <= NF; i++) reason = reason " " $i
      print $1, reason
    }' "$kPackageList"
}

# ensure_packages GROUP...: installs missing packages and says which, and why they are needed.
ensure_packages() {
  local wanted missing=() name reason installed
  wanted=$(wanted_packages "$@")
  # dpkg-query fails if it does not know one of them, but still lists the others.
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
  local root=() variable environment=(DEBIAN_FRONTEND=noninteractive)
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { say "run as root or install sudo"; return 1; }
    root=(sudo)
  fi
  # sudo drops the caller's proxies.
  for variable in http_proxy https_proxy no_proxy; do
    [ -z "${!variable:-}" ] || environment+=("$variable=${!variable}")
  done
  say "installing ${#missing[@]} package(s) with apt-get"
  local apt=("${root[@]}" env "${environment[@]}" apt-get -qq -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=300)
  "${apt[@]}" update >&2
  "${apt[@]}" install -y --no-install-recommends "${missing[@]}" >&2
}

# is_configured FOLDER: whether it is configured for these sources; a checkout may have been moved.
is_configured() {
  [ -f "$1/build.ninja" ] && [ "$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$1/CMakeCache.txt" 2>/dev/null)" -ef . ]
}

# configure PRESET [OPTION...]: OPTIONs are passed to cmake. On failure the earlier configuration is
# removed, so that nothing can be built with it.
configure() {
  local preset=$1 dir=build/$1
  say "configuring $dir"
  mkdir -p "$dir"
  is_configured "$dir" || set -- "$@" --fresh
  if cmake --preset "$@" >"$dir/configure.log" 2>&1; then
    say "building $dir, which takes some minutes the first time"
    return 0
  fi
  rm -f "$dir/build.ninja"
  cat "$dir/configure.log" >&2
  return 1
}

# build PRESET [TARGET...]: configures if necessary (later, Ninja reconfigures by itself) and builds
# quietly.
build() {
  local preset=$1 dir=build/$1 log
  shift
  is_configured "$dir" || configure "$preset"
  if [ -t 2 ]; then
    ninja -C "$dir" "$@" >&2
  else
    log=$(ninja -C "$dir" "$@" 2>&1) || { printf '%s\n' "$log" >&2; return 1; }
  fi
}

# build_product: the release build of everything that gets installed, without the tests and the
# packages that they need. If tests are configured already, they stay.
build_product() {
  is_configured build/release || configure release -DKOLUM_BUILD_TESTS=OFF
  build release kolum-product
}

# build_tests: the release build with its tests, reusing what build_product has built.
build_tests() {
  if is_configured build/release && ! grep -q '^KOLUM_BUILD_TESTS:[A-Z]*=ON$' build/release/CMakeCache.txt; then
    configure release
  fi
  build release
}
