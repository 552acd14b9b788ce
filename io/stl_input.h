// The two forms of STL files.
#ifndef QEL_GRIDWORK_IO_STL_INPUT_H
#define QEL_GRIDWORK_IO_STL_INPUT_H

#include "io/bytes/block_reader.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

/// A file from its first byte on, in one form or the other; a size of 0 is not known.
struct stl_source {
  block_reader& blocks;
  std::uint64_t size;
};

/// What is read of a file: a mesh, and how many triangles it was made of.
struct stl_mesh {
  dense2D<double>& coords;
  dense2D<unsigned>& connectivity;
  std::uint64_t& nbr_triangles;
};

/// Read into empty outputs. Results as those of STL_input(); on a negative one the outputs hold anything.
/// @{
int read_stl_text(const stl_source& input, const stl_mesh& mesh);
int read_stl_binary(const stl_source& input, const stl_mesh& mesh);
/// @}

}  // namespace qel::gridwork::detail::io

#endif
