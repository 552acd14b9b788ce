// Meshes that are written and read again, and what every reader of elements in blocks has to return.
#ifndef QEL_TESTS_INPUT_MESHES_H
#define QEL_TESTS_INPUT_MESHES_H

#include <limits>

#include "qel/gridwork.h"
#include "random_meshes.h"

namespace input_meshes {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;
using matrix = dense2D<unsigned>;

constexpr unsigned none = ~0U;

/// All types of one shape but nodes.
constexpr element_type plain_types[] = {ELT_EDGE2,     ELT_EDGE3,     ELT_TRIA3,  ELT_QUAD4,   ELT_TRIA6,
                                        ELT_QUAD8,     ELT_QUAD9,     ELT_TETRA4, ELT_TETRA10, ELT_PYRAMID5,
                                        ELT_PYRAMID13, ELT_PYRAMID14, ELT_WEDGE6, ELT_WEDGE15, ELT_WEDGE18,
                                        ELT_HEXA8,     ELT_HEXA20,    ELT_HEXA27};

/// Elements of one type, of distinct nodes; coordinates are random, tiny, huge and special.
struct sample {
  dense2D<double> coords;
  matrix elements;

  sample(element_type type, unsigned rows, unsigned count = 5) : coords(rows, 60), elements(nbr_nodes(type), count) {
    random_meshes::generator random(type + 100 * rows);
    for (unsigned k = 0; k < coords.size(); ++k) {
      constexpr double special[] = {0, -0.0, 1e-300, -1e200, 1, 5e-324, 123456789012345, 0.1};
      coords.data()[k] = k < 8 ? special[k] : 200 * random_meshes::real(random) - 100;
    }
    for (unsigned j = 0; j < count; ++j) {
      for (unsigned k = 0; k < elements.rows(); ++k) elements(k, j) = (7 * k + 11 * j) % 60;
    }
  }
};

/// What a reader returned.
struct reading {
  int code = 0;
  dense2D<double> coords{1, 1};
  matrix connectivity{1, 1};
  dense1D<unsigned> offsets{5};
  dense1D<int> types{5};

  bool is_blank() const { return coords.empty() && connectivity.empty() && offsets.empty() && types.empty(); }

  /// Blocks of increasing types, none of them empty, that fill the matrix with nodes of the mesh.
  bool is_sound() const {
    if (offsets.size() != types.size() + 1 || offsets[0] != 0 || offsets[types.size()] != connectivity.cols())
      return false;
    if (types.empty()) return connectivity.empty();
    unsigned rows = 0;
    for (unsigned b = 0; b < types.size(); ++b) {
      const auto type = element_type(types[b]);
      const unsigned first = offsets[b], count = offsets[b + 1] - first, size = nbr_nodes(type);
      if (offsets[b + 1] <= first || (b > 0 && types[b] <= types[b - 1]) || size > connectivity.rows()) return false;
      if (!check_IDs(connectivity.sub_matrix(0, first, size, count), type, unsigned(coords.cols()))) return false;
      for (unsigned j = first; j < first + count; ++j) {
        for (unsigned k = size; k < connectivity.rows(); ++k) {
          if (connectivity(k, j) != none) return false;
        }
      }
      rows = size > rows ? size : rows;
    }
    return rows == connectivity.rows();
  }
};

}  // namespace input_meshes

#endif
