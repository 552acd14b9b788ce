// A program of a user's own: each rank has a triangle, and all of them are found joined.
#include <qel/gridwork/mpi.h>

#include <cstdio>

int main(int argc, char** argv) {
  using namespace qel;
  namespace mpi = gridwork::mpi;
  MPI_Init(&argc, &argv);
  int rank = 0;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  const double x = rank;
  const dense2D<double> coords(3, 3, {x, 0, 0, x + 1, 0, 0, x + 1, 1, 0});
  const dense2D<unsigned> triangle(3, 1, {0, 1, 2});
  mpi::mesh_part part;
  std::uint64_t merged = 0;
  const int made = mpi::make_part(MPI_COMM_WORLD, coords, triangle, part);
  const int result = mpi::merge(MPI_COMM_WORLD, part, 0, merged);
  int ranks = 1;
  MPI_Comm_size(MPI_COMM_WORLD, &ranks);
  if (rank == 0) std::printf("results %d %d, %d nodes merged\n", made, result, static_cast<int>(merged));
  MPI_Finalize();
  return made == 0 && result == 0 && merged == static_cast<std::uint64_t>(ranks - 1) ? 0 : 1;
}
