// Wall time, CPU time, bytes and memory of work that all ranks do together.
#ifndef QEL_BENCHMARKS_MPI_MEASURE_H
#define QEL_BENCHMARKS_MPI_MEASURE_H

#include <mpi.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>

/// Bytes that this rank sent to others; the library's calls of MPI are counted (measure.cpp).
std::uint64_t bytes_sent();

double cpu_seconds();

int rank_of_world();

/// Wall time, CPU of the busiest rank, bytes of all ranks.
struct cost {
  double wall, cpu, bytes;
};

template <class Work>
cost measure_once(Work work) {
  MPI_Barrier(MPI_COMM_WORLD);
  const std::uint64_t before = bytes_sent();
  const double wall = MPI_Wtime(), cpu = cpu_seconds();
  if (const int code = work(); code != 0) {
    std::printf("failed: %d\n", code);
    MPI_Abort(MPI_COMM_WORLD, 1);
  }
  double spent[] = {0, cpu_seconds() - cpu};
  spent[0] = MPI_Wtime() - wall;
  MPI_Allreduce(MPI_IN_PLACE, spent, 2, MPI_DOUBLE, MPI_MAX, MPI_COMM_WORLD);
  std::uint64_t bytes = bytes_sent() - before;
  MPI_Allreduce(MPI_IN_PLACE, &bytes, 1, MPI_UINT64_T, MPI_SUM, MPI_COMM_WORLD);
  return {spent[0], spent[1], static_cast<double>(bytes)};
}

/// The least of several turns.
template <class Work>
cost measure(Work work, unsigned turns = 5) {
  cost least{HUGE_VAL, HUGE_VAL, 0};
  for (unsigned turn = 0; turn < turns; ++turn) {
    const cost c = measure_once(work);
    least = {std::min(least.wall, c.wall), std::min(least.cpu, c.cpu), c.bytes};
  }
  return least;
}

/// Prints what was measured, of so many elements; false when ranks sent more than `most` bytes for each.
bool report(const char* name, const cost& c, double elements, double most = HUGE_VAL);

/// Lets the process keep memory that is freed, or give it back, where the C library can be told so. By itself it keeps some,
/// on some ranks more than on others, by what these freed before; and new pages cost a tenth of the time and more.
void keep_memory(bool keep);

/// The most bytes that any rank held while work was done, beside what it held before; not above 0 where the system does not
/// tell.
double peak_memory(const std::function<void()>& work);

/// Tetrahedra of a cube, about so many: merged, at random on the ranks and after each partition. False when ranks sent too
/// many bytes.
bool run_tetrahedra(double elements);

#endif
