// A balanced k-d tree for fast queries: splits in one small array, points in leaves of up to 16.
//
// It answers in an order of its own; whoever asks puts the order right.
#ifndef QEL_GRIDWORK_SEARCH_LEAF_TREE_H
#define QEL_GRIDWORK_SEARCH_LEAF_TREE_H

#include <cstdint>

#include "qel/dense.h"
#include "qel/fixed.h"
#include "search/tree_builder.h"

namespace qel::gridwork {

template <unsigned Dim>
class leaf_tree {
 public:
  using point = vector_fixed<double, Dim>;

  /// Holds the positions of the nodes, none of them NaN, under their ids and places.
  [[nodiscard]] bool build(const dense1D<tree_node<Dim>>& nodes);

  /// The node closest to `p`, nodes with the id `excluded` left out, if any search that keeps strictly nearer nodes must
  /// end with it, in whatever order it visits nodes and however distances are rounded. Else `none`.
  unsigned find_clear_closest(const point& p, unsigned excluded) const noexcept;

  /// Writes the places of the nodes in the closed box. Returns their number, or `most` when there are as many or more.
  unsigned find_in_box(const point& lower, const point& upper, unsigned* places, unsigned most) const noexcept;

 private:
  static constexpr unsigned leaf_size = 16;
  static constexpr unsigned deepest = 32;  // levels of splits that 2^32 nodes need, with room to spare

  struct item {
    double p[Dim];
    unsigned id, place;
  };

  struct split {
    double value;
    unsigned axis;
  };

  /// A subtree: its number in the heap of splits (children of k: 2k and 2k + 1) and its range of points.
  struct range {
    unsigned number, begin, count;

    range left() const noexcept { return {2 * number, begin, count / 2}; }
    range right() const noexcept { return {2 * number + 1, begin + count / 2, count - count / 2}; }
  };

  /// The nearest node so far, and how near the nearest one besides it is.
  struct closest_two;

  range root() const noexcept { return {1, 0, static_cast<unsigned>(ids_.size())}; }
  bool is_leaf(const range& r) const noexcept { return r.number >= first_leaf_; }
  void part(item* items, const range& r) noexcept;
  void store(const item* items) noexcept;
  closest_two find_closest_two(const point& p, unsigned excluded) const noexcept;
  void scan_leaf(const range& leaf, const point& p, unsigned excluded, closest_two& closest) const noexcept;
  bool is_clear(const closest_two& closest, const point& p) const noexcept;

  unsigned first_leaf_ = 1;
  dense1D<split> splits_;
  dense1D<double> coordinates_[Dim];
  dense1D<unsigned> ids_;
  dense1D<unsigned> places_;
};

}  // namespace qel::gridwork

#endif
