// The bytes are an STL file: each reader by itself, the dispatching one beside the literal one, then written and read.
#include "fuzz/input.h"
#include "io/stl_input.h"
#include "tests/stl_reference.h"

namespace {

using namespace fuzz;

/// The sign of a normal's NaN is the processor's choice and depends on the order of operands.
std::string without_nan_signs(std::string bytes, bool text) {
  for (std::size_t at = 0; text && (at = bytes.find("-nan", at)) != std::string::npos; ++at) {
    if (bytes.compare(bytes.rfind('\n', at) + 1, 8, "   facet") == 0) bytes.erase(at, 1);
  }
  for (std::size_t at = 84; !text && at + 50 <= bytes.size(); at += 50) {
    for (std::size_t k = at; k < at + 12; k += 4) {
      float value;
      std::memcpy(&value, &bytes[k], 4);
      if (value != value) bytes.replace(k, 4, "NaN!");
    }
  }
  return bytes;
}

void check_written(const dense2D<double>& coords, const dense2D<unsigned>& triangles, bool text) {
  static const memory_file written, expected;
  dense2D<double> back;
  dense2D<unsigned> ignored;
  CHECK(STL_output(written.path(), coords, triangles, text) == 0);
  CHECK(stl_reference::STL_output(expected.path(), coords, triangles, text) == 0);
  const std::string ours = written.content(), theirs = expected.content();
  CHECK(ours == theirs || without_nan_signs(ours, text) == without_nan_signs(theirs, text));
  CHECK(STL_input(written.path(), back, ignored) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const memory_file file;
  file.write(std::string(reinterpret_cast<const char*>(data), size));
  for (const auto read : {detail::io::read_stl_text, detail::io::read_stl_binary}) {
    dense2D<double> coords;
    dense2D<unsigned> triangles;
    std::uint64_t nbr_triangles = 0;
    const detail::io::file stream(file.path(), detail::io::access::read);
    detail::io::block_reader blocks(stream.stream());
    CHECK(blocks.prepare());
    const int code = read({blocks, stream.size()}, {coords, triangles, nbr_triangles});
    CHECK(code != 0 || check_IDs(triangles, ELT_TRIA3, static_cast<unsigned>(coords.cols())));
  }
  dense2D<double> coords(2, 2), expected_coords;
  dense2D<unsigned> triangles(2, 2), expected_triangles;
  std::uint64_t nbr_triangles = 9, expected_nbr_triangles = 0;
  const int code = STL_input(file.path(), coords, triangles, nbr_triangles);
  CHECK(code == stl_reference::STL_input(file.path(), expected_coords, expected_triangles, expected_nbr_triangles));
  CHECK(nbr_triangles == (code == 0 ? expected_nbr_triangles : 0));
  CHECK(triangles == expected_triangles && random_meshes::same_bits(coords, expected_coords));
  CHECK(code == 0 || (coords == dense2D<double>() && triangles == dense2D<unsigned>()));
  for (const bool text : {true, false}) {
    if (code != 0) continue;
    check_written(coords, triangles, text);
    check_written(coords.sub_matrix(0, 0, coords.cols() == 0 ? coords.rows() : 2, coords.cols()),
                  random_meshes::with_gaps(triangles, 9U), text);
  }
  return 0;
}
