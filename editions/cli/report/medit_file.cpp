// MEDIT files, and in words what is wrong with one that is not read.
#include "formats.h"

namespace report {

int read_medit(const char* path, mesh& m) {
  qel::dense2D<unsigned> connectivity;
  qel::dense1D<unsigned> offsets, references, node_references;
  qel::dense1D<int> types;
  const int result = gw::medit_input(path, m.coords, connectivity, offsets, types, references, node_references);
  if (result < 0) return result;
  for (std::uint64_t k = 0; k < types.size(); ++k) {
    const auto type = static_cast<gw::element_type>(types[k]);
    m.blocks.push_back({type, connectivity.sub_matrix(0, offsets[k], nbr_nodes(type), offsets[k + 1] - offsets[k])});
  }
  return result;
}

std::string explain_medit(int result, std::string_view /*bytes*/) {
  return result < 0 ? message(gw::operation::medit_input, result) : "it has no element that can be read";
}

}  // namespace report
