// Correctly rounded decimal digits from one 64 x 64 bit product.
//
// A double is m 2^e with a 64-bit m. A power of ten is kept as its 64 leading bits, truncated. The upper half of the
// product of the two holds the digits that are wanted and a fraction that is too small by less than two units of its
// last place, so rounding is certain unless the fraction lies that close below one half; then long integers decide.
// (The idea of Grisu, Loitsch 2010, with the fixed number of digits that printf asks for.)
#include "io/text/number_format.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "io/text/exact_number.h"
#include "io/text/long_integer.h"
#include "io/text/powers_of_ten.h"

namespace qel::gridwork::detail::io {
namespace {

constexpr std::uint64_t small_powers[] = {1,
                                          10,
                                          100,
                                          1000,
                                          10000,
                                          100000,
                                          1000000,
                                          10000000,
                                          100000000,
                                          1000000000,
                                          10000000000,
                                          100000000000,
                                          1000000000000,
                                          10000000000000,
                                          100000000000000,
                                          1000000000000000,
                                          10000000000000000,
                                          100000000000000000,
                                          1000000000000000000,
                                          10000000000000000000U};

struct scaled {
  std::uint64_t integer;
  std::uint64_t fraction;  // in units of 2^-fraction_bits
  unsigned fraction_bits;
};

/// m 2^e 10^n, where m has its top bit set and the result at least 7 bits of fraction.
scaled scale(std::uint64_t m, int e, int n) noexcept {
  const std::uint64_t product = product_high(m, powers_of_ten[n]);
  const auto bits = static_cast<unsigned>(-(e + binary_exponent(n) + 1));
  return {product >> bits, product & ((std::uint64_t{1} << bits) - 1), bits};
}

constexpr char digit_pairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839404142434445464748"
    "4950515253545556575859606162636465666768697071727374757677787980818283848586878889909192939495969798"
    "99";

/// Writes the lowest `count` digits of `number`.
void format_digits(char* out, std::uint64_t number, unsigned count) noexcept {
  for (; count >= 2; count -= 2, number /= 100) std::memcpy(out + count - 2, digit_pairs + 2 * (number % 100), 2);
  if (count == 1) *out = static_cast<char>('0' + number % 10);
}

char* format_exponent(char* out, int exponent) noexcept {
  *out++ = 'e';
  *out++ = exponent < 0 ? '-' : '+';
  const unsigned magnitude = static_cast<unsigned>(exponent < 0 ? -exponent : exponent);
  const unsigned count = magnitude < 100 ? 2 : 3;
  format_digits(out, magnitude, count);
  return out + count;
}

/// d.ddd and the exponent, from digits + 1 digits in one number.
char* format_parts(char* out, std::uint64_t number, unsigned digits, int exponent) noexcept {
  if (digits == 0) {
    *out++ = static_cast<char>('0' + number);
  } else {
    format_digits(out + 1, number, digits + 1);
    out[0] = out[1];
    out[1] = '.';
    out += digits + 2;
  }
  return format_exponent(out, exponent);
}

/// Writes an integer other than 0, which is taken apart.
char* format_long(char* out, long_integer& number) noexcept {
  constexpr unsigned block_digits = 9;
  std::uint32_t blocks[longest_fixed / block_digits];
  unsigned count = 0;
  while (!number.is_zero()) blocks[count++] = number.take_nine_digits();
  out = format_integer(out, blocks[--count]);
  for (; count != 0; out += block_digits) format_digits(out, blocks[--count], block_digits);
  return out;
}

char* format_special(char* out, const char* word) noexcept {
  std::memcpy(out, word, 3);
  return out + 3;
}

constexpr std::uint64_t million = 1000000;
constexpr double exact_millionths = 2e12;  // below 2^41, so that at least 12 bits of the mantissa are fraction

/// What is kept of a number, plus one when what is cut off is more than half of one, or a half and the sum is even.
constexpr std::uint64_t round_to_even(std::uint64_t kept, std::uint64_t cut, std::uint64_t half) noexcept {
  return kept + (cut > half || (cut == half && kept % 2 != 0) ? 1 : 0);
}

/// A value below `exact_millionths` in millionths, a tie to the even one. The product with the mantissa is exact, but
/// for ten bits, of which the last one that is kept tells whether any is set.
std::uint64_t round_to_millionths(binary value) noexcept {
  const auto shift = static_cast<unsigned>(-value.exponent) - 10;
  if (shift > 63) return 0;
  const std::uint64_t low = value.mantissa * million;
  const std::uint64_t product = (product_high(value.mantissa, million) << 54) | (low >> 10) | (low % 1024 != 0 ? 1 : 0);
  const std::uint64_t kept = product >> shift;
  const std::uint64_t cut = product - (kept << shift);
  return round_to_even(kept, cut, std::uint64_t{1} << (shift - 1));
}

/// "%f" of a value of `exact_millionths` and more: at most 12 bits of the mantissa are fraction.
char* format_large(char* out, const binary& value) noexcept {
  constexpr unsigned most_bits = 12;
  const auto bits = static_cast<unsigned>(std::max(-value.exponent, 0));
  const std::uint64_t whole = value.mantissa >> bits;
  const std::uint64_t fraction = (value.mantissa - (whole << bits)) << (most_bits - bits);
  const std::uint64_t product = fraction * million;
  const std::uint64_t kept = product >> most_bits;
  long_integer number(whole);
  number.shift_left(static_cast<unsigned>(std::max(value.exponent, 0)));
  out = format_long(out, number);
  *out = '.';
  format_digits(out + 1, round_to_even(kept, product - (kept << most_bits), std::uint64_t{1} << (most_bits - 1)), 6);
  return out + 7;
}

}  // namespace

char* format_fixed(char* out, double value) noexcept {
  if (!std::isfinite(value)) return format_scientific(out, value, 6);
  if (std::signbit(value)) *out++ = '-';
  value = std::fabs(value);
  if (value >= exact_millionths) return format_large(out, split(value));
  const std::uint64_t millionths = round_to_millionths(split(value));
  out = format_integer(out, millionths / million);
  *out = '.';
  format_digits(out + 1, millionths % million, 6);
  return out + 7;
}

char* format_upper_scientific(char* out, double value, unsigned digits) noexcept {
  char* const end = format_scientific(out, value, digits);
  // The letters are in "e-308" or "nan", at the end.
  for (char* p = end - std::min<std::ptrdiff_t>(5, end - out); p != end; ++p) {
    if (*p >= 'a' && *p <= 'z') *p = static_cast<char>(*p - ('a' - 'A'));
  }
  return end;
}

char* format_scientific(char* out, double value, unsigned digits) noexcept {
  if (std::signbit(value)) *out++ = '-';
  value = std::fabs(value);
  if (std::isnan(value)) return format_special(out, "nan");
  if (std::isinf(value)) return format_special(out, "inf");
  if (value == 0) return format_parts(out, 0, digits, 0);

  const binary parts = split(value);
  const int shift = std::countl_zero(parts.mantissa);
  const std::uint64_t m = parts.mantissa << shift;
  const int e = parts.exponent - shift;

  // The estimate of the exponent is exact or one too small.
  const auto precision = static_cast<int>(digits);
  int exponent = decimal_exponent(e + 63);
  scaled result = scale(m, e, precision - exponent);
  if (result.integer >= small_powers[digits + 1]) {
    ++exponent;
    result = scale(m, e, precision - exponent);
  }
  const std::uint64_t half = std::uint64_t{1} << (result.fraction_bits - 1);
  bool is_above = result.fraction > half;
  if (result.fraction == half || result.fraction + 1 == half) {
    is_above = rounds_up(result.integer, exponent - precision, parts);
  }
  std::uint64_t number = result.integer + (is_above ? 1 : 0);
  if (number == small_powers[digits + 1]) {
    number /= 10;
    ++exponent;
  }
  return format_parts(out, number, digits, exponent);
}

}  // namespace qel::gridwork::detail::io
