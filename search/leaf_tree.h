// A balanced k-d tree for fast queries: splits in one small array, points in leaves of up to 16.
//
// It answers in an order of its own; whoever asks puts the order right.
#ifndef QEL_GRIDWORK_SEARCH_LEAF_TREE_H
#define QEL_GRIDWORK_SEARCH_LEAF_TREE_H

#include <cstdint>

#include "qel/dense.h"
#include "qel/fixed.h"
#include "search/closest_two.h"
#include "search/tree_builder.h"

namespace qel::gridwork {

template <unsigned Dim>
class leaf_tree {
 public:
  using point = vector_fixed<double, Dim>;

  /// Holds the positions of the nodes, none of them NaN, under their ids and places.
  [[nodiscard]] bool build(const dense1D<tree_node<Dim>>& nodes);

  /// The two nodes nearest to `p`, those with the id `excluded` left out.
  closest_two find_closest(const point& p, unsigned excluded) const noexcept;

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

  range root() const noexcept { return {1, 0, static_cast<unsigned>(ids_.size())}; }
  bool is_leaf(const range& r) const noexcept { return r.number >= first_leaf_; }
  void part(item* items, const range& r) noexcept;
  void store(const item* items) noexcept;
  void scan_leaf(const range& leaf, const point& p, unsigned excluded, closest_two& closest) const noexcept;

  unsigned first_leaf_ = 1;
  dense1D<split> splits_;
  dense1D<double> coordinates_[Dim];
  dense1D<unsigned> ids_;
  dense1D<unsigned> places_;
};

}  // namespace qel::gridwork

#endif
