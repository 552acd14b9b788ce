#!/usr/bin/env bash
# Builds and runs the consumer against an installation, through CMake and through pkg-config.
# usage: installed.sh PREFIX LIBDIR COMPILER
set -euo pipefail

prefix=$1 libdir=$2 compiler=$3
consumer=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

echo "--- find_package"
cmake -S "$consumer" -B cmake -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" > cmake.log
cmake --build cmake >> cmake.log
cmake/consumer

echo "--- pkg-config"
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
pkg-config --atleast-version=4.8 qel_gridwork
read -ra flags <<< "$(pkg-config --cflags --libs qel_gridwork)"
"$compiler" -std=c++17 -Wall -Wextra -Wpedantic -Wconversion -Werror "$consumer/main.cpp" "${flags[@]}" -o pkg
LD_LIBRARY_PATH=$prefix/$libdir ./pkg | grep "^gridwork $(pkg-config --modversion qel_gridwork):"
