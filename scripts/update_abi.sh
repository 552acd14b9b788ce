#!/usr/bin/env bash
# Writes packaging/abi/libqel_gridwork.abi, the baseline of exported symbols and of the types behind them, anew.
# With --check, holds a built library against it instead: 0 when nothing differs, 77 when that cannot be told here.
# usage: update_abi.sh [--check LIBRARY]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

baseline=packaging/abi/libqel_gridwork.abi

describe() { # LIBRARY OUT
  abidw --headers-dir include --drop-private-types --exported-interfaces-only --no-architecture --no-elf-needed \
    --no-comp-dir-path --no-corpus-path --no-show-locs --no-parameter-names --type-id-style hash "$1" |
    sed "s|path='$PWD/|path='|" > "$2"
}

skip() {
  echo "skipped: $1"
  exit 77
}

if [[ ${1-} == --check ]]; then
  library=$2
  command -v abidw abidiff > /dev/null || skip "abigail-tools is not installed"
  [[ $(uname -sm) == "Linux x86_64" ]] || skip "the baseline is one of Linux on x86-64"
  readelf --sections --wide "$library" | grep -q '\.debug_info' || skip "$library has no debug information"
  current=$(mktemp)
  trap 'rm -f "$current"' EXIT
  describe "$library" "$current"
  abidiff "$baseline" "$current" && exit
  echo "The ABI differs from $baseline. Where that is intended: read docs/abi.md, then run scripts/update_abi.sh."
  exit 1
fi

need_packages g++ cmake ninja-build abigail-tools
cmake --preset release > /dev/null
cmake --build --preset release --target qel_gridwork
describe build/release/libqel_gridwork.so "$baseline.new"
if [[ -f $baseline ]]; then abidiff "$baseline" "$baseline.new" || true; fi
mv "$baseline.new" "$baseline"
