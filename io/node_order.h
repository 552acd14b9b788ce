// The order in which file formats list the nodes of an element, by local node number.
#ifndef QEL_GRIDWORK_IO_NODE_ORDER_H
#define QEL_GRIDWORK_IO_NODE_ORDER_H

namespace qel::gridwork::detail::io {

struct node_order {
  unsigned count;
  unsigned char nodes[20];
};

/// The first `count` nodes as they come.
constexpr node_order in_order(unsigned count) noexcept {
  node_order order{count, {}};
  for (unsigned k = 0; k < count; ++k) order.nodes[k] = static_cast<unsigned char>(k);
  return order;
}

// Where local edge k of this library is opposite node k, these formats number edges in the order of their first node.
inline constexpr node_order tria6_order = {6, {0, 1, 2, 5, 3, 4}};

// A positive tetrahedron of this library is a negative one there: nodes 1 and 2 change places, and the edges with them.
inline constexpr node_order mirrored_tetra4 = {4, {0, 2, 1, 3}};
inline constexpr node_order mirrored_tetra10 = {10, {0, 2, 1, 3, 5, 4, 6, 7, 9, 8}};

}  // namespace qel::gridwork::detail::io

#endif
