// Meshes with identifiers, as the readers of some formats make them, and meshes of all types to be written.
#ifndef QEL_TESTS_IDENTIFIED_MESH_H
#define QEL_TESTS_IDENTIFIED_MESH_H

#include <string>

#include "digest.h"
#include "input_meshes.h"
#include "memory_file.h"
#include "qel/gridwork.h"
#include "random_meshes.h"

namespace identified {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;

using input_meshes::matrix;

struct mesh : input_meshes::reading {
  dense1D<unsigned> property_IDs, element_IDs, node_IDs;

  /// True when no output holds anything.
  bool is_empty() const { return is_blank() && property_IDs.empty() && element_IDs.empty() && node_IDs.empty(); }

  /// True for what readers promise.
  bool is_complete() const {
    return is_sound() && property_IDs.size() == connectivity.cols() && element_IDs.size() == connectivity.cols() &&
           node_IDs.size() == coords.cols() && (coords.empty() || coords.rows() == 3);
  }

  matrix block(unsigned b) const {
    return connectivity.sub_matrix(0, offsets[b], nbr_nodes(element_type(types[b])), offsets[b + 1] - offsets[b]);
  }

  std::uint64_t digest() const {
    return digest_of(coords, connectivity, offsets, types, property_IDs, element_IDs, node_IDs);
  }
};

using reader = int (*)(const char*, dense2D<double>&, dense2D<unsigned>&, dense1D<unsigned>&, dense1D<int>&,
                       dense1D<unsigned>&, dense1D<unsigned>&, dense1D<unsigned>&);
using writer = int (*)(const char*, const dense2D<double>&, const dense2D<unsigned>&, const dense1D<unsigned>&,
                       const dense1D<int>&, const dense1D<unsigned>&);

inline int read(reader input, const std::string& text, mesh& m) {
  const memory_file file(text);
  return input(file.path(), m.coords, m.connectivity, m.offsets, m.types, m.property_IDs, m.element_IDs, m.node_IDs);
}

inline std::string write(writer output, const mesh& m) {
  const memory_file file;
  const int code = output(file.path(), m.coords, m.connectivity, m.offsets, m.types, m.property_IDs);
  return code == 0 ? file.content() : "code " + std::to_string(code);
}

/// Three elements each of all plain types from ELT_EDGE2 on, their nodes in any order.
inline mesh all_types(random_meshes::generator& random) {
  mesh m;
  constexpr unsigned nodes = 60;
  m.coords = dense2D<double>(3, nodes);
  m.connectivity = dense2D<unsigned>(27, 0);
  m.offsets = dense1D<unsigned>{0U};
  m.types.clear();
  for (unsigned k = 0; k < 3 * nodes; ++k) {
    const double scale[] = {1, 1e-310, 1e300, 1e-3, 12345.678};
    m.coords(k % 3, k / 3) = (2 * random_meshes::real(random) - 1) * scale[random_meshes::below(random, 5)];
  }
  m.coords(0, 0) = -0.0;
  for (const element_type type : input_meshes::plain_types) {
    for (unsigned j = 0; j < 3; ++j) {
      unsigned column[27];
      const unsigned start = random_meshes::below(random, nodes);
      for (unsigned k = 0; k < 27; ++k) column[k] = k < nbr_nodes(type) ? (start + 7 * k) % nodes : ~0U;
      static_cast<void>(m.connectivity.push_back_column(column));
      static_cast<void>(m.property_IDs.push_back(random_meshes::below(random, 5) - 2));
    }
    static_cast<void>(m.types.push_back(type));
    static_cast<void>(m.offsets.push_back(unsigned(m.connectivity.cols())));
  }
  return m;
}

}  // namespace identified

#endif
