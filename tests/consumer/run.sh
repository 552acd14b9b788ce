#!/usr/bin/env bash
# Uses the library in the ways a user does: installed, through CMake and through pkg-config, and as a source tree.
# usage: run.sh CMAKE SOURCE_DIR BUILD_DIR LIBDIR COMPILER
set -euo pipefail

cmake=$1 source_dir=$2 build_dir=$3 libdir=$4 compiler=$5
consumer=$source_dir/tests/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

echo "--- installing"
"$cmake" --install "$build_dir" --prefix "$work/installed" > install.log
mv installed prefix # nothing may depend on where it was installed

echo "--- find_package"
"$cmake" -S "$consumer" -B cmake -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_CXX_COMPILER="$compiler" > cmake.log
"$cmake" --build cmake >> cmake.log
cmake/consumer

echo "--- pkg-config"
export PKG_CONFIG_PATH=$work/prefix/$libdir/pkgconfig
pkg-config --atleast-version=4.8 qel_gridwork
read -ra flags <<< "$(pkg-config --cflags --libs qel_gridwork)"
"$compiler" -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Werror "$consumer/main.cpp" "${flags[@]}" -o pkg
LD_LIBRARY_PATH=$work/prefix/$libdir ./pkg

echo "--- add_subdirectory"
"$cmake" -S "$consumer" -B sub -DQEL_GRIDWORK_SOURCE="$source_dir" -DCMAKE_CXX_COMPILER="$compiler" > sub.log
