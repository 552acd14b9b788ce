// The proximity merge of the nodes of all ranks.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_SURVIVORS_H
#define QEL_GRIDWORK_PARALLEL_MERGING_SURVIVORS_H

#include <cstdint>

#include "communication/team.h"
#include "merging/node_set.h"

namespace qel::gridwork::detail::parallel {

/// What the nodes of this rank are merged to.
struct survivors {
  dense1D<std::uint64_t> ids;  // of each node, its own if it survives
  dense2D<double> coords;      // where they lie, if that was asked for
  std::uint64_t merged = 0;    // nodes of all ranks that do not survive
};

/// Collective. The map that the serial merge of all nodes gives, in the order of their ids. The square of `tol` is finite.
/// `with_coords` tells whether positions are wanted. The code of all ranks.
int find_survivors(team& ranks, int code, const node_set& nodes, double tol, bool with_coords, survivors& found);

/// Collective. The same in space where the tolerance is infinite, by IDs alone: all finite nodes are near to all nodes but
/// those with a NaN. No node has to travel. The code of all ranks.
int find_survivors_anywhere(team& ranks, int code, const node_set& nodes, dense1D<std::uint64_t>& survivors);

}  // namespace qel::gridwork::detail::parallel

#endif
