// e^x = 2^k e^r with |r| <= log(2) / 2, and the series of e^r.
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "core/double_double.h"
#include "core/elementary.h"

namespace qel::gridwork::detail {
namespace {

/// Products of the upper part and numbers of 11 bits are exact.
constexpr double_double log_2 = {0x1.62e42fefa38p-1, 0x1.ef35793c7673p-45};
constexpr double reciprocal_of_log_2 = 0x1.71547652b82fep+0;

/// e^r - 1 - r for |r| < 0.35; what the series leaves out is below 2^-60 r. It is below 0.068, and below 0.054 for r <
/// 0, where the result may be less than 1: its four roundings that count are below 0.22 ulp of the result, those of the
/// sums below 0.58.
double exponential_series(double r) noexcept {
  constexpr double coefficients[] = {1.0 / 6227020800, 1.0 / 479001600, 1.0 / 39916800, 1.0 / 3628800,
                                     1.0 / 362880,     1.0 / 40320,     1.0 / 5040,     1.0 / 720,
                                     1.0 / 120,        1.0 / 24,        1.0 / 6,        1.0 / 2};
  double sum = 0;
  for (const double c : coefficients) sum = sum * r + c;
  return sum * r * r;
}

/// x 2^k for 0.5 < x < 2. Where the result is a normal number, the product with a power of two is exact.
double times_power_of_2(double x, int k) noexcept {
  if (k < -1021 || k > 1023) return std::ldexp(x, k);
  return x * std::bit_cast<double>(static_cast<std::uint64_t>(1023 + k) << 52);
}

}  // namespace

double exponential(double x) noexcept {
  if (std::isnan(x)) return x;
  if (x > 710) return std::numeric_limits<double>::infinity();
  if (x < -746) return 0;
  constexpr double to_integers = 0x1.8p52;  // ulp: 1
  const double k = (x * reciprocal_of_log_2 + to_integers) - to_integers;
  const double_double r = exact_sum(x - k * log_2.hi, -k * log_2.lo);
  const double_double sum = exact_sum(1, r.hi);
  const double value = sum.hi + (sum.lo + (r.lo * sum.hi + exponential_series(r.hi)));
  return times_power_of_2(value, static_cast<int>(k));
}

}  // namespace qel::gridwork::detail
