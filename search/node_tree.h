// The k-d tree behind node_detector.
//
// Nodes that were inserted in bulk lie in pre-order; nodes inserted later are appended and reached by links, until there
// are so many of them that the tree is built anew. Each node carries a copy of its position, so a search reads memory in
// one place.
#ifndef QEL_GRIDWORK_SEARCH_NODE_TREE_H
#define QEL_GRIDWORK_SEARCH_NODE_TREE_H

#include <cstdint>

#include "qel/dense.h"
#include "qel/fixed.h"
#include "search/tree_builder.h"

namespace qel::gridwork::detail {

template <unsigned Dim>
class node_tree {
 public:
  using point = vector_fixed<double, Dim>;

  explicit node_tree(const dense2D<double>& coords) noexcept : coords_(&coords) {}

  /// Gives a tree that was copied arrays of its own.
  [[nodiscard]] bool detach() noexcept;

  /// Adds the nodes of the list in shuffled order; entries that are no column of the coordinates are skipped.
  [[nodiscard]] bool insert(const dense1D<unsigned>& ids);

  unsigned size() const noexcept { return static_cast<unsigned>(nodes_.size()); }

  /// The node closest to `p`, nodes with the index `excluded` left out.
  unsigned find_closest(const point& p, unsigned excluded) const;

  /// The node closest to the position of a column of the coordinates, other than itself.
  unsigned find_closest_to_node(unsigned id) const;

  void find_in_box(const point& lower, const point& upper, dense1D<unsigned>& ids) const;

 private:
  using node = tree_node<Dim>;
  using item = tree_item<Dim>;

  item read_item(unsigned id, unsigned ordinal) const noexcept;
  bool insert_one_by_one(const dense1D<unsigned>& ids);
  void descend(const item& added);
  bool build_anew(const dense1D<unsigned>& ids);

  unsigned first_on_path(const point& p, unsigned excluded, double& radius) const;
  unsigned find_closest_in_order(const point& p, unsigned excluded) const;
  bool find_clear_winner(const point& p, unsigned excluded, unsigned& winner) const;

  const dense2D<double>* coords_;
  dense1D<node> nodes_;
  dense1D<unsigned> ordinals_;   // place of each node in the order of insertion
  std::uint64_t built_ = 0;      // nodes that were there when the tree was last built in bulk
  std::uint64_t descended_ = 0;  // steps taken since then by nodes inserted one by one
  bool has_nan_ = false;
};

extern template class node_tree<2>;
extern template class node_tree<3>;

}  // namespace qel::gridwork::detail

#endif
