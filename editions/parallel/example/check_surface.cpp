// Reads a large STL file on all ranks, spreads it well, checks it, and writes the parts for a look at them.
// usage: mpiexec -n RANKS check_surface FILE.stl [PARTS]
//   PARTS: each rank writes its triangles, those around them and its free edges to PARTS.RANK.vtk, PARTS.RANK.ghosts.vtk and
//   PARTS.RANK.edges.vtk
#include <mpi.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "qel/gridwork.h"
#include "qel/gridwork/mpi.h"

namespace {

using namespace qel;
using gridwork::ELT_TRIA3;
namespace mpi = gridwork::mpi;

/// All ranks have the same code, so all of them leave at the same place.
struct failure {
  const char* step;
  int code;
};

void check(const char* step, int code) {
  if (code != 0) throw failure{step, code};
}

/// Boundaries come by the IDs of their nodes, all of which the part has.
dense2D<unsigned> indices_of(const mpi::mesh_part& part, const dense2D<std::uint64_t>& boundaries) {
  dense2D<unsigned> indices(boundaries.rows(), boundaries.cols());
  for (std::uint64_t i = 0; i < boundaries.size(); ++i) {
    const auto* node = std::lower_bound(part.node_IDs.begin(), part.node_IDs.end(), boundaries.data()[i]);
    indices.data()[i] = static_cast<unsigned>(node - part.node_IDs.begin());
  }
  return indices;
}

void inspect(MPI_Comm comm, const char* filename, const char* parts) {
  int rank = 0, ranks = 1;
  MPI_Comm_rank(comm, &rank);
  MPI_Comm_size(comm, &ranks);

  mpi::mesh_part part;
  dense1D<int> targets;
  check("reading", mpi::STL_input(comm, filename, part));
  check("partition", mpi::partition_by_curve(comm, part, ranks, targets));
  check("migration", mpi::migrate(comm, part, targets));

  mpi::node_sharing sharing;
  dense2D<std::uint64_t> neighbors, boundaries;
  dense1D<std::uint64_t> slots, colors;
  std::uint64_t solids = 0, worst = 0;
  double quality = 0;
  check("sharing", mpi::share_nodes(comm, part, sharing));
  check("neighbours", mpi::get_neighbors(comm, part, ELT_TRIA3, sharing, false, neighbors));
  check("boundaries", mpi::get_mesh_boundaries(part, ELT_TRIA3, neighbors, boundaries, slots));
  check("connected parts", mpi::get_subdomains(comm, part, ELT_TRIA3, sharing, neighbors, colors, solids));
  check("quality", mpi::min_quality(comm, part, ELT_TRIA3, quality, worst));

  std::uint64_t counts[] = {part.element_IDs.size(), slots.size()};
  MPI_Allreduce(MPI_IN_PLACE, counts, 2, MPI_UINT64_T, MPI_SUM, comm);
  if (rank == 0) {
    std::printf("%llu triangles in %llu connected parts, %llu free edges\n", static_cast<unsigned long long>(counts[0]),
                static_cast<unsigned long long>(solids), static_cast<unsigned long long>(counts[1]));
    std::printf("worst quality %g, of triangle %llu\n", quality, static_cast<unsigned long long>(worst));
  }
  if (parts == nullptr) return;
  mpi::mesh_part ghosts;
  dense1D<int> owners;
  check("ghosts", mpi::get_ghosts(comm, part, sharing, ghosts, owners));
  const std::string name = parts + ("." + std::to_string(rank));
  gridwork::vtk_output((name + ".vtk").c_str(), part.coords, part.connectivity, ELT_TRIA3);
  gridwork::vtk_output((name + ".ghosts.vtk").c_str(), ghosts.coords, ghosts.connectivity, ELT_TRIA3);
  gridwork::vtk_output((name + ".edges.vtk").c_str(), part.coords, indices_of(part, boundaries), gridwork::ELT_EDGE2);
}

}  // namespace

int main(int argc, char** argv) {
  MPI_Init(&argc, &argv);
  int result = argc > 1 ? 0 : 2;
  try {
    if (argc > 1) inspect(MPI_COMM_WORLD, argv[1], argc > 2 ? argv[2] : nullptr);
  } catch (const failure& f) {
    std::printf("%s: %d\n", f.step, f.code);
    result = 1;
  }
  MPI_Finalize();
  return result;
}
