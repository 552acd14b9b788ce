#!/usr/bin/env bash
# Builds the consumer against an installation, and runs it on two ranks.
# usage: run.sh PREFIX COMPILER MPIEXEC [FLAGS ...]
set -euo pipefail
prefix=$1 compiler=$2
shift 2
consumer=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake -S "$consumer" -B "$work" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" > "$work/cmake.log"
cmake --build "$work" >> "$work/cmake.log"
"$@" "$work/consumer"
