// The bytes are an STL file: each reader by itself, the dispatching one beside the literal one, then written and read.
#include "fuzz/input.h"
#include "io/stl_input.h"
#include "tests/stl_reference.h"

using namespace fuzz;

/// Whether no normal is a NaN, whose sign the literal writer leaves to the compiler.
static bool is_moderate(const dense2D<double>& coords) {
  return std::all_of(coords.data(), coords.data() + coords.size(), [](double x) { return std::abs(x) < 1e70; });
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const memory_file file, written, expected;
  file.assign(data, size);
  for (const auto read : {io::read_stl_text, io::read_stl_binary}) {
    dense2D<double> coords;
    dense2D<unsigned> triangles;
    const int code = read(io::file(file.path(), "rb"), coords, triangles);
    CHECK(code != 0 || check_IDs(triangles, ELT_TRIA3, static_cast<unsigned>(coords.cols())));
  }
  dense2D<double> coords(2, 2), literal_coords, back;
  dense2D<unsigned> triangles(2, 2), literal_triangles;
  const int code = STL_input(file.path(), coords, triangles);
  CHECK(code == stl_reference::STL_input(file.path(), literal_coords, literal_triangles));
  CHECK(triangles == literal_triangles && random_meshes::same_bits(coords, literal_coords));
  for (const bool text : {true, false}) {
    if (code != 0) continue;
    CHECK(STL_output(written.path(), coords, triangles, text) == 0);
    CHECK(stl_reference::STL_output(expected.path(), coords, triangles, text) == 0);
    CHECK(written.content() == expected.content() || !is_moderate(coords));
    CHECK(STL_input(written.path(), back, literal_triangles) == 0);
  }
  return 0;
}
