// log(2^k z) = k log(2) - log(c) + log(1 + r) with 1 + r = c z, where c = j / 512 is near 1 / z, so that c z - 1 is
// nearly always exact and |r| < 2^-7. Where it is not, its rounding is a quarter of the result's ulp at most: for z <
// 1, c z is a multiple of 2^-62 with |r| < 2^-8, and the result 2^-8 or more; for z > 1 a multiple of 2^-61, |r| <
// 2^-7, and the result 2^-7 or more, but for the first interval, where c is a multiple of 2^-8. With the last sum, less
// than 0.76 ulp. (P.-T. P. Tang, Table-driven implementation of the logarithm function in IEEE floating-point
// arithmetic, ACM TOMS 16, 1990). Beside 1, c = 1: nothing cancels.
#include <array>
#include <bit>
#include <cstdint>
#include <limits>

#include "core/double_double.h"
#include "core/elementary.h"

namespace qel::gridwork::detail {
namespace {

/// log(j / 512) = 2 artanh((j - 512) / (j + 512)), by its series.
constexpr double_double log_of_512ths(int j) noexcept {
  const double_double t = double_double{static_cast<double>(j - 512), 0} / static_cast<double>(j + 512);
  const double_double square = t * t;
  double_double sum = {};
  for (int n = 71; n > 0; n -= 2) sum = sum * square + double_double{1, 0} / static_cast<double>(n);
  return double_double{2, 0} * sum * t;
}

/// A logarithm whose upper part is a multiple of 2^-42: sums of up to 1100 such parts are exact.
struct split_log {
  double high;
  double low;
};

constexpr split_log split(const double_double& x) noexcept {
  constexpr double to_multiples = 0x1.8p10;  // ulp: 2^-42
  const double high = (x.hi + to_multiples) - to_multiples;
  return {high, (x.hi - high) + x.lo};
}

constexpr split_log log_2 = split(log_of_512ths(1024));

/// Mantissas are taken from [178/256, 356/256), which 128 intervals share: of width 1/256 below 1, of 1/128 from 1 on.
constexpr std::uint64_t first_mantissa = 0x3fe6400000000000;  // 178/256
constexpr unsigned interval_bits = 7;
constexpr int intervals = 1 << interval_bits;
constexpr int intervals_below_1 = 256 - 178;

struct interval {
  double inverse;       ///< c
  split_log minus_log;  ///< -log(c)
};

constexpr interval make_interval(int i) noexcept {
  const int numerator =
      i < intervals_below_1 ? 2 * (178 + i) + 1 : 512 + 4 * (i - intervals_below_1) + 2;  // of the middle
  const bool is_beside_1 = i == intervals_below_1 - 1 || i == intervals_below_1;
  const int j = is_beside_1 ? 512 : (512 * 512 + numerator / 2) / numerator;
  const double_double log = log_of_512ths(j);
  return {j / 512.0, split({-log.hi, -log.lo})};
}

constexpr auto table = [] {
  std::array<interval, intervals> all = {};
  for (int i = 0; i < intervals; ++i) all[static_cast<unsigned>(i)] = make_interval(i);
  return all;
}();

/// log(1 + r) - r for |r| < 2^-7. What the series leaves out is below 2^-65 r.
double log_series(double r) noexcept {
  const double t = r * r;
  const double lower = (-1.0 / 2 + r * (1.0 / 3)) + t * (-1.0 / 4 + r * (1.0 / 5));
  const double upper = (-1.0 / 6 + r * (1.0 / 7)) + t * (-1.0 / 8 + r * (1.0 / 9));
  return t * (lower + t * t * upper);
}

double log_of_special(double x) noexcept {
  if (x == 0) return -std::numeric_limits<double>::infinity();
  return x > 0 ? x : std::numeric_limits<double>::quiet_NaN();  // infinity; NaN too
}

}  // namespace

double logarithm(double x) noexcept {
  constexpr double smallest_normal = std::numeric_limits<double>::min();
  auto bits = std::bit_cast<std::uint64_t>(x);
  int exponent = 0;
  if (bits - 0x0010000000000000 >= 0x7ff0000000000000 - 0x0010000000000000) {
    if (!(x > 0 && x < smallest_normal)) return log_of_special(x);
    bits = std::bit_cast<std::uint64_t>(x * 0x1p54);
    exponent = -54;
  }
  const std::uint64_t offset = bits - first_mantissa;
  const interval& near = table[(offset >> (52 - interval_bits)) % intervals];
  exponent += static_cast<int>(static_cast<std::int64_t>(offset) >> 52);
  const auto z = std::bit_cast<double>(bits - (offset & 0xfff0000000000000));

  const auto z_high = std::bit_cast<double>(std::bit_cast<std::uint64_t>(z) & 0xffffffff00000000);
  const double r = (z_high * near.inverse - 1) + (z - z_high) * near.inverse;
  const double_double sum =
      sum_of_ordered(exponent * log_2.high + near.minus_log.high, r);  // the first summand is 0 or the larger one
  return sum.hi + (sum.lo + (exponent * log_2.low + near.minus_log.low) + log_series(r));
}

}  // namespace qel::gridwork::detail
