#!/usr/bin/env bash
# Compiles every public header alone as C++17, and all together as C++20 and C++23, under each compiler that is there.
# usage: header_test.sh INCLUDE_DIR HEADER...
set -euo pipefail

include_dir=$1
shift
flags=(-fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Werror -I "$include_dir" -x c++)

headers=()
for header in "$@"; do
  [[ $header = /* ]] || header=$include_dir/../$header
  headers+=("$header")
done

# Included rather than compiled themselves, and twice, so that a missing include guard shows up as well.
including() { printf '#include "%s"\n' "$@" "$@"; }

failures=0
expect() {  # COMPILER STANDARD HEADER...
  local compiler=$1 standard=$2
  shift 2
  if including "$@" | "$compiler" "-std=$standard" "${flags[@]}" -; then return; fi
  echo "$compiler: does not compile as $standard: $*"
  failures=$((failures + 1))
}

for compiler in g++ clang++ clang++-19; do
  command -v "$compiler" > /dev/null || { echo "$compiler is not installed: skipped"; continue; }
  for header in "${headers[@]}"; do expect "$compiler" c++17 "$header"; done
  for standard in c++20 c++2b; do expect "$compiler" "$standard" "${headers[@]}"; done
done
exit $((failures > 0))
