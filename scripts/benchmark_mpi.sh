#!/usr/bin/env bash
# Measures meshes in parts on several numbers of ranks, then computes the model of 10^9 triangles on 1000 ranks. Fails when
# ranks send more bytes than they may; times are for information, and on more ranks than processors only CPU tells anything.
# Usage: scripts/benchmark_mpi.sh [--goals | --weak | RANKS ...]
#   --goals: one and two ranks, and what they should reach on two idle cores
#   --weak: as many triangles for each rank, however many these are
# Ranks keep the memory that they free; with QEL_FRESH_MEMORY=1 the system gives them new pages in each turn.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh
need_packages libopenmpi-dev openmpi-bin libbenchmark-dev

summary=benchmarks/mpi/model.py
counts=("$@")
of_each_rank=0
if [[ ${1-} == --goals ]]; then
  summary=benchmarks/mpi/goals.py
  counts=(1 2)
elif [[ ${1-} == --weak ]]; then
  summary=
  of_each_rank=259200
  counts=(1 2 4 7)
elif (($# == 0)); then
  counts=(1 2 4 7 16)
fi
cmake --preset release -DQEL_GRIDWORK_BUILD_BENCHMARKS=ON -DQEL_GRIDWORK_BUILD_MPI=ON > /dev/null
cmake --build --preset release -j2 --target mpi_benchmark
export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1
for ranks in "${counts[@]}"; do
  echo "== $ranks ranks"
  triangles=$((of_each_rank == 0 ? 1000000 : of_each_rank * ranks))
  OMPI_MCA_mpi_yield_when_idle=$((ranks > $(nproc))) \
    mpiexec.openmpi -n "$ranks" --oversubscribe build/release/benchmarks/mpi/mpi_benchmark "$triangles" || echo 'failed'
done | tee build/mpi_benchmark.txt
[[ -z $summary ]] || python3 "$summary" < build/mpi_benchmark.txt
! grep -Ex '.*too many bytes|failed' build/mpi_benchmark.txt
