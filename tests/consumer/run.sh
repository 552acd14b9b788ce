#!/usr/bin/env bash
# Uses the library in the ways a user does: installed, as a source tree, and fetched; shared and static.
# usage: run.sh SOURCE_DIR BUILD_DIR LIBDIR COMPILER
set -euo pipefail

source_dir=$1 build_dir=$2 libdir=$3 compiler=$4
consumer=$source_dir/tests/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

echo "--- installing"
cmake --install "$build_dir" --prefix "$work/installed" > install.log
mv installed prefix # nothing may depend on where it was installed
"$consumer/installed.sh" "$work/prefix" "$libdir" "$compiler"

echo "--- add_subdirectory"
as_part=(-DQEL_GRIDWORK_SOURCE="$source_dir" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_INSTALL_LIBDIR="$libdir")
cmake -S "$consumer" -B sub "${as_part[@]}" > sub.log

echo "--- FetchContent, static"
cmake -S "$consumer" -B fetched "${as_part[@]}" -DFETCH=ON -DBUILD_SHARED_LIBS=OFF > fetched.log
cmake --build fetched -j "$(nproc)" >> fetched.log
fetched/consumer

echo "--- installing the static library"
cmake --install fetched --prefix "$work/static" > install.log
"$consumer/installed.sh" "$work/static" "$libdir" "$compiler"
