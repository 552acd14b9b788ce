#!/usr/bin/env bash
# Builds the library and its command-line tool, and shows the tool at work on a file: on our own bearing bracket, or on the
# one that is named. The merged mesh goes to build/demo/ in every format that the library writes.
# usage: scripts/demo.sh [FILE]
set -euo pipefail
input=$(realpath -m -- "${1:-$(dirname "${BASH_SOURCE[0]}")/../examples/data/bracket.stl}")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages g++ cmake ninja-build libcli11-dev

mkdir -p build/demo
if ! { cmake --preset release -B build/demo/release -DQEL_GRIDWORK_BUILD_TESTS=OFF -DQEL_GRIDWORK_BUILD_EXAMPLES=OFF \
    -DQEL_GRIDWORK_BUILD_TOOL=ON &&
  cmake --build build/demo/release --target gridwork; } > build/demo/build.log 2>&1; then
  cat build/demo/build.log >&2
  exit 1
fi

# Calls the tool, and shows how; findings are no failure of the demonstration.
show() {
  printf '\n$ gridwork %s\n' "$*"
  build/demo/release/editions/cli/gridwork "$@" || (($? == 1))
}

name=$(basename -- "$input")
merged="build/demo/${name%.*}-merged"
show info "$input"
show merge "$input" "$merged.stl" --force
show check "$merged.stl"
show quality "$merged.stl"
for extension in obj mesh vtk nas geo; do show convert "$merged.stl" "$merged.$extension" --force; done
