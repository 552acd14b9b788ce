#!/usr/bin/env bash
# Compiles every public header alone as C++17, under each compiler that is there.
# usage: header_test.sh INCLUDE_DIR HEADER...
set -euo pipefail

include_dir=$1
shift
flags=(-std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Werror -I "$include_dir")

failures=0
for compiler in g++ clang++; do
  command -v "$compiler" > /dev/null || { echo "$compiler is not installed: skipped"; continue; }
  for header in "$@"; do
    [[ $header = /* ]] || header=$include_dir/../$header
    # Included rather than compiled itself, so that a missing include guard shows up as well.
    if ! printf '#include "%s"\n#include "%s"\n' "$header" "$header" | "$compiler" "${flags[@]}" -x c++ -; then
      echo "$compiler: $header does not compile alone"
      failures=$((failures + 1))
    fi
  done
done
exit $((failures > 0))
