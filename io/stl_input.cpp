// The door of the STL reader: text first, then binary.
#include "io/stl_input.h"

#include "core/result.h"
#include "io/bytes/file.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using stl_reader = int (*)(const io::stl_source&, const io::stl_mesh&);

/// Reads the file in one form; on failure all outputs are empty.
int read_or_clear(stl_reader read, const io::stl_source& input, const io::stl_mesh& mesh) {
  const int result = read(input, mesh);
  if (result < 0) {
    mesh.coords.clear_hard();
    mesh.connectivity.clear_hard();
    mesh.nbr_triangles = 0;
  }
  return result;
}

}  // namespace

/// A stream that cannot be read twice, such as a pipe, serves both forms as long as its first block is at hand.
int STL_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
              std::uint64_t& nbr_triangles) {
  coords.clear_hard();  // other views of the old blocks keep their values
  connectivity.clear_hard();
  nbr_triangles = 0;
  const io::file file(filename, io::access::read);
  if (!file.is_open()) return -1;
  io::block_reader blocks(file.stream());
  if (!blocks.prepare()) return out_of_memory;
  const io::stl_source input{blocks, file.size()};
  const io::stl_mesh mesh{coords, connectivity, nbr_triangles};
  const int result = read_or_clear(io::read_stl_text, input, mesh);
  if (result >= 0 || result <= out_of_memory || !blocks.rewind()) return result;
  return read_or_clear(io::read_stl_binary, input, mesh);
}

int STL_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity) {
  std::uint64_t nbr_triangles = 0;
  return STL_input(filename, coords, connectivity, nbr_triangles);
}

}  // namespace qel::gridwork
