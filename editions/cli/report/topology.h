// Pieces, open and non-manifold boundaries of a mesh.
#ifndef QEL_GRIDWORK_CLI_REPORT_TOPOLOGY_H
#define QEL_GRIDWORK_CLI_REPORT_TOPOLOGY_H

#include "mesh.h"

namespace report {

/// Counts of a mesh whose nodes are valid. Sides are the edges of faces, or the faces of solids, each counted once;
/// faces beside solids are not looked at.
struct topology {
  unsigned dim = 0;  ///< of the elements that were looked at: 2 or 3, or 0 when there are none
  std::uint64_t elements = 0;
  std::uint64_t sides = 0;
  std::uint64_t open = 0;            ///< sides of one element alone
  std::uint64_t non_manifold = 0;    ///< sides of three or more elements
  std::uint64_t first_open[2] = {};  ///< two nodes of the first open side
  std::uint64_t first_non_manifold[2] = {};
};

outcome measure_topology(const mesh& m, topology& found);

/// Nodes that elements use, and the pieces that they make: elements with a common node belong to one piece.
struct node_use {
  std::uint64_t used = 0;
  std::uint64_t pieces = 0;
  std::uint64_t first_unused = ~std::uint64_t{0};
};

node_use measure_node_use(const mesh& m);

}  // namespace report

#endif
