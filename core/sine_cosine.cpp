// The angle is reduced to a multiple of a quarter turn and a rest by integer arithmetic, exact to 128 bits behind the
// point for angles of any size (M. H. Payne, R. N. Hanek, Radian reduction for trigonometric functions, SIGNUM Newsletter
// 18, 1983). The rest, a sum of two doubles, goes through the series.
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "core/double_double.h"
#include "core/elementary.h"

namespace qel::gridwork::detail {
namespace {

/// 2 / pi, the binary digits behind the point.
constexpr std::uint32_t two_over_pi[] = {
    0xa2f9836e, 0x4e441529, 0xfc2757d1, 0xf534ddc0, 0xdb629599, 0x3c439041, 0xfe5163ab, 0xdebbc561,
    0xb7246e3a, 0x424dd2e0, 0x06492eea, 0x09d1921c, 0xfe1deb1c, 0xb129a73e, 0xe88235f5, 0x2ebb4484,
    0xe99c7026, 0xb45f7e41, 0x3991d639, 0x835339f4, 0x9c845f8b, 0xbdf9283b, 0x1ff897ff, 0xde05980f,
    0xef2f118b, 0x5a0a6d1f, 0x6d367ecf, 0x27cb09b7, 0x4f463f66, 0x9e5fea2d, 0x7527bac7, 0xebe5f17b,
    0x3d0739f7, 0x8a5292ea, 0x6bfb5fb1, 0x1f8d5d08, 0x56033046, 0xfc7b6bab};

constexpr double_double half_pi = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};

/// An integer of 9 words, the lowest first.
using wide_integer = std::array<std::uint32_t, 9>;

/// The product of a mantissa and seven words of 2 / pi, the first of them given.
wide_integer multiply(std::uint64_t mantissa, const std::uint32_t* first_word) noexcept {
  const std::uint64_t halves[] = {mantissa & 0xffffffff, mantissa >> 32};
  wide_integer product = {};
  for (unsigned i = 0; i < 7; ++i) {
    std::uint64_t carry = 0;
    for (unsigned k = 0; k < 2; ++k) {
      carry += product[i + k] + halves[k] * first_word[6 - i];
      product[i + k] = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
    product[i + 2] = static_cast<std::uint32_t>(carry);
  }
  return product;
}

/// 32 bits of an integer, from that bit on.
std::uint32_t bits_from(const wide_integer& x, unsigned bit) noexcept {
  const unsigned word = bit / 32, shift = bit % 32;
  const std::uint64_t pair = x[word] | (word + 1 < x.size() ? std::uint64_t{x[word + 1]} << 32 : 0);
  return static_cast<std::uint32_t>(pair >> shift);
}

/// An angle as quarter turns, modulo 4, and a rest of at most pi / 4.
struct reduced_angle {
  unsigned quarters;
  double_double rest;
};

/// For finite angles of pi / 4 and more: angle = mantissa 2^exponent. Words of 2 / pi that contribute whole turns are left
/// out; so are those that contribute less than 2^-138 quarter turns. No double is nearer than 2^-62 to a multiple of
/// pi / 2 other than 0.
reduced_angle reduce(double angle) noexcept {
  const auto bits = std::bit_cast<std::uint64_t>(angle);
  const std::uint64_t mantissa = (bits & 0x000fffffffffffff) | 0x0010000000000000;
  const int exponent = static_cast<int>(bits >> 52) - 1075;
  const unsigned skipped = exponent < 2 ? 0 : static_cast<unsigned>(exponent - 2) / 32;
  const wide_integer product = multiply(mantissa, two_over_pi + skipped);
  const auto point = static_cast<unsigned>(static_cast<int>(32 * (skipped + 7)) - exponent);

  std::uint64_t high = std::uint64_t{bits_from(product, point - 32)} << 32 | bits_from(product, point - 64);
  std::uint64_t low = std::uint64_t{bits_from(product, point - 96)} << 32 | bits_from(product, point - 128);
  unsigned quarters = bits_from(product, point) & 3;
  const bool rounds_up = high >> 63 != 0;
  if (rounds_up) {  // the rest becomes negative
    quarters = (quarters + 1) & 3;
    high = ~high + (low == 0 ? 1 : 0);
    low = ~low + 1;
  }
  const double sign = rounds_up ? -1 : 1;
  const double_double upper = sum_of_ordered(sign * 0x1p-32 * static_cast<double>(high >> 32),
                                             sign * 0x1p-64 * static_cast<double>(high & 0xffffffff));
  const double lower = sign * 0x1p-128 * static_cast<double>(low);
  return {quarters, (upper + double_double{lower, 0}) * half_pi};
}

/// sin(hi + lo) for a rest: the series up to the 17th power leaves less than 2^-67 of the result. The sum T of all
/// terms but the first is below 0.0784; six roundings of it and its coefficients, of which that of 1/120 counts little,
/// are below 5.2 2^-53 T, which is 0.41 ulp where the result is 1/2 and more and less below. The inner sum is off by
/// 0.08 ulp at most, the outer one by 0.5: together less than 0.99.
double sine_of_rest(const double_double& rest) noexcept {
  const double x = rest.hi;
  const double t = x * x;
  if (t < 0x1p-60) return x;
  const double tail =
      1.0 / 120 -
      t * (1.0 / 5040 -
           t * (1.0 / 362880 - t * (1.0 / 39916800 -
                                    t * (1.0 / 6227020800 - t * (1.0 / 1307674368000 - t * (1.0 / 355687428096000))))));
  return x + (rest.lo * (1 - t / 2) - t * x * (1.0 / 6 - t * tail));
}

/// cos(hi + lo) for a rest, the series up to the 18th power; 1 - x^2 / 2 with what its rounding loses. The other terms
/// are below 0.0156 and the result above 0.7, so that their roundings are below 0.13 ulp: with that of the sum, less
/// than 0.64.
double cosine_of_rest(const double_double& rest) noexcept {
  const double x = rest.hi;
  const double_double square = exact_product(x, x);
  const double t = square.hi;
  const double tail =
      1.0 / 24 -
      t * (1.0 / 720 -
           t * (1.0 / 40320 - t * (1.0 / 3628800 - t * (1.0 / 479001600 - t * (1.0 / 87178291200 -
                                                                               t * (1.0 / 20922789888000 -
                                                                                    t * (1.0 / 6402373705728000)))))));
  const double first = 1 - t / 2;
  const double lost = ((1 - first) - t / 2) - square.lo / 2;
  return first + (lost + (t * t * tail - x * rest.lo));
}

}  // namespace

sine_cosine sine_and_cosine(double angle) noexcept {
  if (!std::isfinite(angle)) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    return {nan, nan};
  }
  const double magnitude = std::abs(angle);
  const reduced_angle reduced = magnitude <= half_pi.hi / 2 ? reduced_angle{0, {magnitude, 0}} : reduce(magnitude);
  const double s = sine_of_rest(reduced.rest);
  const double c = cosine_of_rest(reduced.rest);
  const sine_cosine by_quarter[] = {{s, c}, {c, -s}, {-s, -c}, {-c, s}};
  const sine_cosine result = by_quarter[reduced.quarters];
  return {std::signbit(angle) ? -result.sine : result.sine, result.cosine};
}

}  // namespace qel::gridwork::detail
