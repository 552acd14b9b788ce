// For each node of a list the first one of the list that is near.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_NEAR_NODES_H
#define QEL_GRIDWORK_SEARCH_MERGING_NEAR_NODES_H

#include "search/merging/box_tree.h"
#include "search/merging/cell_grid.h"
#include "search/merging/placed_node.h"
#include "search/merging/ranked_positions.h"

namespace qel::gridwork::detail {

/// Parts the nodes into cells, these into smaller ones, and so on, until all pairs of a cell can be compared. Every
/// node is also entered in the cells that its tolerance touches, so that each cell can be looked at by itself: it is
/// small enough for the caches, wherever its nodes lay in memory. Only in a cell that cannot be parted into smaller
/// ones, being hardly larger than the tolerance or too uneven, a tree finds the nodes.
template <unsigned Dim>
class near_nodes {
 public:
  /// Nodes of ranks from `rank_bound` on find others and are not found. The square of `tol` must be finite.
  near_nodes(const ranked_positions<Dim>& positions, unsigned rank_bound, double tol) noexcept
      : positions_(positions), rank_bound_(rank_bound), tol_(tol) {}

  /// Sets found[rank] to the lowest rank of another near node, for each node that has one. Those with a coordinate that
  /// is not finite have none. False when memory ran out.
  [[nodiscard]] bool find(unsigned* found) {
    found_ = found;
    return subdivide_all() && answer_cells(0);
  }

  /// Number of nodes that have one.
  unsigned found_count() const noexcept { return found_count_; }

 private:
  using node = placed_node<Dim>;
  using cell = cell_nodes<Dim>;

  /// What one subdivision leads to; cells of one depth use it in turn.
  struct subdivision {
    dense1D<node> nodes;          // by cell
    dense1D<std::uint64_t> ends;  // of the cells
  };

  [[nodiscard]] bool subdivide_all();
  [[nodiscard]] bool subdivide(const cell& divided, const cell_grid<Dim>& grid, subdivision& into);
  template <class ForEachNode>
  [[nodiscard]] bool distribute(const cell_grid<Dim>& grid, ForEachNode for_each_node, subdivision& into);

  [[nodiscard]] bool answer_cells(unsigned depth);
  [[nodiscard]] bool choose_way(const cell& asked, unsigned depth);
  void answer_by_pairs(const cell& asked) noexcept;
  [[nodiscard]] bool answer_by_tree(const cell& asked);
  void record_match(unsigned rank, unsigned first_near) noexcept;

  const ranked_positions<Dim>& positions_;
  unsigned rank_bound_;
  double tol_;
  unsigned* found_ = nullptr;
  unsigned found_count_ = 0;
  subdivision subdivisions_[limits::most_subdivisions];
  box_tree<Dim> tree_;
};

extern template class near_nodes<2>;
extern template class near_nodes<3>;

}  // namespace qel::gridwork::detail

#endif
