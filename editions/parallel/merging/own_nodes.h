// What a rank finds out about its nodes by itself, as the serial library does.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_OWN_NODES_H
#define QEL_GRIDWORK_PARALLEL_MERGING_OWN_NODES_H

#include "merging/survivors.h"
#include "search/merging/ranked_positions.h"

namespace qel::gridwork::detail::parallel {

/// Maps each node to the first other one that is near, without a tolerance to the first one at its position; to itself where
/// there is none. False when memory ran out.
template <unsigned Dim>
[[nodiscard]] bool find_first_near(const ranked_positions<Dim>& positions, double tol, dense1D<unsigned>& map);

/// Nodes that others touch the cells of, and those that follow them; both in their order.
struct outer_nodes {
  const dense1D<linked_node>& nodes;
  const dense1D<follower>& followers;
};

/// Merges this rank's nodes as if there were no others. What a node is merged to follows from the nodes on the way from it,
/// each of which points at the first one that is near; so the result holds for all whose ways keep away from outer nodes. The
/// others are `linked`, with all on their ways; they and followers are not counted as merged. False when memory ran out.
template <unsigned Dim>
[[nodiscard]] bool merge_own(const dense2D<double>& coords, double tol, const outer_nodes& outer, survivors& found,
                             dense1D<linked_node>& linked);

extern template bool find_first_near<2>(const ranked_positions<2>&, double, dense1D<unsigned>&);
extern template bool find_first_near<3>(const ranked_positions<3>&, double, dense1D<unsigned>&);
extern template bool merge_own<2>(const dense2D<double>&, double, const outer_nodes&, survivors&,
                                  dense1D<linked_node>&);
extern template bool merge_own<3>(const dense2D<double>&, double, const outer_nodes&, survivors&,
                                  dense1D<linked_node>&);

}  // namespace qel::gridwork::detail::parallel

#endif
