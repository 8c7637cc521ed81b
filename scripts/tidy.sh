#!/usr/bin/env bash
# tidy.sh BUILD_FOLDER: clang-tidy over the library, the host library and the tools.
set -euo pipefail
git ls-files 'src/*.cpp' 'scan/*.cpp' 'host/*.cpp' 'tools/*.cpp' |
  xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p "$1" --extra-arg=-Wno-unknown-warning-option
