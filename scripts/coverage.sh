#!/usr/bin/env bash
# The lines and branches of the library that its tests reach: per file, then per subsystem and in total. Branches that
# only an exception takes, and assertions, are not counted. Build folder: $BUILD, or build/coverage.
# usage: coverage.sh [OPTION OF GCOVR]...   for example --html-details build/coverage/report.html
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages g++ cmake ninja-build libgtest-dev gcovr
build=${BUILD:-build/coverage}

cmake --preset coverage -B "$build" > /dev/null
cmake --build "$build" -j2
find "$build" -name '*.gcda' -delete # of earlier runs
# Without threads_test, whose threads would spoil each other's counters; what it calls, other tests call, too.
find "$build/tests" -maxdepth 1 \( -name '*_test' -o -name 'replay_*' \) ! -name threads_test -print0 |
  xargs -0 -n 1 -P 2 sh -c '"$0" --gtest_brief=1 || exit 255'

echo "== coverage"
gcovr -r . "$build/tests" "$build/CMakeFiles" --exclude-throw-branches --exclude-unreachable-branches -j2 \
  --exclude-branches-by-pattern '.*QEL_GRIDWORK_CHECK.*' \
  -f '(core|ids|transforms|search|topology|quality|metrics|io|include)/' --json "$build/coverage.json"
gcovr -r . -a "$build/coverage.json" "$@"
gcovr -r . -a "$build/coverage.json" --branches
for subsystem in core ids transforms search topology quality metrics io include ""; do
  printf '%-12s' "${subsystem:-total}"
  gcovr -r . -a "$build/coverage.json" -f "$subsystem.*" --print-summary -o "$build/report.txt" |
    sed -nE 's/^(lines|branches): ([0-9.]+%).*/\1 \2/p' | paste -sd' '
done
