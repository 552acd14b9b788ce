// Nodes on their way through cells.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_PLACED_NODE_H
#define QEL_GRIDWORK_SEARCH_MERGING_PLACED_NODE_H

#include <cstdint>

namespace qel::gridwork::detail {

/// A node as an entry of a cell. It asks for its nearest in rank where it is at home: in the one cell that holds its
/// position. In the other cells that its tolerance reaches into it is there to be found.
template <unsigned Dim>
struct placed_node {
  double p[Dim];
  unsigned rank;
  bool at_home;
};

/// The entries of one cell, in the order of their ranks.
template <unsigned Dim>
struct cell_nodes {
  const placed_node<Dim>* first;
  std::uint64_t count;

  const placed_node<Dim>* begin() const noexcept { return first; }
  const placed_node<Dim>* end() const noexcept { return first + count; }
  const placed_node<Dim>& operator[](std::uint64_t i) const noexcept { return first[i]; }
};

}  // namespace qel::gridwork::detail

#endif
