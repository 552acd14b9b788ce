// The length of the hypotenuse, with the same bits everywhere.
#include <algorithm>
#include <cmath>
#include <limits>

#include "core/double_double.h"
#include "core/elementary.h"

namespace qel::gridwork::detail {

namespace {

/// For numbers whose squares neither overflow nor lose digits. The squares are summed as pairs of doubles; one step of
/// Newton's method adds to the root what its rounding lost; it leaves less than 2^-50 ulp, and the last sum is rounded
/// once.
double hypotenuse_of_moderate(double a, double b) noexcept {
  const double_double square = exact_product(a, a) + exact_product(b, b);
  const double root = std::sqrt(square.hi);
  const double_double root_square = exact_product(root, root);
  const double missing = ((square.hi - root_square.hi) - root_square.lo) + square.lo;
  return root + missing / (2 * root);
}

}  // namespace

double hypotenuse(double a, double b) noexcept {
  a = std::abs(a);
  b = std::abs(b);
  const double larger = std::max(a, b);
  if (larger > 0x1p-400 && larger < 0x1p400 && b == b) return hypotenuse_of_moderate(a, b);
  if (std::isinf(a) || std::isinf(b)) return std::numeric_limits<double>::infinity();
  if (larger == 0 || std::isnan(a) || std::isnan(b)) return a + b;
  const int exponent = std::ilogb(larger);
  return std::ldexp(hypotenuse_of_moderate(std::ldexp(a, -exponent), std::ldexp(b, -exponent)), exponent);
}

}  // namespace qel::gridwork::detail
