// The map of a proximity merge: each node to the first near node of a list.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_PROXIMITY_MERGE_H
#define QEL_GRIDWORK_SEARCH_MERGING_PROXIMITY_MERGE_H

#include "qel/dense.h"
#include "search/node_list.h"

namespace qel::gridwork::detail {

/// Merges the nodes of `list` among themselves. `coords` has 2 or 3 rows, `tol` is not negative.
///
/// `new_IDs` becomes the map of all columns of `coords`. Returns the number of merged nodes, or out_of_memory.
int proximity_merge(const dense2D<double>& coords, node_list list, dense1D<unsigned>& new_IDs, double tol);

/// Merges the nodes of `moving` onto those of `fixed`, another list.
int proximity_merge(const dense2D<double>& coords, node_list moving, node_list fixed, dense1D<unsigned>& new_IDs,
                    double tol);

/// The last step of a merge of all nodes among themselves, for those who look at the map before: from the first near node
/// of each, itself where there is none, to the node that it is merged to. Returns the number of merged nodes, or
/// out_of_memory.
int resolve_chains(dense1D<unsigned>& new_IDs);

}  // namespace qel::gridwork::detail

#endif
