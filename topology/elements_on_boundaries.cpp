// From given boundaries back to the elements they lie on.
#include <algorithm>

#include "core/elements.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/topology.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// Gathers the elements round a node, breadth first, across boundaries that hold the node.
template <class Columns>
class node_ring {
 public:
  node_ring(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors) noexcept
      : connectivity_(connectivity), neighbors_(neighbors) {}

  [[nodiscard]] bool prepare() { return visits_.resize(connectivity_.cols(), none); }

  /// Gathers from the element `start` on. `visit` is a number of its own for each call.
  [[nodiscard]] bool gather(unsigned node, unsigned start, unsigned visit) {
    ring_.clear();
    if (!add(start, node, visit)) return false;
    for (std::uint64_t i = 0; i < ring_.size(); ++i) {
      const unsigned* nodes = connectivity_.column(ring_[i]);
      const shape& s = Columns::of(nodes);
      for (unsigned k = 0; k < s.boundaries; ++k) {
        const unsigned across = neighbors_(k, ring_[i]);
        if (across != none && holds(boundary_of<Columns>(s, nodes, k), node) && !add(across, node, visit)) return false;
      }
    }
    return true;
  }

  const dense1D<unsigned>& elements() const noexcept { return ring_; }

 private:
  static bool holds(const boundary_nodes& boundary, unsigned node) noexcept {
    return std::find(boundary.nodes, boundary.nodes + boundary.size, node) != boundary.nodes + boundary.size;
  }

  /// Elements that do not hold the node, which only wrong input leads to, are not gathered.
  bool add(unsigned element, unsigned node, unsigned visit) {
    if (visits_[element] == visit) return true;
    visits_[element] = visit;
    const unsigned* nodes = connectivity_.column(element);
    const unsigned* end = nodes + Columns::of(nodes).nodes;
    return std::find(nodes, end, node) == end || ring_.push_back(element);
  }

  const dense2D<unsigned>& connectivity_;
  const dense2D<unsigned>& neighbors_;
  dense1D<unsigned> visits_;  // the call that reached an element last
  dense1D<unsigned> ring_;
};

/// A given column as a boundary; triangles among quadrangles end with `none`.
boundary_nodes given_boundary(const dense2D<unsigned>& boundaries, std::uint64_t j) noexcept {
  boundary_nodes boundary{static_cast<unsigned>(boundaries.rows()), {none, none, none, none}};
  std::copy(boundaries.begin_column(j), boundaries.end_column(j), boundary.nodes);
  if (boundary.size == 4 && boundary.nodes[3] == none) boundary.size = 3;
  return boundary;
}

/// The slot among `elements` that coincides with a boundary: the first in the same direction, else the last in the
/// other.
template <class Columns>
unsigned find_slot(const dense2D<unsigned>& connectivity, const dense1D<unsigned>& elements,
                   const boundary_nodes& wanted) noexcept {
  unsigned opposite = none;
  for (const unsigned e : elements) {
    const unsigned* nodes = connectivity.column(e);
    const shape& s = Columns::of(nodes);
    for (unsigned k = 0; k < s.boundaries; ++k) {
      const direction found = compare_boundaries(wanted, boundary_of<Columns>(s, nodes, k));
      if (found == direction::different) continue;
      const unsigned slot = e * Columns::largest.boundaries + k;
      if (found == direction::same) return slot;
      opposite = slot;
    }
  }
  return opposite;
}

template <class Columns>
int find_slots(const dense2D<unsigned>& boundaries, const dense2D<unsigned>& connectivity,
               const dense2D<unsigned>& neighbors, const dense1D<unsigned>& ancestors, dense1D<unsigned>& slots) {
  node_ring<Columns> ring(connectivity, neighbors);
  if (!slot_codes_fit(connectivity.cols(), Columns::largest.boundaries) || boundaries.cols() >= none) {
    return out_of_memory;
  }
  if (!slots.resize(boundaries.cols(), none) || !ring.prepare()) return out_of_memory;
  for (unsigned j = 0; j < boundaries.cols(); ++j) {
    const boundary_nodes wanted = given_boundary(boundaries, j);
    const unsigned node = wanted.nodes[0];
    if (node >= ancestors.size() || ancestors[node] == none) continue;
    if (!ring.gather(node, ancestors[node], j)) return out_of_memory;
    slots[j] = find_slot<Columns>(connectivity, ring.elements(), wanted);
  }
  return 0;
}

}  // namespace

int get_elements_on_boundaries(const dense2D<unsigned>& boundaries, const dense2D<unsigned>& connectivity,
                               const dense2D<unsigned>& neighbors, const dense1D<unsigned>& ancestors,
                               element_type type, dense1D<unsigned>& slots, unsigned& nbr_bound) {
  slots.clear();
  nbr_bound = 0;
  if (boundaries.empty()) return 0;
  type = resolve_type(type, connectivity.rows());
  const std::uint64_t elements = connectivity.cols();
  const auto element_bound = static_cast<unsigned>(elements);
  if (boundaries.rows() != nbr_boundary_nodes(type)) return -1;
  if (connectivity.rows() != nbr_nodes(type)) return -2;
  if (!fits_elements(neighbors, type, elements) || !check_IDs(neighbors, element_bound)) return -3;
  if (!check_IDs(ancestors, element_bound)) return -4;
  if (!has_shape(type)) return -5;
  nbr_bound = nbr_boundaries(type);
  const int result = visit_shape(type, -5, [&](auto columns) {
    return find_slots<decltype(columns)>(boundaries, connectivity, neighbors, ancestors, slots);
  });
  if (result != 0) slots.clear();
  return result;
}

}  // namespace qel::gridwork
