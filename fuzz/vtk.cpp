// The bytes are a legacy VTK file. What is read is a mesh, type by type the same, and comes back when it is written.
#include "core/limits.h"
#include "fuzz/read_mesh.h"

namespace {

using namespace fuzz;
namespace limits = qel::gridwork::detail::limits;

struct vtk_reading : reading {
  dense1D<unsigned> cell_IDs{5};

  explicit vtk_reading(const char* path) { code = vtk_input(path, coords, connectivity, offsets, types, cell_IDs); }
};

/// True when every coordinate, printed in full, is a word that can be read.
bool is_readable(const dense2D<double>& coords) {
  return !limits::are_small || std::none_of(coords.data(), coords.data() + coords.size(),
                                            [](double x) { return std::isfinite(x) && std::abs(x) > 1e200; });
}

void check_written(const reading& m, const memory_file& file) {
  for (unsigned b = 0; b < m.types.size(); ++b) {
    const auto type = element_type(m.types[b]);
    const dense2D<unsigned> elements = block(m, b);
    if (type == ELT_PYRAMID13 || type == ELT_WEDGE15) continue;  // not written
    if (nbr_nodes(type) != nbr_base_nodes(type) && !has_distinct_nodes(elements)) continue;
    CHECK(vtk_output(file.path(), m.coords, elements, type) == 0);
    const std::string bytes = file.content();
    const vtk_reading again(file.path());
    CHECK(again.code == 0 && again.types == dense1D<int>{type} && again.connectivity == elements);
    CHECK(vtk_output(file.path(), again.coords, again.connectivity, type) == 0);
    CHECK(file.content() == bytes);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const memory_file file, written;
  file.write(std::string(reinterpret_cast<const char*>(data), size));
  const vtk_reading m(file.path());
  CHECK(is_one_of(m.code, {-2, -3, -7, -199}));  // offsets may claim more than 2^32 - 1 nodes
  if (m.code < 0) {
    CHECK(m.is_blank() && m.cell_IDs.empty());
    return 0;
  }
  CHECK(m.is_sound() && m.coords.rows() == 3 && m.cell_IDs.size() == m.connectivity.cols());
  check_types_alone(m, [](auto& coords, auto& elements, element_type type) {
    return vtk_input(file.path(), coords, elements, type);
  });
  if (is_readable(m.coords)) check_written(m, written);
  return 0;
}
