#include "search/leaf_tree.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/result.h"

namespace qel::gridwork {
namespace {

/// The axis along which the points are spread farthest.
template <unsigned Dim, class Item>
unsigned widest_axis(const Item* begin, const Item* end) noexcept {
  unsigned widest = 0;
  double largest = -1;
  for (unsigned a = 0; a < Dim; ++a) {
    double low = begin->p[a];
    double high = low;
    for (const Item* it = begin; it != end; ++it) {
      low = std::min(low, it->p[a]);
      high = std::max(high, it->p[a]);
    }
    if (high - low > largest) {
      largest = high - low;
      widest = a;
    }
  }
  return widest;
}

/// The value that parts items[0 .. half) from the rest along an axis, after parting them.
template <class Item>
double part_along(Item* begin, Item* half, Item* end, unsigned axis) noexcept {
  std::nth_element(begin, half, end, [axis](const Item& a, const Item& b) { return a.p[axis] < b.p[axis]; });
  return half->p[axis];
}

/// A subtree beyond a split, and how far off it is at least: one square for each axis.
template <unsigned Dim, class Range>
struct far_range {
  Range range;
  double squares[Dim];

  double bound() const noexcept {
    double sum = 0;
    for (const double square : squares) sum += square;
    return sum;
  }
};

}  // namespace

template <unsigned Dim>
struct leaf_tree<Dim>::closest_two {
  double best = std::numeric_limits<double>::max();
  double second = std::numeric_limits<double>::max();
  unsigned id = none;
  unsigned index = 0;

  void consider(double square, unsigned candidate, unsigned candidate_index) noexcept {
    if (square < best) {
      if (candidate != id) second = best;
      best = square;
      id = candidate;
      index = candidate_index;
    } else if (square < second && candidate != id) {
      second = square;
    }
  }

  /// Nodes farther off than this can no longer matter: squares that differ by more do not change places by rounding,
  /// which is below 1e-14.
  double reach() const noexcept { return best * (1 + 4e-13); }

  /// True when nothing can make the winner clear any more.
  bool is_hopeless() const noexcept { return second == 0; }
};

template <unsigned Dim>
bool leaf_tree<Dim>::build(const dense1D<tree_node<Dim>>& nodes) {
  const std::uint64_t count = nodes.size();
  while (first_leaf_ * std::uint64_t{leaf_size} < count) first_leaf_ *= 2;
  dense1D<item> items;
  if (!items.resize(count) || !splits_.resize(first_leaf_) || !ids_.resize(count) || !places_.resize(count))
    return false;
  for (dense1D<double>& axis : coordinates_) {
    if (!axis.resize(count + leaf_size, 0.0)) return false;  // a leaf is always read in full
  }
  for (unsigned place = 0; place < count; ++place) {
    std::copy_n(nodes[place].p, Dim, items[place].p);
    items[place].id = nodes[place].id;
    items[place].place = place;
  }
  part(items.data(), root());
  store(items.data());
  return true;
}

/// The recursion is as deep as the tree, which is balanced.
template <unsigned Dim>
void leaf_tree<Dim>::part(item* items, const range& r) noexcept {
  if (is_leaf(r)) return;
  item* begin = items + r.begin;
  const unsigned axis = widest_axis<Dim>(begin, begin + r.count);
  splits_[r.number] = {part_along(begin, begin + r.count / 2, begin + r.count, axis), axis};
  part(items, r.left());
  part(items, r.right());
}

template <unsigned Dim>
void leaf_tree<Dim>::store(const item* items) noexcept {
  for (std::uint64_t i = 0; i < ids_.size(); ++i) {
    for (unsigned a = 0; a < Dim; ++a) coordinates_[a][i] = items[i].p[a];
    ids_[i] = items[i].id;
    places_[i] = items[i].place;
  }
}

template <unsigned Dim>
void leaf_tree<Dim>::scan_leaf(const range& leaf, const point& p, unsigned excluded,
                               closest_two& closest) const noexcept {
  double squares[leaf_size] = {};
  for (unsigned a = 0; a < Dim; ++a) {
    const double* x = coordinates_[a].data() + leaf.begin;
    for (unsigned i = 0; i < leaf_size; ++i) {
      const double difference = x[i] - p[a];
      squares[i] += difference * difference;
    }
  }
  const unsigned* ids = ids_.data() + leaf.begin;
  for (unsigned i = 0; i < leaf.count; ++i) {
    if (squares[i] < closest.second && ids[i] != excluded) closest.consider(squares[i], ids[i], leaf.begin + i);
  }
}

/// No clear winner: where squares over- or underflow, where another node is as near but for rounding, or where the next
/// node's distance, added to the point, rounds down to the winner: a search would then stop before it.
template <unsigned Dim>
bool leaf_tree<Dim>::is_clear(const closest_two& closest, const point& p) const noexcept {
  constexpr double smallest_safe = 1e-280;
  constexpr double largest_safe = 1e280;
  if (closest.id == none || closest.best >= largest_safe || closest.second < smallest_safe) return false;
  if (closest.best != 0 && (closest.best < smallest_safe || closest.second <= closest.reach())) return false;
  const double radius = closest.best == 0 ? 0 : std::sqrt(std::min(closest.second, closest.reach()));
  for (unsigned a = 0; a < Dim; ++a) {
    const double x = coordinates_[a][closest.index];
    if (closest.best == 0 ? x != p[a] : x >= p[a] + radius) return false;
  }
  return true;
}

template <unsigned Dim>
unsigned leaf_tree<Dim>::find_clear_closest(const point& p, unsigned excluded) const noexcept {
  const closest_two closest = find_closest_two(p, excluded);
  return is_clear(closest, p) ? closest.id : none;
}

template <unsigned Dim>
typename leaf_tree<Dim>::closest_two leaf_tree<Dim>::find_closest_two(const point& p,
                                                                      unsigned excluded) const noexcept {
  using pending = far_range<Dim, range>;
  pending stack[deepest];
  unsigned waiting = 0;
  closest_two closest;
  pending current{root(), {}};
  for (;;) {
    while (!is_leaf(current.range)) {
      const split s = splits_[current.range.number];
      const double offset = p[s.axis] - s.value;
      const bool right = offset >= 0;
      pending& far = stack[waiting++];
      far = current;
      far.range = right ? current.range.left() : current.range.right();
      far.squares[s.axis] = offset * offset;
      current.range = right ? current.range.right() : current.range.left();
    }
    scan_leaf(current.range, p, excluded, closest);
    if (closest.is_hopeless()) return closest;
    do {
      if (waiting == 0) return closest;
      --waiting;
    } while (!(stack[waiting].bound() <= closest.reach()));
    current = stack[waiting];
  }
}

template <unsigned Dim>
unsigned leaf_tree<Dim>::find_in_box(const point& lower, const point& upper, unsigned* places,
                                     unsigned most) const noexcept {
  range stack[deepest];
  unsigned waiting = 0;
  unsigned found = 0;
  range current = root();
  for (;;) {
    while (!is_leaf(current)) {
      const split s = splits_[current.number];
      const bool left = s.value >= lower[s.axis];
      const bool right = s.value <= upper[s.axis];
      if (left && right) stack[waiting++] = current.right();
      if (!left && !right) return 0;  // an inverted box, or NaN
      current = left ? current.left() : current.right();
    }
    for (unsigned i = current.begin; i < current.begin + current.count; ++i) {
      bool inside = true;
      for (unsigned a = 0; a < Dim; ++a) inside &= coordinates_[a][i] >= lower[a] && coordinates_[a][i] <= upper[a];
      if (!inside) continue;
      if (found == most) return most;
      places[found++] = places_[i];
    }
    if (waiting == 0) return found;
    current = stack[--waiting];
  }
}

template class leaf_tree<2>;
template class leaf_tree<3>;

}  // namespace qel::gridwork
