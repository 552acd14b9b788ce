// The outcome of a nearest-node search that may visit nodes in any order.
#ifndef QEL_GRIDWORK_SEARCH_CLOSEST_TWO_H
#define QEL_GRIDWORK_SEARCH_CLOSEST_TWO_H

#include <cmath>
#include <limits>

#include "core/result.h"

namespace qel::gridwork {

/// The nearest node so far, and how near the nearest one besides it is.
struct closest_two {
  // Squared distances that differ by less than this factor may compare either way after rounding, which is below 1e-14.
  static constexpr double tie_factor = 1 + 4e-13;

  double best = std::numeric_limits<double>::max();
  double second = std::numeric_limits<double>::max();
  unsigned id = none;

  void consider(double square, unsigned candidate) noexcept {
    if (square < best) {
      if (candidate != id) second = best;
      best = square;
      id = candidate;
    } else if (square < second && candidate != id) {
      second = square;
    }
  }

  /// Nodes farther off than this can no longer matter.
  double reach() const noexcept { return best * tie_factor; }

  /// True when no order of visits can change the winner: nothing over- or underflowed, and the next node is farther off
  /// by more than the rounding of coordinates as large as `largest_coordinate` in a comparison with the search radius.
  bool is_clear(double largest_coordinate) const noexcept {
    constexpr double smallest_safe = 1e-280;
    constexpr double largest_safe = 1e280;
    if (id == none || best >= largest_safe) return false;
    if (best == 0) return second >= smallest_safe;
    if (best < smallest_safe || second <= best * tie_factor) return false;
    constexpr double rounding = 1e-15;
    const double distance = std::sqrt(best);
    const double gap = (second - best) / (2 * std::sqrt(second));  // at most the difference of the distances
    return gap > rounding * (largest_coordinate + distance);
  }

  /// True when nothing can make the winner clear any more.
  bool is_hopeless() const noexcept { return second == 0; }
};

}  // namespace qel::gridwork

#endif
