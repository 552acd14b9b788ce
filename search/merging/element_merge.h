// Merging of near nodes that belong to one element.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_ELEMENT_MERGE_H
#define QEL_GRIDWORK_SEARCH_MERGING_ELEMENT_MERGE_H

#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Merges and renumbers the nodes of [first, last) in one pass or, if `repeat`, in passes until one merges nothing.
///
/// `nodes` lists the distinct nodes of the matrices, `new_IDs` becomes the map of all columns of `coords`. Returns the
/// number of merged nodes, or out_of_memory.
int element_merge(const dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last,
                  const dense1D<unsigned>& nodes, dense1D<unsigned>& new_IDs, double tol, bool repeat);

}  // namespace qel::gridwork::detail

#endif
