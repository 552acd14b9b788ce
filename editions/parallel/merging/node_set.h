// Nodes that are merged, and what they are merged to.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_NODE_SET_H
#define QEL_GRIDWORK_PARALLEL_MERGING_NODE_SET_H

#include <cstdint>

#include "qel/dense.h"

namespace qel::gridwork::detail::parallel {

/// The nodes of a rank.
struct node_set {
  unsigned dim;                       // 2 or 3, on all ranks the same
  const dense2D<double>& coords;      // dim x n
  const dense1D<std::uint64_t>& ids;  // increasing

  /// Nodes at one position whose ids divided by this are equal are one node, the first one, wherever they are.
  std::uint64_t ids_per_node = 1;
};

/// A node of a rank that is not merged without a look at those of other ranks.
struct linked_node {
  static constexpr int alone = -1;  // no other rank touches the cell where the node lies

  unsigned node;
  int home;          // the rank that handles that cell
  bool is_enclosed;  // others touch all cells that it touches
};

/// A node that goes where another one goes that lies at its position.
struct follower {
  unsigned node, followed;
};

template <unsigned Dim>
struct position {
  double p[Dim];
};

/// A node as others know it: which rank handles it, having all that is near.
template <unsigned Dim>
struct node_reference {
  double p[Dim];
  std::uint64_t id;
  int handler;
};

}  // namespace qel::gridwork::detail::parallel

#endif
