#!/usr/bin/env bash
# cppcheck.sh: cppcheck over the library, the host library and the tools.
#
# Suppressed: readdirCalled, because readdir() is safe on a stream that no other thread uses and
# readdir_r() is deprecated; cppcheckError, which means that cppcheck itself gave up on an
# expression; missing includes, because the headers of other projects are not checked.
set -euo pipefail
cppcheck --quiet --error-exitcode=1 -j "$(nproc)" --std=c++20 --language=c++ \
  --enable=warning,performance,portability --inline-suppr --library=posix \
  --suppress=readdirCalled --suppress=cppcheckError --suppress=missingInclude \
  --suppress=missingIncludeSystem -I include -I src -I . src scan host tools
