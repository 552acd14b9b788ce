#include "core/elements.h"

#include "core/columns.h"
#include "core/result.h"
#include "qel/gridwork/version.h"

namespace qel::gridwork {

using namespace detail;

namespace {

struct element_facts {
  unsigned nodes, base_nodes, dim, boundaries, boundary_nodes;
};

constexpr element_facts catalogue[] = {
    {0, 0, 0, 0, 0},   // ELT_UNKNOWN
    {1, 1, 0, 0, 0},   // ELT_NODE
    {2, 2, 1, 2, 1},   // ELT_EDGE_MIX
    {2, 2, 1, 2, 1},   // ELT_EDGE2
    {3, 2, 1, 2, 1},   // ELT_EDGE3
    {4, 4, 2, 4, 2},   // ELT_FACE_MIX
    {3, 3, 2, 3, 2},   // ELT_TRIA3
    {4, 4, 2, 4, 2},   // ELT_QUAD4
    {6, 3, 2, 3, 3},   // ELT_TRIA6
    {8, 4, 2, 4, 3},   // ELT_QUAD8
    {9, 4, 2, 4, 3},   // ELT_QUAD9
    {8, 8, 3, 6, 4},   // ELT_SOLID_MIX
    {4, 4, 3, 4, 3},   // ELT_TETRA4
    {10, 4, 3, 4, 6},  // ELT_TETRA10
    {5, 5, 3, 5, 4},   // ELT_PYRAMID5
    {13, 5, 3, 5, 8},  // ELT_PYRAMID13
    {14, 5, 3, 5, 9},  // ELT_PYRAMID14
    {6, 6, 3, 5, 4},   // ELT_WEDGE6
    {15, 6, 3, 5, 8},  // ELT_WEDGE15
    {18, 6, 3, 5, 9},  // ELT_WEDGE18
    {8, 8, 3, 6, 4},   // ELT_HEXA8
    {20, 8, 3, 6, 8},  // ELT_HEXA20
    {27, 8, 3, 6, 9},  // ELT_HEXA27
};
static_assert(sizeof(catalogue) / sizeof(catalogue[0]) == ELT_HEXA27 + 1);

/// Those of ELT_UNKNOWN for a number that is no enumerator.
constexpr const element_facts& facts(element_type type) noexcept {
  return catalogue[is_element_type(type) ? type : ELT_UNKNOWN];
}

bool valid_face(const unsigned* nodes, unsigned n) noexcept {
  return all_below(nodes, nodes + (nodes[3] == none ? 3 : 4), n);
}

/// The end of a column is marked by `none` in row 4, 5 or 6 and every later row. Nothing else is valid, so that all ways
/// to read a column agree (core/linear_shapes.h).
bool valid_solid(const unsigned* nodes, unsigned n) noexcept {
  unsigned count = 4;
  while (count < 7 && nodes[count] != none) ++count;
  if (count == 7) count = 8;
  for (unsigned row = count; row < 8; ++row) {
    if (nodes[row] != none) return false;
  }
  return all_below(nodes, nodes + count, n);
}

template <class ValidColumn>
bool all_columns(const dense2D<unsigned>& connectivity, ValidColumn valid) {
  for (std::uint64_t j = 0; j < connectivity.cols(); ++j) {
    if (!valid(connectivity.column(j))) return false;
  }
  return true;
}

}  // namespace

const char* version() { return QEL_GRIDWORK_VERSION_STRING ".0"; }

unsigned nbr_nodes(element_type type) { return facts(type).nodes; }
unsigned nbr_base_nodes(element_type type) { return facts(type).base_nodes; }
unsigned element_dim(element_type type) { return facts(type).dim; }
unsigned nbr_boundaries(element_type type) { return facts(type).boundaries; }

unsigned detail::nbr_boundary_nodes(element_type type) noexcept { return facts(type).boundary_nodes; }

element_type detail::resolve_type(element_type type, std::uint64_t rows) noexcept {
  if (type == ELT_FACE_MIX && rows == 3) return ELT_TRIA3;
  if (type == ELT_SOLID_MIX) {
    if (rows == 4) return ELT_TETRA4;
    if (rows == 5) return ELT_PYRAMID5;
    if (rows == 6) return ELT_WEDGE6;
  }
  return is_element_type(type) ? type : ELT_UNKNOWN;
}

bool check_IDs(const dense2D<unsigned>& connectivity, element_type type, unsigned n) {
  if (connectivity.empty()) return true;
  type = resolve_type(type, connectivity.rows());
  if (connectivity.rows() != nbr_nodes(type)) return false;
  if (n == none) return true;
  if (type == ELT_FACE_MIX) {
    return all_columns(connectivity, [n](const unsigned* nodes) { return valid_face(nodes, n); });
  }
  if (type == ELT_SOLID_MIX) {
    return all_columns(connectivity, [n](const unsigned* nodes) { return valid_solid(nodes, n); });
  }
  if (connectivity.compact()) return all_below(connectivity.data(), connectivity.data() + connectivity.size(), n);
  const std::uint64_t rows = connectivity.rows();
  return all_columns(connectivity, [n, rows](const unsigned* nodes) { return all_below(nodes, nodes + rows, n); });
}

}  // namespace qel::gridwork
