// The door of the STL reader: text first, then binary.
#include "io/stl_input.h"

#include "core/result.h"
#include "io/bytes/file.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using stl_reader = int (*)(const io::stl_source&, dense2D<double>&, dense2D<unsigned>&);

/// Reads the file in one form; on failure both outputs are empty.
int read_or_clear(stl_reader read, const io::stl_source& input, dense2D<double>& coords,
                  dense2D<unsigned>& connectivity) {
  const int result = read(input, coords, connectivity);
  if (result < 0) {
    coords.clear_hard();
    connectivity.clear_hard();
  }
  return result;
}

}  // namespace

/// A stream that cannot be read twice, such as a pipe, serves both forms as long as its first block is at hand.
int STL_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity) {
  coords.clear_hard();  // other views of the old blocks keep their values
  connectivity.clear_hard();
  const io::file file(filename, io::access::read);
  if (!file.is_open()) return -1;
  io::block_reader blocks(file.stream());
  if (!blocks.prepare()) return out_of_memory;
  const io::stl_source input{blocks, file.size()};
  const int result = read_or_clear(io::read_stl_text, input, coords, connectivity);
  if (result >= 0 || result <= out_of_memory || !blocks.rewind()) return result;
  return read_or_clear(io::read_stl_binary, input, coords, connectivity);
}

}  // namespace qel::gridwork
