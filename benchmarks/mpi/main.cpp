// What meshes in parts cost: bytes that ranks send, which do not depend on the machine and pass or fail, CPU of the busiest
// rank and wall time, which tell what they can.
// usage: mpiexec -n P mpi_benchmark [--text] [TRIANGLES]
#include <mpi.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "measure.h"
#include "qel/gridwork.h"
#include "qel/gridwork/mpi.h"

namespace {

using namespace qel;
namespace mpi = gridwork::mpi;

/// The part's elements with nodes of their own, as a new mesh.
mpi::mesh_part soup_of(const mpi::mesh_part& part) {
  dense2D<double> coords(3, part.connectivity.size());
  dense2D<unsigned> triangles(3, part.connectivity.cols());
  for (unsigned c = 0; c < part.connectivity.size(); ++c) {
    std::copy_n(part.coords.column(part.connectivity.data()[c]), 3, coords.column(c));
    triangles.data()[c] = c;
  }
  mpi::mesh_part soup;
  if (mpi::make_part(MPI_COMM_WORLD, coords, triangles, soup) != 0) std::abort();
  return soup;
}

/// A wavy square, row by row.
void write_surface(const char* path, unsigned side, bool ascii) {
  dense2D<double> coords(3, std::uint64_t{side + 1} * (side + 1));
  dense2D<unsigned> triangles(3, 2 * std::uint64_t{side} * side);
  for (unsigned j = 0; j <= side; ++j) {
    for (unsigned i = 0; i <= side; ++i) {
      double* p = coords.column(std::uint64_t{j} * (side + 1) + i);
      p[0] = i, p[1] = j, p[2] = 30 * std::sin(0.01 * i) * std::cos(0.013 * j);
    }
  }
  std::uint64_t t = 0;
  for (unsigned j = 0; j < side; ++j) {
    for (unsigned i = 0; i < side; ++i) {
      const unsigned a = j * (side + 1) + i, b = a + 1, c = b + side + 1, d = c - 1;
      const unsigned nodes[] = {a, b, c, a, c, d};
      std::copy_n(nodes, 3, triangles.column(t++));
      std::copy_n(nodes + 3, 3, triangles.column(t++));
    }
  }
  if (gridwork::STL_output(path, coords, triangles, ascii) != 0) std::abort();
}

/// Bytes that reading, merging, and sharing or neighbours, may send for each of 1 M triangles: what they took when this was written,
/// and a tenth more. Of other files they are other ones, by where in a row a rank's piece begins.
struct limit {
  int ranks;
  double reading, merging, neighbors;
};
constexpr unsigned side_of_limits = 707;
constexpr limit limits[] = {
    {1, 0, 0, 0}, {2, 0.08, 0.095, 0.026}, {4, 0.245, 0.3, 0.075}, {7, 0.38, 0.41, 0.15}, {16, 1.2, 1.5, 0.38}};

bool run_surface(const char* path, unsigned side) {
  int size = 1;
  MPI_Comm_size(MPI_COMM_WORLD, &size);
  const auto triangles = 2.0 * side * side;
  limit most{size, HUGE_VAL, HUGE_VAL, HUGE_VAL};
  for (const limit& l : limits) {
    if (l.ranks == size && side == side_of_limits) most = l;
  }
  mpi::mesh_part part;
  mpi::node_sharing sharing;
  dense2D<std::uint64_t> neighbors;
  dense1D<int> targets;
  if (mpi::STL_input(MPI_COMM_WORLD, path, part) != 0) std::abort();
  const double held = peak_memory([path] {
    mpi::mesh_part another;
    mpi::STL_input(MPI_COMM_WORLD, path, another);
  });
  if (rank_of_world() == 0) {
    std::printf("%-34s %8.0f bytes a triangle of a rank\n", "memory of STL_input", held * size / triangles);
    std::printf("%-34s %10s %10s %9s\n", "", "wall", "CPU", "bytes each");
  }
  keep_memory(std::getenv("QEL_FRESH_MEMORY") == nullptr);
  bool passes = true;
  passes &=
      report("STL_input", measure([&] { return mpi::STL_input(MPI_COMM_WORLD, path, part); }), triangles, most.reading);
  const mpi::mesh_part soup = soup_of(part);
  passes &= report("merge", measure([&] {
                     mpi::mesh_part merged = soup;
                     std::uint64_t count = 0;
                     return mpi::merge(MPI_COMM_WORLD, merged, 0.01, count);
                   }),
                   triangles, most.merging);
  passes &= report("share_nodes", measure([&] { return mpi::share_nodes(MPI_COMM_WORLD, part, sharing); }), triangles,
                   most.neighbors);
  passes &= report("get_neighbors", measure([&] {
                     return mpi::get_neighbors(MPI_COMM_WORLD, part, gridwork::ELT_TRIA3, sharing, false, neighbors);
                   }),
                   triangles, most.neighbors);
  report("partition_by_curve", measure([&] { return mpi::partition_by_curve(MPI_COMM_WORLD, part, size, targets); }),
         triangles);
  report("migrate", measure([&] {
           mpi::mesh_part moved = part;
           return mpi::migrate(MPI_COMM_WORLD, moved, targets);
         }),
         triangles);
  return passes;
}

/// The serial reader, on one rank alone.
void run_serial(const char* path) {
  dense2D<double> coords;
  dense2D<unsigned> triangles;
  double least = HUGE_VAL;
  for (unsigned turn = 0; turn < 5; ++turn) {
    const double cpu = cpu_seconds();
    if (gridwork::STL_input(path, coords, triangles) != 0) std::abort();
    least = std::min(least, cpu_seconds() - cpu);
  }
  std::printf("%-34s %10s %8.3f s\n", "serial STL_input", "", least);
}

}  // namespace

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  const double wanted = argc > 1 ? std::atof(argv[argc - 1]) : 1e6;
  const auto side = static_cast<unsigned>(std::sqrt((wanted > 0 ? wanted : 1e6) / 2));
  int process = getpid();
  MPI_Bcast(&process, 1, MPI_INT, 0, MPI_COMM_WORLD);
  const std::string path = "/tmp/qel_mpi_benchmark_" + std::to_string(process) + ".stl";
  if (rank_of_world() == 0) {
    write_surface(path.c_str(), side, argc > 1 && std::strcmp(argv[1], "--text") == 0);
    run_serial(path.c_str());
  }
  bool passes = run_surface(path.c_str(), side);
  MPI_Barrier(MPI_COMM_WORLD);
  if (rank_of_world() == 0) std::remove(path.c_str());
  passes &= run_tetrahedra(wanted > 0 ? 0.3 * wanted : 3e5);
  MPI_Finalize();
  return passes ? 0 : 1;
}
