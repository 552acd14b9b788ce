#include "quality/tetrahedron.h"

#include <cmath>

namespace qel::gridwork::detail {
namespace {

/// The even permutations other than the identity.
constexpr unsigned char same_orientation[11][4] = {{0, 2, 3, 1}, {0, 3, 1, 2}, {1, 0, 3, 2}, {1, 2, 0, 3},
                                                   {1, 3, 2, 0}, {2, 0, 1, 3}, {2, 1, 3, 0}, {2, 3, 0, 1},
                                                   {3, 0, 2, 1}, {3, 1, 0, 2}, {3, 2, 1, 0}};

}  // namespace

double settle_tetrahedron(const point<3>* const* nodes, double first) noexcept {
  double kept = first;
  for (const auto& order : same_orientation) {
    const double q =
        evaluate_tetrahedron(*nodes[order[0]], *nodes[order[1]], *nodes[order[2]], *nodes[order[3]]).quality;
    if (!(q * first > 0)) return 0;
    if (std::abs(q) < std::abs(kept)) kept = q;
    if (std::abs(kept) <= flat_quality) return kept;
  }
  return kept;
}

}  // namespace qel::gridwork::detail
