// What must hold of meshes that were read in blocks, whatever the file.
#ifndef QEL_FUZZ_READ_MESH_H
#define QEL_FUZZ_READ_MESH_H

#include <initializer_list>

#include "fuzz/input.h"
#include "tests/input_meshes.h"

namespace fuzz {

using input_meshes::reading;

/// True for one of the codes, or a count.
inline bool is_one_of(int code, std::initializer_list<int> codes) {
  return code >= 0 || std::find(codes.begin(), codes.end(), code) != codes.end();
}

/// The elements of block b.
inline dense2D<unsigned> block(const reading& m, unsigned b) {
  return m.connectivity.sub_matrix(0, m.offsets[b], nbr_nodes(element_type(m.types[b])),
                                   m.offsets[b + 1] - m.offsets[b]);
}

/// Calls read(coords, connectivity, type) for each type of a mesh, which must return the block of that type.
template <class Read>
void check_types_alone(const reading& m, Read read) {
  for (unsigned b = 0; b < m.types.size(); ++b) {
    dense2D<double> coords;
    dense2D<unsigned> elements;
    CHECK(read(coords, elements, element_type(m.types[b])) == m.code);
    CHECK(elements == block(m, b) && random_meshes::same_bits(coords, m.coords));
  }
}

inline bool has_distinct_nodes(const dense2D<unsigned>& elements) {
  for (unsigned j = 0; j < elements.cols(); ++j) {
    std::vector<unsigned> nodes(elements.begin_column(j), elements.end_column(j));
    std::sort(nodes.begin(), nodes.end());
    if (std::adjacent_find(nodes.begin(), nodes.end()) != nodes.end()) return false;
  }
  return true;
}

}  // namespace fuzz

#endif
