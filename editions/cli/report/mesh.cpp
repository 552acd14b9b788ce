#include "mesh.h"

#include <algorithm>

namespace report {

namespace {

constexpr const char* type_names[] = {"UNKNOWN", "NODE",    "EDGE_MIX", "EDGE2",     "EDGE3",     "FACE_MIX",
                                      "TRIA3",   "QUAD4",   "TRIA6",    "QUAD8",     "QUAD9",     "SOLID_MIX",
                                      "TETRA4",  "TETRA10", "PYRAMID5", "PYRAMID13", "PYRAMID14", "WEDGE6",
                                      "WEDGE15", "WEDGE18", "HEXA8",    "HEXA20",    "HEXA27"};

constexpr gw::element_type linear_types[] = {gw::ELT_NODE,   gw::ELT_EDGE2,    gw::ELT_TRIA3,  gw::ELT_QUAD4,
                                             gw::ELT_TETRA4, gw::ELT_PYRAMID5, gw::ELT_WEDGE6, gw::ELT_HEXA8};

gw::element_type linear_type(gw::element_type type) {
  for (const gw::element_type linear : linear_types) {
    if (element_dim(linear) == element_dim(type) && nbr_nodes(linear) == nbr_base_nodes(type)) return linear;
  }
  return gw::ELT_UNKNOWN;
}

// Appends columns below which the unused rows of a mixed matrix are free.
void append(const qel::dense2D<unsigned>& from, qel::dense2D<unsigned>& to, std::uint64_t& column) {
  for (std::uint64_t e = 0; e < from.cols(); ++e, ++column) {
    std::copy(from.begin_column(e), from.end_column(e), to.begin_column(column));
  }
}

bool mix(const std::vector<block>& parts, unsigned dim, block& all) {
  std::uint64_t count = 0, column = 0;
  for (const block& part : parts) count += part.connectivity.cols();
  all.type = dim == 1 ? gw::ELT_EDGE2 : dim == 2 ? gw::ELT_FACE_MIX : gw::ELT_SOLID_MIX;
  if (!all.connectivity.resize(nbr_nodes(all.type), count, ~0U)) return false;
  for (const block& part : parts) append(part.connectivity, all.connectivity, column);
  return true;
}

}  // namespace

bool append_element(const unsigned* nodes, block& b) {
  const std::uint64_t at = b.connectivity.cols();
  if (!b.connectivity.resize(nbr_nodes(b.type), at + 1)) return false;
  std::copy_n(nodes, nbr_nodes(b.type), b.connectivity.begin_column(at));
  return true;
}

const char* type_name(gw::element_type type) { return type_names[type]; }

std::uint64_t count_elements(const mesh& m) {
  std::uint64_t count = 0;
  for (const block& b : m.blocks) count += b.connectivity.cols();
  return count;
}

unsigned mesh_dim(const mesh& m) {
  unsigned dim = 0;
  for (const block& b : m.blocks) dim = std::max(dim, element_dim(b.type));
  return dim;
}

bool has_valid_nodes(const mesh& m) {
  return std::all_of(m.blocks.begin(), m.blocks.end(), [&](const block& b) {
    return check_IDs(b.connectivity, b.type, static_cast<unsigned>(m.coords.cols()));
  });
}

block linear_block(const block& elements) {
  const qel::dense2D<unsigned>& all = elements.connectivity;
  return {linear_type(elements.type), all.sub_matrix(0, 0, nbr_base_nodes(elements.type), all.cols()), {}};
}

bool linear_elements(const mesh& m, unsigned dim, block& all) {
  std::vector<block> parts;
  for (const block& b : m.blocks) {
    if (element_dim(b.type) == dim) parts.push_back(linear_block(b));
  }
  all = parts.size() == 1 ? parts.front() : block{};
  return parts.size() < 2 || mix(parts, dim, all);
}

outcome find_edges(const mesh& m, qel::dense2D<unsigned>& edges) {
  std::vector<qel::dense2D<unsigned>> matrices;
  qel::dense1D<int> types;
  for (const block& b : m.blocks) {
    if (element_dim(b.type) == 0) continue;
    const block linear = linear_block(b);
    matrices.push_back(linear.connectivity);
    if (!types.push_back(linear.type)) return outcome::of_memory(false);
  }
  const qel::dense2D<unsigned>* const first = matrices.data();
  return {gw::operation::copy_edges_range, gw::copy_edges(first, first + matrices.size(), types, edges)};
}

}  // namespace report
