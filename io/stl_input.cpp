// The door of the STL reader: text first, then binary.
#include "io/stl_input.h"

#include "core/result.h"
#include "qel/gridwork/io.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using stl_reader = int (*)(const io::file&, dense2D<double>&, dense2D<unsigned>&);

/// Reads the file in one form; on failure both outputs are empty.
int read_form(stl_reader read, const io::file& input, dense2D<double>& coords, dense2D<unsigned>& connectivity) {
  const int result = read(input, coords, connectivity);
  if (result < 0) {
    coords.clear_hard();
    connectivity.clear_hard();
  }
  return result;
}

}  // namespace

int STL_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity) {
  coords.clear_hard();  // other views of the old blocks keep their values
  connectivity.clear_hard();
  int result = -1;
  {
    const io::file text(filename, "rt");
    if (text.is_open()) result = read_form(io::read_stl_text, text, coords, connectivity);
  }
  if (result >= 0 || result <= out_of_memory) return result;
  const io::file binary(filename, "rb");
  return binary.is_open() ? read_form(io::read_stl_binary, binary, coords, connectivity) : result;
}

}  // namespace qel::gridwork
