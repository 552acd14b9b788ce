// Boundary slots and the comparison of boundaries.
#ifndef QEL_GRIDWORK_TOPOLOGY_BOUNDARY_SLOTS_H
#define QEL_GRIDWORK_TOPOLOGY_BOUNDARY_SLOTS_H

#include <algorithm>
#include <cstdint>

#include "core/check.h"
#include "core/linear_shapes.h"
#include "qel/dense.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork::detail {

/// The nodes of a boundary, in the direction that its element gives it.
struct boundary_nodes {
  unsigned size;
  unsigned nodes[most_boundary_nodes];
};

template <class Columns>
boundary_nodes boundary_of(const shape& s, const unsigned* nodes, unsigned k) noexcept {
  QEL_GRIDWORK_CHECK(k < s.boundaries);
  const unsigned size = Columns::equal_boundaries ? Columns::largest.boundary_nodes : s.boundary_sizes[k];
  boundary_nodes boundary{size, {none, none, none, none}};
  for (unsigned i = 0; i < boundary.size; ++i) boundary.nodes[i] = nodes[s.boundary[k][i]];
  return boundary;
}

enum class direction { different, same, opposite };

/// Compares two boundaries as cycles of nodes, each from its (first) smallest node on.
inline direction compare_boundaries(const boundary_nodes& a, const boundary_nodes& b) noexcept {
  QEL_GRIDWORK_CHECK(a.size >= 1 && a.size <= most_boundary_nodes);
  const unsigned n = a.size;
  if (b.size != n) return direction::different;
  if (n == 2) {
    if (a.nodes[0] == b.nodes[0] && a.nodes[1] == b.nodes[1]) return direction::same;
    return a.nodes[0] == b.nodes[1] && a.nodes[1] == b.nodes[0] ? direction::opposite : direction::different;
  }
  const auto start_a = static_cast<unsigned>(std::min_element(a.nodes, a.nodes + n) - a.nodes);
  const auto start_b = static_cast<unsigned>(std::min_element(b.nodes, b.nodes + n) - b.nodes);
  bool same = true;
  bool opposite = true;
  for (unsigned i = 0; i < n; ++i) {
    const unsigned node = a.nodes[(start_a + i) % n];
    same = same && node == b.nodes[(start_b + i) % n];
    opposite = opposite && node == b.nodes[(start_b + n - i) % n];
  }
  if (same) return direction::same;
  return opposite ? direction::opposite : direction::different;
}

/// True when every slot code of `elements` elements with `boundaries` boundaries each is below `none`.
constexpr bool slot_codes_fit(std::uint64_t elements, std::uint64_t boundaries) noexcept {
  return elements <= none / boundaries;
}

/// True for the linear types that have boundaries here.
constexpr bool has_shape(element_type type) noexcept {
  return visit_shape(type, false, [](auto) { return true; });
}

/// True when `neighbors` has the size that goes with a connectivity.
inline bool fits_elements(const dense2D<unsigned>& neighbors, element_type type, std::uint64_t elements) {
  return neighbors.cols() == elements && neighbors.rows() == nbr_boundaries(type);
}

/// True when every entry is an element or `none`.
inline bool holds_elements(const dense2D<unsigned>& neighbors) {
  return check_IDs(neighbors, static_cast<unsigned>(std::min<std::uint64_t>(neighbors.cols(), none)));
}

/// 0; -1 for a wrong row count; -2 for neighbours of another size or that are no elements; -3 for a type without a shape.
inline int check_neighbors(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors,
                           element_type type) {
  if (connectivity.rows() != nbr_nodes(type)) return -1;
  if (!fits_elements(neighbors, type, connectivity.cols()) || !holds_elements(neighbors)) return -2;
  return has_shape(type) ? 0 : -3;
}

/// A given column as a boundary; triangles among quadrangles end with `none`.
inline boundary_nodes given_boundary(const dense2D<unsigned>& boundaries, std::uint64_t j) noexcept {
  boundary_nodes boundary{static_cast<unsigned>(boundaries.rows()), {none, none, none, none}};
  std::copy(boundaries.begin_column(j), boundaries.end_column(j), boundary.nodes);
  if (boundary.size == 4 && boundary.nodes[3] == none) boundary.size = 3;
  return boundary;
}

}  // namespace qel::gridwork::detail

#endif
