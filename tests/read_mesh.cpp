// Prints a mesh that the library reads, as JSON: its points, and for each element its type and its nodes.
//
// usage: read_mesh FILE (.bdf, .mesh or .vtk)
#include <cstdio>
#include <string>

#include "qel/gridwork.h"

namespace {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;

struct mesh {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  dense1D<unsigned> offsets;
  dense1D<int> types;
};

int read(const std::string& path, mesh& m) {
  dense1D<unsigned> labels, node_labels, element_IDs;
  if (path.ends_with(".bdf")) {
    return NASTRAN_input(path.c_str(), m.coords, m.connectivity, m.offsets, m.types, labels, element_IDs, node_labels);
  }
  if (path.ends_with(".vtk")) return vtk_input(path.c_str(), m.coords, m.connectivity, m.offsets, m.types, labels);
  return medit_input(path.c_str(), m.coords, m.connectivity, m.offsets, m.types, labels, node_labels);
}

void print_points(const dense2D<double>& coords) {
  for (unsigned j = 0; j < coords.cols(); ++j) {
    std::printf(j == 0 ? "[" : "], [");
    for (unsigned i = 0; i < coords.rows(); ++i) std::printf("%s%.17g", i == 0 ? "" : ", ", coords(i, j));
  }
  std::printf(coords.cols() == 0 ? "" : "]");
}

void print_elements(const mesh& m) {
  const char* separator = "";
  for (unsigned b = 0; b < m.types.size(); ++b) {
    for (unsigned j = m.offsets[b]; j < m.offsets[b + 1]; ++j) {
      std::printf("%s[%d", separator, m.types[b]);
      for (unsigned i = 0; i < nbr_nodes(element_type(m.types[b])); ++i) std::printf(", %u", m.connectivity(i, j));
      std::printf("]");
      separator = ", ";
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  mesh m;
  std::printf("{\"result\": %d, \"points\": [", read(argv[1], m));
  print_points(m.coords);
  std::printf("], \"elements\": [");
  print_elements(m);
  std::puts("]}");
  return 0;
}
