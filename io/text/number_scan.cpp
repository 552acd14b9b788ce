#include "io/text/number_scan.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <limits>

#include "io/text/plain_number.h"
#include "io/text/powers_of_ten.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {
namespace {

constexpr bool is_hex_digit(char c) noexcept {
  const char lower = to_lower(c);
  return is_digit(c) || (lower >= 'a' && lower <= 'f');
}

const char* scan_digits(const char* text, std::uint64_t& mantissa) noexcept {
  for (; is_digit(*text); ++text) mantissa = 10 * mantissa + static_cast<std::uint64_t>(*text - '0');
  return text;
}

/// The digits of an exponent behind `text`, with a limit that no mantissa can make up for.
const char* scan_exponent(const char* text, std::int64_t& exponent) noexcept {
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  std::int64_t digits = 0;
  for (; is_digit(*text); ++text) {
    if (digits < 1000000000) digits = 10 * digits + (*text - '0');
  }
  exponent += negative ? -digits : digits;
  return text;
}

/// Scans digits, point and exponent. Without a digit, there is no number.
const char* scan_decimal(const char* text, decimal& number) noexcept {
  const char* end = scan_digits(text, number.mantissa);
  number.digits = static_cast<std::uint64_t>(end - text);
  if (*end == '.') {
    const char* fraction = end + 1;
    end = scan_digits(fraction, number.mantissa);
    number.digits += static_cast<std::uint64_t>(end - fraction);
    number.exponent = fraction - end;
  }
  if (number.digits != 0 && to_lower(*end) == 'e') end = scan_exponent(end + 1, number.exponent);
  return end;
}

/// Place of the first digit other than 0 in front of the point (1, 2, ...) or behind it (0, -1, ...), in digits.
std::int64_t leading_place(const char* text, const char* end) noexcept {
  std::int64_t place = 0;
  bool found = false;
  for (const char* p = text; p != end && is_hex_digit(*p); ++p) {
    found = found || *p != '0';
    place += found ? 1 : 0;
  }
  if (found) return place;
  const char* point = text;
  while (point != end && *point != '.') ++point;
  for (const char* p = point; p != end && (*p == '.' || *p == '0'); ++p) place -= *p == '0' ? 1 : 0;
  return place;
}

/// from_chars() does not say on which side a number is out of range; `exponent` is in digits of the number's base.
double out_of_range_value(const char* text, const char* end, std::int64_t exponent) noexcept {
  return leading_place(text, end) + exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

/// The nearest double from one product with a power of ten, as in "Number parsing at a gigabyte per second" (Lemire 2021),
/// but with 64 bits of the power. The product is too small by less than three units of its upper half; false when that
/// leaves the rounding open, and outside the range of normal numbers.
bool convert_by_product(const decimal& number, double& value) noexcept {
  constexpr std::uint64_t most_digits = 19;  // that 64 bits hold
  if (number.digits > most_digits || number.mantissa == 0) return false;
  if (number.exponent < smallest_power || number.exponent > largest_power) return false;
  const auto power = static_cast<int>(number.exponent);
  const int shift = std::countl_zero(number.mantissa);
  const std::uint64_t product = product_high(number.mantissa << shift, powers_of_ten[power]);
  const auto dropped = static_cast<unsigned>(10 + (product >> 63));  // what is left has 53 bits
  const int biased = binary_exponent(power) + 1 - shift + static_cast<int>(dropped) + 1075;
  if (biased < 1 || biased > 2045) return false;
  const std::uint64_t rest = product & ((std::uint64_t{1} << dropped) - 1);
  const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
  if (rest <= half && half < rest + 3) return false;
  const std::uint64_t mantissa = (product >> dropped) + (rest > half ? 1 : 0);
  constexpr std::uint64_t implied = std::uint64_t{1} << 52;
  value = std::bit_cast<double>((static_cast<std::uint64_t>(biased) << 52) + (mantissa - implied));
  return true;
}

double convert_decimal(const char* text, const char* end) noexcept {
  double value = 0;
  const auto result = std::from_chars(text, end, value);
  if (result.ec != std::errc::result_out_of_range) return value;
  const char* letter = text;
  while (letter != end && to_lower(*letter) != 'e') ++letter;
  std::int64_t exponent = 0;
  if (letter != end) scan_exponent(letter + 1, exponent);
  return out_of_range_value(text, letter, exponent);
}

/// Scans what follows "0x". Null when nothing does.
const char* scan_hexadecimal(const char* text, double& value) noexcept {
  const char* end = text;
  bool has_digits = false;
  for (; is_hex_digit(*end); ++end) has_digits = true;
  if (*end == '.') ++end;
  for (; is_hex_digit(*end); ++end) has_digits = true;
  if (end == text) return nullptr;
  const char* letter = end;
  std::int64_t exponent = 0;
  if (has_digits && to_lower(*end) == 'p') end = scan_exponent(end + 1, exponent);
  value = 0;
  if (!has_digits) return end;
  const auto result = std::from_chars(text, end, value, std::chars_format::hex);
  if (result.ec == std::errc::result_out_of_range) value = out_of_range_value(text, letter, exponent / 4);
  return end;
}

/// Infinity or NaN. A word that goes on after "inf" must be "infinity" in full.
const char* scan_word(const char* text, double& value) noexcept {
  if (const char* end = match_keyword(text, "nan")) {
    value = std::numeric_limits<double>::quiet_NaN();
    return end;
  }
  const char* end = match_keyword(text, "inf");
  if (end == nullptr) return nullptr;
  value = std::numeric_limits<double>::infinity();
  return to_lower(*end) == 'i' ? match_keyword(end, "inity") : end;
}

/// Scans a number without a sign; a null `value` is not computed.
const char* scan_unsigned(const char* text, double* value) noexcept {
  double ignored = 0;
  if (text[0] == '0' && to_lower(text[1]) == 'x') {
    return scan_hexadecimal(text + 2, value != nullptr ? *value : ignored);
  }
  decimal number;
  const char* const end = scan_decimal(text, number);
  if (number.digits == 0) return scan_word(text, value != nullptr ? *value : ignored);
  if (value != nullptr && !convert_exactly(number, *value)) *value = convert_rounded(number, text, end);
  return end;
}

}  // namespace

double convert_rounded(const decimal& number, const char* text, const char* end) noexcept {
  double value = 0;
  return convert_by_product(number, value) ? value : convert_decimal(text, end);
}

const char* scan_double(const char* text, double& value) noexcept {
  text = skip_blanks(text);
  const char* end = scan_unsigned(skip_sign(text), &value);
  if (end != nullptr && *text == '-') value = -value;
  return end;
}

const char* skip_double(const char* text) noexcept { return scan_unsigned(skip_sign(skip_blanks(text)), nullptr); }

}  // namespace qel::gridwork::detail::io
