// Keeping products of several entries inside the range of numbers: scaling by powers of two, which changes no digit.
#ifndef QEL_GRIDWORK_CORE_SCALING_H
#define QEL_GRIDWORK_CORE_SCALING_H

#include <cmath>

namespace qel::gridwork::detail {

/// The exponent e for which 2^e x, x >= 0, is of the order of 1. 0, for no scaling, where x is near enough to 1 for
/// products of a dozen factors, and where x is 0 or not finite.
inline int scale_exponent(double x) noexcept {
  constexpr double most = 0x1p64;
  return (x > 1 / most && x < most) || !(x > 0 && std::isfinite(x)) ? 0 : -std::ilogb(x);
}

/// x 2^exponent for all x in [begin, end).
inline void scale(double* begin, double* end, int exponent) noexcept {
  if (exponent == 0) return;
  for (double* x = begin; x != end; ++x) *x = std::ldexp(*x, exponent);
}

/// The largest magnitude in [begin, end); NaNs count as 0.
inline double largest_magnitude(const double* begin, const double* end) noexcept {
  double largest = 0;
  for (const double* x = begin; x != end; ++x) largest = std::abs(*x) > largest ? std::abs(*x) : largest;
  return largest;
}

}  // namespace qel::gridwork::detail

#endif
