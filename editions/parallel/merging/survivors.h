// The proximity merge of the nodes of all ranks.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_SURVIVORS_H
#define QEL_GRIDWORK_PARALLEL_MERGING_SURVIVORS_H

#include <cstdint>

#include "communication/team.h"
#include "merging/node_set.h"

namespace qel::gridwork::detail::parallel {

/// What the nodes of this rank are merged to: to nodes of this rank, or to others, numbered on behind these.
struct survivors {
  dense1D<unsigned> places;       // of each node's survivor; its own, if it survives
  dense1D<std::uint64_t> others;  // IDs of those that other ranks have, increasing
  dense2D<double> coords;         // where the others lie
  dense1D<unsigned> takers;       // where any survivor is merged itself: linked nodes, each of which, as a survivor,
  dense1D<position<3>> taken;     // comes to lie here
  std::uint64_t merged = 0;       // nodes of all ranks that do not survive

  /// Sets the places of linked nodes, and others, by the IDs of their survivors; `own` are those of this rank's nodes.
  /// False when memory ran out.
  [[nodiscard]] bool place(const dense1D<std::uint64_t>& own, const dense1D<linked_node>& linked,
                           const dense1D<std::uint64_t>& ids);
};

/// Collective. The map that the serial merge of all nodes gives, in the order of their ids. The square of `tol` is finite.
/// `in_full` tells whether positions of others, and the number of merged nodes, are wanted. The code of all ranks.
int find_survivors(team& ranks, int code, const node_set& nodes, double tol, bool in_full, survivors& found);

/// Collective. The same in space where the tolerance is infinite, by IDs alone: all finite nodes are near to all nodes but
/// those with a NaN. No node has to travel. The code of all ranks.
int find_survivors_anywhere(team& ranks, int code, const node_set& nodes, survivors& found);

}  // namespace qel::gridwork::detail::parallel

#endif
