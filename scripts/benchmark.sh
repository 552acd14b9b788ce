#!/usr/bin/env bash
# Measures the library beside its peers and prints the ratios of CPU time: median of 5 runs, warm.
# Usage: scripts/benchmark.sh [benchmark ...]   for example: scripts/benchmark.sh ids search stl
# Run it on an otherwise idle machine. Peers that are not installed are left out.
# The name "scale", which is not among the usual ones, stands for meshes of up to 100 million elements: it takes minutes,
# 10 GB of memory and 5 GB of /dev/shm. "tool" sets the command-line tool beside other programs.
set -euo pipefail
cd "$(dirname "$0")/.."

names=("$@")
[ ${#names[@]} -gt 0 ] || names=(stl ids search topology quality metrics gradation transforms formats tool)
cmake --preset release -DQEL_GRIDWORK_BUILD_BENCHMARKS=ON >/dev/null
cmake --build --preset release -j2
for name in "${names[@]}"; do
  echo
  echo "== $name"
  if [ "$name" = scale ]; then
    for side in 707 3162 7071; do build/release/benchmarks/scale stl "$side"; done
    for cells in 55 203; do build/release/benchmarks/scale tetra "$cells"; done
    for cells in 55 118; do build/release/benchmarks/scale gradation "$cells"; done
    continue
  fi
  if [ "$name" = tool ]; then
    benchmarks/tool.py build/release/editions/cli/gridwork
    continue
  fi
  "build/release/benchmarks/${name}_benchmark" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
    --benchmark_out_format=json --benchmark_out="build/${name}_benchmark.json" >/dev/null
  python3 scripts/benchmark_ratios.py "build/${name}_benchmark.json"
done
