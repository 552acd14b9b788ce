// Correctly rounded decimal digits from one 64 x 64 bit product.
//
// A double is m 2^e with a 64-bit m. A power of ten is kept as its 64 leading bits, truncated. The upper half of the
// product of the two holds the digits that are wanted and a fraction that is too small by less than two units of its
// last place, so rounding is certain unless the fraction lies that close below one half; then std::to_chars decides.
// (The idea of Grisu, Loitsch 2010, with the fixed number of digits that printf asks for.)
#include "io/text/number_format.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

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

char* format_special(char* out, const char* word) noexcept {
  std::memcpy(out, word, 3);
  return out + 3;
}

/// value = mantissa * 2^exponent, of a finite, positive value.
struct binary {
  std::uint64_t mantissa;  // below 2^53
  int exponent;
};

binary split(double value) noexcept {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const auto biased = static_cast<int>(bits >> 52);
  const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
  return biased == 0 ? binary{fraction, -1074} : binary{fraction | (std::uint64_t{1} << 52), biased - 1075};
}

constexpr std::uint64_t million = 1000000;
constexpr double exact_millionths = 2e12;  // below 2^41, so that at least 12 bits of the mantissa are fraction

/// A value below `exact_millionths` in millionths, a tie to the even one. The product with the mantissa is exact, but
/// for ten bits, of which the last one that is kept tells whether any is set.
std::uint64_t round_to_millionths(binary value) noexcept {
  const auto shift = static_cast<unsigned>(-value.exponent) - 10;
  if (shift > 63) return 0;
  const std::uint64_t low = value.mantissa * million;
  const std::uint64_t product = (product_high(value.mantissa, million) << 54) | (low >> 10) | (low % 1024 != 0 ? 1 : 0);
  const std::uint64_t kept = product >> shift;
  const std::uint64_t cut = product - (kept << shift);
  const std::uint64_t half = std::uint64_t{1} << (shift - 1);
  return kept + (cut > half || (cut == half && kept % 2 != 0) ? 1 : 0);
}

}  // namespace

char* format_fixed(char* out, double value) noexcept {
  if (!(std::fabs(value) < exact_millionths)) {
    if (!std::isfinite(value)) return format_scientific(out, value, 6);
    return std::to_chars(out, out + longest_fixed, value, std::chars_format::fixed, 6).ptr;
  }
  if (std::signbit(value)) *out++ = '-';
  const std::uint64_t millionths = round_to_millionths(split(std::fabs(value)));
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
  const auto slow = [=] {
    return std::to_chars(out, out + longest_scientific, value, std::chars_format::scientific, static_cast<int>(digits))
        .ptr;
  };
  if (digits > 15) return slow();

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
  if (result.fraction == half || result.fraction + 1 == half) return slow();
  std::uint64_t number = result.integer + (result.fraction > half ? 1 : 0);
  if (number == small_powers[digits + 1]) {
    number /= 10;
    ++exponent;
  }
  return format_parts(out, number, digits, exponent);
}

}  // namespace qel::gridwork::detail::io
