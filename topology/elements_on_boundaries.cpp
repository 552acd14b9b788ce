// From given boundaries back to the elements they lie on.
//
// The elements round the first node of a boundary are gathered and looked through. Where a node has very many, as the hub
// of a fan has, all that may be asked of it goes into a table at the first question.
#include <algorithm>

#include "core/elements.h"
#include "core/limits.h"
#include "core/outputs.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/topology.h"
#include "topology/boundary_slots.h"
#include "topology/hub_slots.h"
#include "topology/node_ring.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// The slot that a boundary coincides with among the elements round its first node.
template <class Columns>
unsigned scan_for_slot(const node_ring<Columns>& ring, const boundary_nodes& wanted) {
  best_slot best;
  ring.visit_slots([&](const boundary_nodes& boundary, unsigned slot) {
    best.offer(compare_boundaries(wanted, boundary), slot);
    return !best.is_final();
  });
  return best.slot();
}

/// Finds the slot of a boundary whose first node has the element `start`. `visit` is a number of its own for each call.
template <class Columns>
[[nodiscard]] bool find_slot(const boundary_nodes& wanted, unsigned start, unsigned visit, node_ring<Columns>& ring,
                             hub_slots& hubs, unsigned& slot) {
  const unsigned node = wanted.nodes[0];
  if (!hubs.has(node)) {
    if (!ring.gather(node, start, visit)) return false;
    if (ring.size() <= limits::scanned_ring) {
      slot = scan_for_slot(ring, wanted);
      return true;
    }
    if (!hubs.add(node, ring)) return false;
  }
  slot = hubs.find(wanted);
  return true;
}

template <class Columns>
int find_slots(const dense2D<unsigned>& boundaries, const dense2D<unsigned>& connectivity,
               const dense2D<unsigned>& neighbors, const dense1D<unsigned>& ancestors, dense1D<unsigned>& slots) {
  node_ring<Columns> ring(connectivity, neighbors);
  hub_slots hubs;
  if (!slot_codes_fit(connectivity.cols(), Columns::largest.boundaries) || boundaries.cols() >= none) {
    return out_of_memory;
  }
  if (!slots.resize(boundaries.cols(), none) || !ring.prepare() || !hubs.prepare(ancestors.size())) {
    return out_of_memory;
  }
  for (unsigned j = 0; j < boundaries.cols(); ++j) {
    const boundary_nodes wanted = given_boundary(boundaries, j);
    const unsigned node = wanted.nodes[0];
    if (node >= ancestors.size() || ancestors[node] == none) continue;
    if (!find_slot(wanted, ancestors[node], j, ring, hubs, slots[j])) return out_of_memory;
  }
  return 0;
}

int find_slots(const dense2D<unsigned>& boundaries, const dense2D<unsigned>& connectivity,
               const dense2D<unsigned>& neighbors, const dense1D<unsigned>& ancestors, element_type type,
               dense1D<unsigned>& slots, unsigned& nbr_bound) {
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

}  // namespace

int get_elements_on_boundaries(const dense2D<unsigned>& boundaries, const dense2D<unsigned>& connectivity,
                               const dense2D<unsigned>& neighbors, const dense1D<unsigned>& ancestors,
                               element_type type, dense1D<unsigned>& slots, unsigned& nbr_bound) {
  return find_slots(boundaries, connectivity, neighbors, ancestors, type,
                    output(slots, boundaries, connectivity, neighbors, ancestors), nbr_bound);
}

}  // namespace qel::gridwork
