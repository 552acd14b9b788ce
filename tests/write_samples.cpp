// Writes small meshes of every kind of element in every format, each with its plain description as JSON, for
// clients.py.
//
// usage: write_samples FOLDER
#include <cmath>
#include <fstream>
#include <string>

#include "qel/gridwork.h"

namespace {

using namespace qel::gridwork;
using matrix = qel::dense2D<unsigned>;

struct sample {
  const char* name;
  element_type type;
  bool in_vtk = true;
};

constexpr sample samples[] = {{"edges", ELT_EDGE2},
                              {"triangles", ELT_TRIA3},
                              {"quadrangles", ELT_QUAD4},
                              {"faces", ELT_FACE_MIX},
                              {"tetrahedra", ELT_TETRA4},
                              {"hexahedra", ELT_HEXA8},
                              {"solids", ELT_SOLID_MIX},
                              {"pyramids", ELT_PYRAMID5},
                              {"wedges", ELT_WEDGE6},
                              {"tria6", ELT_TRIA6},
                              {"quad8", ELT_QUAD8},
                              {"tetra10", ELT_TETRA10},
                              {"wedge15", ELT_WEDGE15, false},
                              {"hexa20", ELT_HEXA20}};

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

template <class T>
void describe(std::ofstream& json, const qel::dense2D<T>& m) {
  for (std::uint64_t j = 0; j < m.cols(); ++j) {
    for (std::uint64_t i = 0; i < m.rows(); ++i) {
      json << (i == 0 ? (j == 0 ? "[[" : ", [") : ", ") << m(i, j);
    }
    json << "]";
  }
}

bool write(const std::string& path, const sample& s) {
  unsigned nodes = 0;
  const matrix m = connectivity_of(s.type, nodes);
  const auto coords = coords_of(nodes);
  std::ofstream json(path + ".json");
  json.precision(17);
  json << "{\"type\": " << s.type << ", \"coords\": ";
  describe(json, coords);
  json << "], \"elements\": ";
  describe(json, m);
  json << "]}\n";
  int result = medit_output((path + ".mesh").c_str(), coords, m, s.type);
  if (s.in_vtk) result += vtk_output((path + ".vtk").c_str(), coords, m, s.type);
  result += NASTRAN_output((path + ".nas").c_str(), coords, m, s.type);
  result += ensight_output((path + ".geo").c_str(), coords, m, s.type);
  result += WavefrontOBJ_output((path + ".obj").c_str(), coords, m, s.type);
  const matrix triangles = s.type == ELT_TRIA3 ? m : matrix(), quads = s.type == ELT_QUAD4 ? m : matrix();
  result += WavefrontOBJ_output((path + "-vn.obj").c_str(), coords, coords, {}, triangles, quads);
  return result == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  for (const sample& s : samples) {
    if (!write(argv[1] + ("/" + std::string(s.name)), s)) return 1;
  }
  return 0;
}
