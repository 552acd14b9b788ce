#!/usr/bin/env bash
# Builds the library and its example, and shows the example at work on a file: on our own bearing bracket, or on the one
# that is named. The merged mesh goes to build/demo/ in every format that the library writes; the OBJ file is read again.
# usage: scripts/demo.sh [FILE.stl|FILE.obj]
set -euo pipefail
input=$(realpath -m -- "${1:-$(dirname "${BASH_SOURCE[0]}")/../examples/data/bracket.stl}")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

need_packages g++ cmake ninja-build

mkdir -p build/demo
if ! { cmake --preset release -B build/demo/release -DQEL_GRIDWORK_BUILD_TESTS=OFF &&
  cmake --build build/demo/release --target inspect_mesh; } > build/demo/build.log 2>&1; then
  cat build/demo/build.log >&2
  exit 1
fi

name=$(basename -- "$input")
merged="$PWD/build/demo/${name%.*}-merged"
build/demo/release/examples/inspect_mesh "$input" -o "$merged.stl"
for extension in obj vtk mesh nas bdf case; do
  build/demo/release/examples/inspect_mesh "$input" -o "$merged.$extension" | grep '^Written'
done
build/demo/release/examples/inspect_mesh "$merged.obj" -o "$merged-again.stl" | grep -E 'nodes kept|triangles kept|^Written'
