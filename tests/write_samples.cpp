// Writes a small mesh of every kind of element in every format. clients.py knows what is in them.
//
// usage: write_samples FOLDER
#include <cmath>
#include <string>

#include "qel/gridwork.h"

namespace {

using namespace qel::gridwork;
using matrix = qel::dense2D<unsigned>;

constexpr element_type types[] = {ELT_EDGE2, ELT_TRIA3,     ELT_QUAD4,    ELT_FACE_MIX, ELT_TETRA4,
                                  ELT_HEXA8, ELT_SOLID_MIX, ELT_PYRAMID5, ELT_WEDGE6,   ELT_TRIA6,
                                  ELT_QUAD8, ELT_TETRA10,   ELT_WEDGE15,  ELT_HEXA20};

constexpr unsigned elements = 12;

/// Elements with nodes of their own, so that no mistake is hidden by a neighbour; mixed types take turns.
matrix connectivity_of(element_type type, unsigned& nodes) {
  const unsigned rows = nbr_nodes(type);
  matrix m(rows, elements, ~0U);
  for (unsigned j = 0; j < elements; ++j) {
    constexpr unsigned solid_nodes[] = {8, 4, 6, 5};
    unsigned used = rows;
    if (type == ELT_FACE_MIX) used = 3 + j % 2;
    if (type == ELT_SOLID_MIX) used = solid_nodes[j % 4];
    for (unsigned i = 0; i < used; ++i) m(i, j) = nodes++;
  }
  return m;
}

qel::dense2D<double> coords_of(unsigned nodes) {
  qel::dense2D<double> coords(3, nodes);
  for (std::uint64_t k = 0; k < coords.size(); ++k) coords.data()[k] = 3 * std::sin(static_cast<double>(k));
  return coords;
}

bool write(const std::string& path, element_type type) {
  unsigned nodes = 0;
  const matrix m = connectivity_of(type, nodes);
  const auto coords = coords_of(nodes);
  int result = medit_output((path + ".mesh").c_str(), coords, m, type);
  if (type != ELT_WEDGE15) result += vtk_output((path + ".vtk").c_str(), coords, m, type);
  result += NASTRAN_output((path + ".nas").c_str(), coords, m, type);
  result += ensight_output((path + ".geo").c_str(), coords, m, type);
  result += WavefrontOBJ_output((path + ".obj").c_str(), coords, m, type);
  const matrix triangles = type == ELT_TRIA3 ? m : matrix(), quads = type == ELT_QUAD4 ? m : matrix();
  result += WavefrontOBJ_output((path + "-vn.obj").c_str(), coords, coords, {}, triangles, quads);
  return result == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  for (const element_type type : types) {
    if (!write(argv[1] + ("/type_" + std::to_string(type)), type)) return 1;
  }
  return 0;
}
