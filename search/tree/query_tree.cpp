#include "search/tree/query_tree.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "core/check.h"
#include "core/position_table.h"
#include "core/result.h"

namespace qel::gridwork::detail {
namespace {

/// A subtree beyond a split, and how far off it is at least: one square for each axis.
template <unsigned Dim>
struct far_range {
  subtree range;
  double squares[Dim];

  double bound() const noexcept { return std::accumulate(squares, squares + Dim, 0.0); }
};

}  // namespace

template <unsigned Dim>
struct query_tree<Dim>::closest_two {
  double best = std::numeric_limits<double>::max();
  double second = std::numeric_limits<double>::max();
  unsigned id = none;
  const leaf* where = nullptr;
  unsigned index = 0;

  void consider(double square, const leaf& candidate_leaf, unsigned candidate_index) noexcept {
    const unsigned candidate = candidate_leaf.ids[candidate_index];
    if (square < best) {
      if (candidate != id) second = best;
      best = square;
      id = candidate;
      where = &candidate_leaf;
      index = candidate_index;
    } else if (square < second && candidate != id) {
      second = square;
    }
  }

  /// Nodes farther off than this can no longer matter: squares that differ by more do not change places by rounding,
  /// which is below 1e-14.
  double reach() const noexcept { return best * (1 + 4e-13); }

  /// True when nothing can make the winner clear any more.
  bool is_tied_at_zero() const noexcept { return second == 0; }
};

template <unsigned Dim>
bool query_tree<Dim>::build(const dense1D<tree_node<Dim>>& nodes) {
  const std::uint64_t count = nodes.size();
  first_leaf_ = first_leaf_of(count, leaf_size);
  dense1D<ordered_point> points;
  if (!points.resize(count) || !splits_.resize(first_leaf_) || !leaves_.resize(first_leaf_)) return false;
  count_ = static_cast<unsigned>(count);
  for (unsigned preorder = 0; preorder < count; ++preorder) {
    std::copy_n(nodes[preorder].p, Dim, points[preorder].p);
    points[preorder].id = nodes[preorder].id;
    points[preorder].preorder = preorder;
  }
  build_subtree(points.data(), root());
  return true;
}

/// The recursion is as deep as the tree, which is balanced.
template <unsigned Dim>
void query_tree<Dim>::build_subtree(ordered_point* points, const subtree& r) noexcept {
  const ordered_point* begin = points + r.begin;
  if (is_leaf(r)) return fill(leaves_[r.number - first_leaf_], begin, r.count);
  const unsigned axis = widest_axis<Dim>(begin, begin + r.count);
  splits_[r.number] = {split_at_median(points, r, axis), axis};
  build_subtree(points, r.left());
  build_subtree(points, r.right());
}

template <unsigned Dim>
void query_tree<Dim>::fill(leaf& stored, const ordered_point* points, unsigned count) noexcept {
  QEL_GRIDWORK_CHECK(count <= leaf_size);
  for (unsigned i = 0; i < leaf_size; ++i) {
    const bool is_there = i < count;
    for (unsigned a = 0; a < Dim; ++a) {
      stored.x[a][i] = is_there ? points[i].p[a] : std::numeric_limits<double>::quiet_NaN();
    }
    stored.ids[i] = is_there ? points[i].id : none;
    stored.preorders[i] = is_there ? points[i].preorder : none;
  }
}

template <unsigned Dim>
void query_tree<Dim>::scan_leaf(const leaf& scanned, const point& p, unsigned excluded, closest_two& closest) noexcept {
  double squares[leaf_size] = {};
  for (unsigned a = 0; a < Dim; ++a) {
    for (unsigned i = 0; i < leaf_size; ++i) {
      const double difference = scanned.x[a][i] - p[a];
      squares[i] += difference * difference;
    }
  }
  for (unsigned i = 0; i < leaf_size; ++i) {
    if (squares[i] < closest.second && scanned.ids[i] != excluded) closest.consider(squares[i], scanned, i);
  }
}

/// No clear winner: where squares over- or underflow, where another node is as near but for rounding, or where the next
/// node's distance, added to the point, rounds down to the winner: a search would then stop before it.
template <unsigned Dim>
bool query_tree<Dim>::has_certain_winner(const closest_two& closest, const point& p) noexcept {
  constexpr double smallest_safe = 1e-280;
  constexpr double largest_safe = 1e280;
  if (closest.id == none || closest.best >= largest_safe || closest.second < smallest_safe) return false;
  if (closest.best != 0 && (closest.best < smallest_safe || closest.second <= closest.reach())) return false;
  const double radius = closest.best == 0 ? 0 : std::sqrt(std::min(closest.second, closest.reach()));
  for (unsigned a = 0; a < Dim; ++a) {
    const double x = closest.where->x[a][closest.index];
    if (closest.best == 0 ? x != p[a] : x >= p[a] + radius) return false;
  }
  return true;
}

/// Asks for a leaf that comes next while another one is read.
template <unsigned Dim>
[[gnu::always_inline]] inline void query_tree<Dim>::prefetch_leaf(const subtree& next) const noexcept {
  constexpr std::size_t line = 64;
  if (!is_leaf(next)) return;
  for (std::size_t i = 0; i < sizeof(leaf); i += line) prefetch(reinterpret_cast<const char*>(&leaf_of(next)) + i);
}

template <unsigned Dim>
unsigned query_tree<Dim>::find_clear_closest(const point& p, unsigned excluded) const noexcept {
  const closest_two closest = find_closest_two(p, excluded);
  return has_certain_winner(closest, p) ? closest.id : none;
}

template <unsigned Dim>
typename query_tree<Dim>::closest_two query_tree<Dim>::find_closest_two(const point& p,
                                                                        unsigned excluded) const noexcept {
  using pending = far_range<Dim>;
  pending stack[deepest_split];
  unsigned waiting = 0;
  closest_two closest;
  pending current{root(), {}};
  for (;;) {
    while (!is_leaf(current.range)) {
      const split s = splits_[current.range.number];
      QEL_GRIDWORK_CHECK(waiting < deepest_split);
      const double offset = p[s.axis] - s.value;
      const bool right = offset >= 0;
      pending& far = stack[waiting++];
      far = current;
      far.range = right ? current.range.left() : current.range.right();
      far.squares[s.axis] = offset * offset;
      current.range = right ? current.range.right() : current.range.left();
    }
    if (waiting != 0) prefetch_leaf(stack[waiting - 1].range);
    scan_leaf(leaf_of(current.range), p, excluded, closest);
    if (closest.is_tied_at_zero()) return closest;
    do {
      if (waiting == 0) return closest;
      --waiting;
    } while (!(stack[waiting].bound() <= closest.reach()));
    current = stack[waiting];
  }
}

template <unsigned Dim>
unsigned query_tree<Dim>::find_in_box(const point& lower, const point& upper, node_in_order* nodes,
                                      unsigned most) const noexcept {
  subtree stack[deepest_split];
  unsigned waiting = 0;
  unsigned found = 0;
  subtree current = root();
  for (;;) {
    while (!is_leaf(current)) {
      const split s = splits_[current.number];
      const bool left = s.value >= lower[s.axis];
      const bool right = s.value <= upper[s.axis];
      QEL_GRIDWORK_CHECK(waiting < deepest_split);
      if (left && right) stack[waiting++] = current.right();
      if (!left && !right) return 0;  // an inverted box, or NaN
      current = left ? current.left() : current.right();
    }
    if (waiting != 0) prefetch_leaf(stack[waiting - 1]);
    const leaf& scanned = leaf_of(current);
    for (unsigned i = 0; i < leaf_size; ++i) {
      bool inside = true;
      for (unsigned a = 0; a < Dim; ++a) inside &= scanned.x[a][i] >= lower[a] && scanned.x[a][i] <= upper[a];
      if (!inside) continue;
      if (found == most) return most;
      QEL_GRIDWORK_CHECK(found < most);
      nodes[found++] = {scanned.preorders[i], scanned.ids[i]};
    }
    if (waiting == 0) return found;
    current = stack[--waiting];
  }
}

template class query_tree<2>;
template class query_tree<3>;

}  // namespace qel::gridwork::detail
