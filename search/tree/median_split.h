// What balanced k-d trees have in common: numbered subtrees and the split at the median.
#ifndef QEL_GRIDWORK_SEARCH_TREE_MEDIAN_SPLIT_H
#define QEL_GRIDWORK_SEARCH_TREE_MEDIAN_SPLIT_H

#include <algorithm>
#include <cstdint>

#include "core/check.h"

namespace qel::gridwork::detail {

/// Levels of splits that 2^32 nodes need, with room to spare.
constexpr unsigned deepest_split = 32;

/// A subtree: its number in the heap of subtrees (children of k: 2k and 2k + 1) and its range of nodes.
struct subtree {
  unsigned number, begin, count;

  subtree left() const noexcept { return {2 * number, begin, count / 2}; }
  subtree right() const noexcept { return {2 * number + 1, begin + count / 2, count - count / 2}; }
};

/// The number of the first leaf, and of leaves, when each holds up to `leaf_size` nodes.
constexpr unsigned first_leaf_of(std::uint64_t count, unsigned leaf_size) noexcept {
  unsigned first = 1;
  while (first * std::uint64_t{leaf_size} < count) first *= 2;
  return first;
}

/// The axis along which the items, which have positions `p`, are spread farthest.
template <unsigned Dim, class Item>
unsigned widest_axis(const Item* begin, const Item* end) noexcept {
  QEL_GRIDWORK_CHECK(begin != end);
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

/// Splits the items of a subtree between its children at the median along an axis. Returns the value there.
template <class Item>
double split_at_median(Item* items, const subtree& s, unsigned axis) noexcept {
  QEL_GRIDWORK_CHECK(s.count >= 2);
  Item* half = items + s.right().begin;
  std::nth_element(items + s.begin, half, items + s.begin + s.count,
                   [axis](const Item& a, const Item& b) { return a.p[axis] < b.p[axis]; });
  return half->p[axis];
}

}  // namespace qel::gridwork::detail

#endif
