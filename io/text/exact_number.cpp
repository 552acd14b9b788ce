// The nearest double from one product with a power of ten, as in "Number parsing at a gigabyte per second" (Lemire 2021),
// but with 64 bits of the power. The product is a little too small. Where that leaves it open whether to round up, long
// integers compare the number with the place halfway between two doubles (Clinger 1990).
#include "io/text/exact_number.h"

#include <algorithm>
#include <limits>

#include "io/text/long_integer.h"
#include "io/text/powers_of_ten.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {
namespace {

/// The digits of a number in a text, without its point and the zeros in front.
class digit_reader {
 public:
  digit_reader(const char* text, std::uint64_t count) noexcept : text_(text), left_(count) {
    while (left_ != 0 && (*text_ == '0' || *text_ == '.')) left_ -= *text_++ == '0' ? 1 : 0;
  }

  /// Digits that next() has not yet read.
  std::uint64_t left() const noexcept { return left_; }

  unsigned next() noexcept {
    if (*text_ == '.') ++text_;
    --left_;
    return static_cast<unsigned>(*text_++ - '0');
  }

 private:
  const char* text_;
  std::uint64_t left_;
};

/// The first 19 digits that count: the number is at least mantissa 10^exponent and, if it is cut, less than one in the
/// mantissa above.
struct leading_digits {
  std::uint64_t mantissa;
  std::int64_t exponent;
  bool is_cut;
};

leading_digits lead(const decimal& number, const char* text) noexcept {
  if (number.digits <= most_mantissa_digits) return {number.mantissa, number.exponent, false};
  digit_reader digits(text, number.digits);
  std::uint64_t mantissa = 0;
  for (unsigned k = 0; k < most_mantissa_digits && digits.left() != 0; ++k) mantissa = 10 * mantissa + digits.next();
  return {mantissa, number.exponent + static_cast<std::int64_t>(digits.left()), digits.left() != 0};
}

/// Below, at or above 0 as decimal 10^power lies below, at or above a binary number. The two are near each other.
int compare(long_integer decimal, int power, const binary& number) noexcept {
  long_integer other(number.mantissa);
  (power < 0 ? other : decimal).multiply_by_power_of_5(static_cast<unsigned>(power < 0 ? -power : power));
  const int shift = number.exponent - power;
  (shift < 0 ? decimal : other).shift_left(static_cast<unsigned>(shift < 0 ? -shift : shift));
  return compare(decimal, other);
}

/// No place halfway between two doubles has more digits that count. What follows only tells whether it is all zeros.
constexpr unsigned most_digits_halfway = 768;

/// compare(), for a number in a text.
int compare_digits(const decimal& number, const char* text, const binary& place) noexcept {
  digit_reader digits(text, number.digits);
  long_integer value(0);
  for (unsigned k = 0; k < most_digits_halfway && digits.left() != 0; ++k) value.multiply_add(10, digits.next());
  const auto exponent = static_cast<int>(number.exponent + static_cast<std::int64_t>(digits.left()));
  while (digits.left() != 0) {
    if (digits.next() == 0) continue;
    value.multiply_add(10, 1);
    return compare(value, exponent - 1, place);
  }
  return compare(value, exponent, place);
}

/// A number cut to the 53 bits of a double, or fewer in front of subnormal ones.
struct cut_number {
  std::uint64_t kept;
  std::uint64_t rest;  ///< in units of the number's mantissa, of which `half` is the half of one in `kept`
  std::uint64_t half;
  std::int64_t exponent;

  double lower() const noexcept { return join(kept); }
  double upper() const noexcept { return join(kept + 1); }

  /// The place halfway between the two.
  binary middle() const noexcept { return {2 * kept + 1, static_cast<int>(exponent) - 1}; }

  /// Rounds a number that is exact: `is_cut` when it lies above by less than one in the rest.
  double round(bool is_cut) const noexcept {
    const bool is_above = rest > half || (rest == half && (is_cut || kept % 2 != 0));
    return is_above ? upper() : lower();
  }

 private:
  /// A mantissa of 2^52 to 2^53, or a subnormal one below.
  double join(std::uint64_t mantissa) const noexcept {
    const std::int64_t biased = exponent + 1075;
    if (biased > 2046) return std::numeric_limits<double>::infinity();
    constexpr std::uint64_t implied = std::uint64_t{1} << 52;
    return std::bit_cast<double>((static_cast<std::uint64_t>(biased) << 52) + (mantissa - implied));
  }
};

/// `mantissa` is not 0.
cut_number cut(std::uint64_t mantissa, std::int64_t exponent) noexcept {
  const int shift = std::countl_zero(mantissa);
  mantissa <<= shift;
  exponent -= shift;
  const std::int64_t dropped = std::max<std::int64_t>(11, -1074 - exponent);
  if (dropped > 64) return {0, 0, 1, -1074};  // below a half of the smallest double
  const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
  const std::uint64_t kept = (mantissa >> (dropped - 1)) >> 1;
  return {kept, mantissa - 2 * (kept * half), half, exponent + dropped};
}

}  // namespace

bool rounds_up(std::uint64_t integer, int power, const binary& value) noexcept {
  const int side = compare(long_integer(2 * integer + 1), power, {value.mantissa, value.exponent + 1});
  return side < 0 || (side == 0 && integer % 2 != 0);
}

double nearest_double(const decimal& number, const char* text) noexcept {
  const leading_digits leading = lead(number, text);
  if (leading.mantissa == 0 || leading.exponent < smallest_power) return 0;
  if (leading.exponent > largest_power) return std::numeric_limits<double>::infinity();
  const auto power = static_cast<int>(leading.exponent);
  const int shift = std::countl_zero(leading.mantissa);
  const std::uint64_t product = product_high(leading.mantissa << shift, powers_of_ten[power]);
  // Less than three units, or what was cut off; twice as much where the product has to be shifted.
  const std::uint64_t error = 2 * (3 + (std::uint64_t{leading.is_cut} << shift));

  const cut_number result = cut(product, binary_exponent(power) + 1 - shift);
  if (result.rest > result.half || result.half - result.rest >= error) return result.round(false);
  const int side = compare_digits(number, text, result.middle());
  return side > 0 || (side == 0 && result.kept % 2 != 0) ? result.upper() : result.lower();
}

double nearest_double(std::uint64_t mantissa, std::int64_t exponent, bool is_cut) noexcept {
  if (mantissa == 0) return 0;
  return cut(mantissa, exponent).round(is_cut);
}

}  // namespace qel::gridwork::detail::io
