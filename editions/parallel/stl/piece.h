// A rank's piece of an STL file.
#ifndef QEL_GRIDWORK_PARALLEL_STL_PIECE_H
#define QEL_GRIDWORK_PARALLEL_STL_PIECE_H

#include <cstdint>

#include "communication/team.h"
#include "io/triangle_soup.h"
#include "qel/gridwork/mpi.h"

namespace qel::gridwork::detail::parallel {

constexpr int not_open = -1;

/// Triangles whose corners are merged where they coincide, in each block of the file for itself.
struct piece {
  std::uint64_t first_triangle = 0;  // in the file
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  io::triangle_soup triangles{coords, connectivity};
};

/// Collective. The code of all ranks, that of the serial reader of this form.
/// @{
int read_text(team& ranks, const char* filename, piece& read);
int read_binary(team& ranks, const char* filename, piece& read);
/// @}

/// Collective. Makes the pieces of all ranks parts of the mesh of their file.
int join_pieces(team& ranks, piece& read, mpi::mesh_part& part);

}  // namespace qel::gridwork::detail::parallel

#endif
