// Pieces, open and non-manifold boundaries of a mesh.
#ifndef QEL_GRIDWORK_CLI_REPORT_TOPOLOGY_H
#define QEL_GRIDWORK_CLI_REPORT_TOPOLOGY_H

#include <array>

#include "mesh.h"

namespace report {

/// The nodes of a side by increasing index, `~0U` behind them: two of an edge, three or four of a face.
using side = std::array<unsigned, 4>;

/// Of a mesh whose nodes are valid. Sides are the edges of faces, or the faces of solids, each counted once; faces
/// beside solids are not looked at.
struct topology {
  unsigned dim = 0;  ///< of the elements that were looked at: 2 or 3, or 0 when there are none
  std::uint64_t elements = 0;
  std::uint64_t sides = 0;
  std::vector<side> open;          ///< sides of one element alone
  std::vector<side> non_manifold;  ///< sides of three or more elements
  std::vector<side> turned;        ///< edges between faces that look to different sides, where these are asked for
};

outcome measure_topology(const mesh& m, topology& found, bool with_turned = false);

/// Nodes that elements use, and the pieces that they make: elements with a common node belong to one piece.
struct node_use {
  std::uint64_t used = 0;
  std::uint64_t pieces = 0;
  std::uint64_t first_unused = ~std::uint64_t{0};
  std::vector<unsigned> piece;  ///< for each node, the first node of its piece
};

node_use measure_node_use(const mesh& m);

}  // namespace report

#endif
