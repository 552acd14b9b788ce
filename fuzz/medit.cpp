// The bytes are a MEDIT mesh or solution. What is read is a mesh, type by type the same, and comes back when it is
// written.
#include "fuzz/read_mesh.h"

namespace {

using namespace fuzz;

struct medit_reading : reading {
  dense1D<unsigned> references, node_references;

  explicit medit_reading(const char* path) {
    code = medit_input(path, coords, connectivity, offsets, types, references, node_references);
  }
};

/// Elements that were read and written have at most the vertices of what they were. Pyramids and wedges that have a node
/// twice are hexahedra then.
void check_written(const reading& m, const memory_file& file) {
  for (unsigned b = 0; b < m.types.size(); ++b) {
    const auto type = element_type(m.types[b]);
    const dense2D<unsigned> elements = block(m, b);
    CHECK(medit_output(file.path(), m.coords, elements, type) == 0);
    const std::string bytes = file.content();
    const medit_reading again(file.path());
    CHECK(again.code == 0 && again.coords.cols() == m.coords.cols() && again.coords.rows() == m.coords.rows());
    const bool stays = (type != ELT_PYRAMID5 && type != ELT_WEDGE6) || has_distinct_nodes(elements);
    if (stays && nbr_nodes(type) == nbr_base_nodes(type)) CHECK(again.connectivity == elements);
    if (again.types.size() != 1) continue;  // quadratic hexahedra may have linear ones that are wedges
    CHECK(medit_output(file.path(), again.coords, again.connectivity, element_type(again.types[0])) == 0);
    CHECK(file.content() == bytes);
  }
}

void check_solution(const char* path) {
  unsigned dim = 0;
  dense2D<double> values;
  dense1D<int> kinds;
  const int code = medit_solution_input(path, dim, values, kinds);
  CHECK(code == 0 || code == -2 || code == -7);
  CHECK(code == 0 || (dim == 0 && values.empty() && kinds.empty()));
  std::uint64_t rows = 0;
  for (const int kind : kinds) {
    CHECK(kind >= 1 && kind <= 4);
    rows += kind == 1 ? 1 : kind == 2 ? dim : kind == 3 ? std::uint64_t{dim} * (dim + 1) / 2 : std::uint64_t{dim} * dim;
  }
  CHECK(values.cols() == 0 || values.rows() == rows);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const memory_file file, written;
  file.write(std::string(reinterpret_cast<const char*>(data), size));
  check_solution(file.path());
  const medit_reading m(file.path());
  CHECK(is_one_of(m.code, {-2, -3, -7}));
  if (m.code < 0) {
    CHECK(m.is_blank() && m.references.empty() && m.node_references.empty());
    return 0;
  }
  CHECK(m.is_sound() && m.references.size() == m.connectivity.cols() && m.node_references.size() == m.coords.cols());
  check_types_alone(m, [](auto& coords, auto& elements, element_type type) {
    return medit_input(file.path(), coords, elements, type);
  });
  check_written(m, written);
  return 0;
}
