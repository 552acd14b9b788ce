// The nodes, or the first in rank, that lie within a tolerance of a point, where many lie close together.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_BOX_TREE_H
#define QEL_GRIDWORK_SEARCH_MERGING_BOX_TREE_H

#include <algorithm>
#include <cstdint>
#include <utility>

#include "core/check.h"
#include "core/limits.h"
#include "core/result.h"
#include "qel/dense.h"
#include "search/geometry.h"
#include "search/merging/placed_node.h"
#include "search/tree/median_split.h"

namespace qel::gridwork::detail {

/// A balanced k-d tree of which each subtree knows the box around its nodes and the lowest of their ranks. Subtrees that
/// lie within the tolerance are answered by that rank alone, and those beyond it are passed by, so that a query looks at
/// the nodes near the surface of the ball only, however many there are. Distances are computed by monotonic steps:
/// rounding cannot put a node on the other side of what its box says.
template <unsigned Dim>
class box_tree {
 public:
  /// Holds those of the nodes whose ranks, which ascend, are below `rank_bound`. No coordinate is NaN.
  [[nodiscard]] bool build(const cell_nodes<Dim>& nodes, unsigned rank_bound) {
    const auto bound = std::partition_point(nodes.begin(), nodes.end(),
                                            [=](const placed_node<Dim>& node) { return node.rank < rank_bound; });
    const auto count = static_cast<std::uint64_t>(bound - nodes.begin());
    first_leaf_ = first_leaf_of(count, limits::box_leaf);
    items_.clear();
    bounds_.clear();
    if (count >= none || !items_.resize(count) || !bounds_.resize(2 * std::uint64_t{first_leaf_})) return false;
    std::copy(nodes.begin(), bound, items_.begin());
    if (count != 0) build_subtree(root());
    return true;
  }

  /// Calls visit(rank) for each node in the closed box p - reach .. p + reach, until that returns false. Returns whether
  /// it never did.
  template <class Visit>
  [[nodiscard]] bool for_each_in_box(const double* p, double reach, Visit visit) const {
    subtree stack[deepest_split];
    unsigned waiting = 0;
    if (!items_.empty()) stack[waiting++] = root();
    while (waiting != 0) {
      const subtree visited = stack[--waiting];
      if (!in_box_around<Dim>(p, closest_place(bounds_[visited.number], p).x, reach)) continue;
      if (!is_leaf(visited)) {
        stack[waiting++] = visited.right();
        stack[waiting++] = visited.left();
        continue;
      }
      const item* begin = items_.data() + visited.begin;
      for (const item* it = begin; it != begin + visited.count; ++it) {
        if (in_box_around<Dim>(p, it->p, reach) && !visit(it->rank)) return false;
      }
    }
    return true;
  }

  /// The lowest rank of a node within the tolerance of `p`, other than `self`; `none` when there is none. The square of
  /// `tol` must be finite.
  unsigned first_near(const double* p, double tol, unsigned self) const noexcept {
    subtree stack[deepest_split];
    unsigned waiting = 0;
    unsigned first = none;
    if (!items_.empty()) stack[waiting++] = root();
    while (waiting != 0) {
      const subtree visited = stack[--waiting];
      const bounds& b = bounds_[visited.number];
      if (b.lowest_rank >= first || !may_reach(b, p, tol)) continue;
      if (b.lowest_rank != self && is_within(b, p, tol)) {
        first = b.lowest_rank;
      } else if (is_leaf(visited)) {
        first = std::min(first, first_in_leaf(visited, p, tol, self));
      } else {
        QEL_GRIDWORK_CHECK(waiting + 2 <= deepest_split);
        subtree sooner = visited.left();
        subtree later = visited.right();
        if (bounds_[later.number].lowest_rank < bounds_[sooner.number].lowest_rank) std::swap(sooner, later);
        stack[waiting++] = later;
        stack[waiting++] = sooner;
      }
    }
    return first;
  }

 private:
  using item = placed_node<Dim>;

  struct bounds {
    double lower[Dim], upper[Dim];
    unsigned lowest_rank;
  };

  subtree root() const noexcept { return {1, 0, static_cast<unsigned>(items_.size())}; }
  bool is_leaf(const subtree& s) const noexcept { return s.number >= first_leaf_; }

  /// The recursion is as deep as the tree, which is balanced.
  void build_subtree(const subtree& s) noexcept {
    const item* begin = items_.data() + s.begin;
    const item* end = begin + s.count;
    bounds_[s.number] = bounds_of(begin, end);
    if (is_leaf(s)) return;
    split_at_median(items_.data(), s, widest_axis<Dim>(begin, end));
    build_subtree(s.left());
    build_subtree(s.right());
  }

  static bounds bounds_of(const item* begin, const item* end) noexcept {
    bounds b;
    std::copy_n(begin->p, Dim, b.lower);
    std::copy_n(begin->p, Dim, b.upper);
    b.lowest_rank = begin->rank;
    for (const item* it = begin; it != end; ++it) {
      b.lowest_rank = std::min(b.lowest_rank, it->rank);
      for (unsigned a = 0; a < Dim; ++a) {
        b.lower[a] = std::min(b.lower[a], it->p[a]);
        b.upper[a] = std::max(b.upper[a], it->p[a]);
      }
    }
    return b;
  }

  struct place {
    double x[Dim];
  };

  static place closest_place(const bounds& b, const double* p) noexcept {
    place closest;
    for (unsigned a = 0; a < Dim; ++a) closest.x[a] = std::clamp(p[a], b.lower[a], b.upper[a]);
    return closest;
  }

  /// False when no place in the box is near: its place closest to `p` is not.
  static bool may_reach(const bounds& b, const double* p, double tol) noexcept {
    return is_near<Dim>(p, closest_place(b, p).x, tol);
  }

  /// True when all places in the box are near: its corners and the place farthest from `p` are.
  static bool is_within(const bounds& b, const double* p, double tol) noexcept {
    double farthest[Dim];
    for (unsigned a = 0; a < Dim; ++a) {
      farthest[a] = p[a] - b.lower[a] > b.upper[a] - p[a] ? b.lower[a] : b.upper[a];
    }
    return in_box_around<Dim>(p, b.lower, tol) && in_box_around<Dim>(p, b.upper, tol) && is_near<Dim>(p, farthest, tol);
  }

  unsigned first_in_leaf(const subtree& leaf, const double* p, double tol, unsigned self) const noexcept {
    unsigned first = none;
    for (std::uint64_t i = leaf.begin; i < std::uint64_t{leaf.begin} + leaf.count; ++i) {
      const item& candidate = items_[i];
      if (candidate.rank < first && candidate.rank != self && is_near<Dim>(p, candidate.p, tol)) first = candidate.rank;
    }
    return first;
  }

  unsigned first_leaf_ = 1;
  dense1D<item> items_;
  dense1D<bounds> bounds_;
};

}  // namespace qel::gridwork::detail

#endif
