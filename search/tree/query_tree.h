// A balanced k-d tree for fast queries: splits in one small array, points in small leaves.
//
// It answers in an order of its own; whoever asks puts the order right.
#ifndef QEL_GRIDWORK_SEARCH_TREE_QUERY_TREE_H
#define QEL_GRIDWORK_SEARCH_TREE_QUERY_TREE_H

#include "core/limits.h"
#include "qel/dense.h"
#include "qel/fixed.h"
#include "search/tree/bulk_insertion.h"
#include "search/tree/median_split.h"

namespace qel::gridwork::detail {

/// A node and its number in pre-order, in which answers come.
struct node_in_order {
  unsigned preorder, id;

  friend bool operator<(const node_in_order& a, const node_in_order& b) noexcept { return a.preorder < b.preorder; }
};

template <unsigned Dim>
class query_tree {
 public:
  using point = vector_fixed<double, Dim>;

  /// Holds the positions of the nodes, none of them NaN, under their ids and numbers in pre-order.
  [[nodiscard]] bool build(const dense1D<tree_node<Dim>>& nodes);

  /// The node closest to `p`, nodes with the id `excluded` left out, if any search that keeps strictly nearer nodes
  /// must end with it, in whatever order it visits nodes and however distances are rounded. Else `none`.
  unsigned find_clear_closest(const point& p, unsigned excluded) const noexcept;

  /// Writes the nodes in the closed box. Returns their number, or `most` when there are as many or more.
  unsigned find_in_box(const point& lower, const point& upper, node_in_order* nodes, unsigned most) const noexcept;

 private:
  static constexpr unsigned leaf_size = limits::tree_leaf;

  struct ordered_point {
    double p[Dim];
    unsigned id, preorder;
  };

  struct split {
    double value;
    unsigned axis;
  };

  /// Positions by axis, so that they are compared side by side; NaN, which is nowhere, where there are fewer nodes.
  struct leaf {
    double x[Dim][leaf_size];
    unsigned ids[leaf_size];
    unsigned preorders[leaf_size];
  };

  /// The nearest node so far, and how near the nearest one besides it is.
  struct closest_two;

  subtree root() const noexcept { return {1, 0, count_}; }
  bool is_leaf(const subtree& r) const noexcept { return r.number >= first_leaf_; }
  const leaf& leaf_of(const subtree& r) const noexcept { return leaves_[r.number - first_leaf_]; }
  void build_subtree(ordered_point* points, const subtree& r) noexcept;
  static void fill(leaf& stored, const ordered_point* points, unsigned count) noexcept;
  closest_two find_closest_two(const point& p, unsigned excluded) const noexcept;
  void prefetch_leaf(const subtree& next) const noexcept;
  static void scan_leaf(const leaf& scanned, const point& p, unsigned excluded, closest_two& closest) noexcept;
  static bool has_certain_winner(const closest_two& closest, const point& p) noexcept;

  unsigned count_ = 0;
  unsigned first_leaf_ = 1;
  dense1D<split> splits_;
  dense1D<leaf> leaves_;
};

}  // namespace qel::gridwork::detail

#endif
