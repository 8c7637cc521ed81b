#!/usr/bin/env bash
# cppcheck.sh: cppcheck over the library, the host library and the tools.
#
# Left out: readdirCalled, as readdir() is safe on a stream of one's own and readdir_r() is
# deprecated; cppcheckError, which tells that the tool itself gave up on an expression; the headers
# of other projects, which are not looked at.
set -euo pipefail
cppcheck --quiet --error-exitcode=1 -j "$(nproc)" --std=c++20 --language=c++ \
  --enable=warning,performance,portability --inline-suppr --library=posix \
  --suppress=readdirCalled --suppress=cppcheckError --suppress=missingInclude \
  --suppress=missingIncludeSystem -I include -I src src host tools
