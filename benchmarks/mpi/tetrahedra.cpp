// Tetrahedra that come with nodes of their own, as solvers write them: what merging and topology cost as they lie, at random
// on the ranks, and after each partition.
#include <cstdlib>
#include <random>

#include "measure.h"
#include "qel/gridwork.h"
#include "qel/gridwork/mpi.h"

namespace {

using namespace qel;
namespace mpi = gridwork::mpi;
using gridwork::ELT_TETRA4;

constexpr unsigned tetrahedra_of_cube[6][4] = {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6},
                                               {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}};
constexpr unsigned corners_of_cube[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                            {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};

int size_of_world() {
  int size = 1;
  MPI_Comm_size(MPI_COMM_WORLD, &size);
  return size;
}

void check(int code) {
  if (code != 0) std::abort();
}

/// This rank's share of the cells of a cube, four nodes a tetrahedron.
mpi::mesh_part make_soup(std::uint64_t side) {
  const auto ranks = static_cast<std::uint64_t>(size_of_world()), rank = static_cast<std::uint64_t>(rank_of_world());
  const std::uint64_t cells = side * side * side, begin = cells * rank / ranks, end = cells * (rank + 1) / ranks;
  dense2D<double> coords(3, 24 * (end - begin));
  dense2D<unsigned> connectivity(4, 6 * (end - begin));
  unsigned node = 0;
  for (std::uint64_t cell = begin; cell < end; ++cell) {
    const std::uint64_t places[] = {cell % side, cell / side % side, cell / (side * side)};
    for (const auto& tetrahedron : tetrahedra_of_cube) {
      for (const unsigned corner : tetrahedron) {
        for (unsigned a = 0; a < 3; ++a) {
          coords(a, node) = 0.1 * static_cast<double>(places[a] + corners_of_cube[corner][a]);
        }
        connectivity.data()[node] = node;
        ++node;
      }
    }
  }
  mpi::mesh_part soup;
  check(mpi::make_part(MPI_COMM_WORLD, coords, connectivity, soup));
  return soup;
}

void scatter(mpi::mesh_part& part) {
  std::mt19937 random(static_cast<unsigned>(rank_of_world()));
  dense1D<int> targets(part.element_IDs.size());
  for (int& target : targets) target = static_cast<int>(random() % static_cast<unsigned>(size_of_world()));
  check(mpi::migrate(MPI_COMM_WORLD, part, targets));
}

constexpr unsigned turns = 2;

/// Bytes that ranks may send for each of 0.3 M tetrahedra: what they took when this was written, and a tenth more.
struct limit {
  int ranks;
  double merging, neighbors;                      // as the elements lie
  double merging_at_random, neighbors_at_random;  // on the ranks
  double neighbors_after_curve;
};
constexpr std::uint64_t side_of_limits = 36;
constexpr limit limits[] = {{1, 0, 0, 0, 0, 0},
                            {2, 0.22, 0.49, 8.6, 91, 1.3},
                            {4, 0.8, 1.5, 25, 150, 2.2},
                            {7, 2.3, 3, 48, 209, 4.7},
                            {16, 5.5, 7.6, 93, 372, 4.2}};

limit limit_of(std::uint64_t side) {
  for (const limit& l : limits) {
    if (l.ranks == size_of_world() && side == side_of_limits) return l;
  }
  return {size_of_world(), HUGE_VAL, HUGE_VAL, HUGE_VAL, HUGE_VAL, HUGE_VAL};
}

bool report_merge(const char* name, const mpi::mesh_part& soup, double elements, mpi::mesh_part& merged, double most) {
  const cost c = measure(
      [&] {
        merged = soup;
        std::uint64_t count = 0;
        return mpi::merge(MPI_COMM_WORLD, merged, 0, count);
      },
      turns);
  return report(name, c, elements, most);
}

bool report_neighbors(const char* name, const mpi::mesh_part& part, double elements, dense2D<std::uint64_t>& neighbors,
                      double most = HUGE_VAL) {
  const cost c = measure(
      [&] {
        mpi::node_sharing sharing;
        const int code = mpi::share_nodes(MPI_COMM_WORLD, part, sharing);
        return code < 0 ? code : mpi::get_neighbors(MPI_COMM_WORLD, part, ELT_TETRA4, sharing, false, neighbors);
      },
      turns);
  return report(name, c, elements, most);
}

}  // namespace

bool run_tetrahedra(double elements) {
  const auto side = static_cast<std::uint64_t>(std::cbrt(elements / 6));
  elements = 6 * static_cast<double>(side * side * side);
  mpi::mesh_part soup = make_soup(side), part;
  dense2D<std::uint64_t> neighbors;
  dense1D<int> targets;
  if (rank_of_world() == 0) std::printf("tetrahedra\n");
  const limit most = limit_of(side);
  bool passes = report_merge("  merge", soup, elements, part, most.merging);
  passes &= report_neighbors("  share_nodes, get_neighbors", part, elements, neighbors, most.neighbors);
  if (size_of_world() == 1) return passes;
  scatter(soup);
  passes &= report_merge("  merge, at random", soup, elements, part, most.merging_at_random);
  passes &= report_neighbors("  get_neighbors, at random", part, elements, neighbors, most.neighbors_at_random);
  mpi::mesh_part by_curve = part, by_graph = part;
  check(mpi::partition_by_curve(MPI_COMM_WORLD, part, size_of_world(), targets));
  check(mpi::migrate(MPI_COMM_WORLD, by_curve, targets));
  const int code = mpi::partition_graph(MPI_COMM_WORLD, part, neighbors, size_of_world(), targets);
  passes &= report_neighbors("  get_neighbors, after curve", by_curve, elements, neighbors, most.neighbors_after_curve);
  if (code < 0) return passes;
  check(mpi::migrate(MPI_COMM_WORLD, by_graph, targets));
  report_neighbors("  get_neighbors, after PT-Scotch", by_graph, elements, neighbors);
  return passes;
}
