#!/usr/bin/env bash
# Installs the library and its component for MPI, and builds the consumer against them.
# usage: installed.sh BUILD_DIR COMPILER MPIEXEC [FLAGS ...]
set -euo pipefail
build=$1
shift
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
for component in runtime development mpi_runtime mpi_development; do
  cmake --install "$build" --prefix "$prefix" --component "qel_gridwork_$component" > /dev/null
done
"$(dirname "${BASH_SOURCE[0]}")/run.sh" "$prefix" "$@"
