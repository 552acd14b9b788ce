// The elements round a node.
#ifndef QEL_GRIDWORK_TOPOLOGY_NODE_RING_H
#define QEL_GRIDWORK_TOPOLOGY_NODE_RING_H

#include <algorithm>
#include <cstdint>

#include "core/result.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork::detail {

inline bool holds(const boundary_nodes& boundary, unsigned node) noexcept {
  return std::find(boundary.nodes, boundary.nodes + boundary.size, node) != boundary.nodes + boundary.size;
}

/// Gathers the elements round a node, breadth first, across boundaries that hold the node.
template <class Columns>
class node_ring {
 public:
  node_ring(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors) noexcept
      : connectivity_(connectivity), neighbors_(neighbors) {}

  [[nodiscard]] bool prepare() { return visits_.resize(connectivity_.cols(), none); }

  /// Gathers from the element `start` on. `visit` is a number of its own for each call.
  [[nodiscard]] bool gather(unsigned node, unsigned start, unsigned visit) {
    elements_.clear();
    if (!add(start, node, visit)) return false;
    for (std::uint64_t i = 0; i < elements_.size(); ++i) {
      const unsigned* nodes = connectivity_.column(elements_[i]);
      const shape& s = Columns::of(nodes);
      for (unsigned k = 0; k < s.boundaries; ++k) {
        const unsigned across = neighbors_(k, elements_[i]);
        if (across != none && holds(boundary_of<Columns>(s, nodes, k), node) && !add(across, node, visit)) return false;
      }
    }
    return true;
  }

  std::uint64_t size() const noexcept { return elements_.size(); }

  /// Calls visit(boundary, slot) for the boundaries of the elements in turn, up to the first that returns false. True
  /// when none did.
  template <class Visit>
  bool visit_slots(Visit visit) const {
    for (const unsigned e : elements_) {
      const unsigned* nodes = connectivity_.column(e);
      const shape& s = Columns::of(nodes);
      for (unsigned k = 0; k < s.boundaries; ++k) {
        if (!visit(boundary_of<Columns>(s, nodes, k), e * Columns::largest.boundaries + k)) return false;
      }
    }
    return true;
  }

 private:
  /// Elements that do not hold the node, which only wrong input leads to, are not gathered.
  bool add(unsigned element, unsigned node, unsigned visit) {
    if (visits_[element] == visit) return true;
    visits_[element] = visit;
    const unsigned* nodes = connectivity_.column(element);
    const unsigned* end = nodes + Columns::of(nodes).nodes;
    return std::find(nodes, end, node) == end || elements_.push_back(element);
  }

  const dense2D<unsigned>& connectivity_;
  const dense2D<unsigned>& neighbors_;
  dense1D<unsigned> visits_;  // the call that reached an element last
  dense1D<unsigned> elements_;
};

}  // namespace qel::gridwork::detail

#endif
