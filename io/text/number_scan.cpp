#include "io/text/number_scan.h"

#include <cstdint>
#include <limits>

#include "io/text/exact_number.h"
#include "io/text/plain_number.h"
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

constexpr unsigned hex_value(char c) noexcept {
  return static_cast<unsigned>(is_digit(c) ? c - '0' : to_lower(c) - 'a' + 10);
}

/// The leading bits of a number in hexadecimal digits: mantissa 2^exponent, or a little more if it is cut.
struct hexadecimal {
  std::uint64_t mantissa = 0;
  std::int64_t exponent = 0;
  bool is_cut = false;

  void append(char digit) noexcept {
    const unsigned value = hex_value(digit);
    if (mantissa >> 60 == 0) {
      mantissa = 16 * mantissa + value;
    } else {
      exponent += 4;
      is_cut = is_cut || value != 0;
    }
  }
};

/// Scans what follows "0x". Null when nothing does.
const char* scan_hexadecimal(const char* text, double& value) noexcept {
  hexadecimal number;
  const char* end = text;
  for (; is_hex_digit(*end); ++end) number.append(*end);
  bool has_digits = end != text;
  if (*end == '.') {
    for (++end; is_hex_digit(*end); ++end, has_digits = true) number.append(*end), number.exponent -= 4;
  }
  if (end == text) return nullptr;
  if (has_digits && to_lower(*end) == 'p') end = scan_exponent(end + 1, number.exponent);
  value = nearest_double(number.mantissa, number.exponent, number.is_cut);
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
  if (value != nullptr && !convert_exactly(number, *value)) *value = nearest_double(number, text);
  return end;
}

}  // namespace

const char* scan_double(const char* text, double& value) noexcept {
  text = skip_blanks(text);
  const char* end = scan_unsigned(skip_sign(text), &value);
  if (end != nullptr && *text == '-') value = -value;
  return end;
}

const char* skip_double(const char* text) noexcept { return scan_unsigned(skip_sign(skip_blanks(text)), nullptr); }

}  // namespace qel::gridwork::detail::io
