// Numbers of the usual form, eight digits at a time, in texts with scan_margin bytes in memory behind their end.
// io/text/number_scan.h knows all other forms.
#ifndef QEL_GRIDWORK_IO_TEXT_PLAIN_NUMBER_H
#define QEL_GRIDWORK_IO_TEXT_PLAIN_NUMBER_H

#include <bit>
#include <cstdint>

#include "io/bytes/little_endian.h"
#include "io/text/exact_number.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {

/// Exact when mantissa and power of ten are exact doubles, because then one rounding remains (Clinger 1990). False when
/// they are not.
inline bool convert_exactly(const decimal& number, double& value) noexcept {
  constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                               1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  if (number.digits > most_mantissa_digits || number.mantissa > (std::uint64_t{1} << 53)) return false;
  if (number.exponent < -22 || number.exponent > 22) return false;
  const auto mantissa = static_cast<double>(static_cast<std::int64_t>(number.mantissa));
  value = number.exponent < 0 ? mantissa / powers[-number.exponent] : mantissa * powers[number.exponent];
  return true;
}

/// Without a branch, for it would be a guess.
constexpr const char* skip_sign(const char* text) noexcept { return text + (*text == '-' || *text == '+' ? 1 : 0); }

/// A mark in the highest bit of each byte of a word of eight characters that is no digit; above the lowest such byte, of
/// others as well. The lowest byte is the first character.
constexpr std::uint64_t marks_of_others(std::uint64_t word) noexcept {
  return ((word + 0x4646464646464646) | (word - 0x3030303030303030)) & 0x8080808080808080;
}

/// True when a word of eight characters is all digits.
constexpr bool is_eight_digits(std::uint64_t word) noexcept { return marks_of_others(word) == 0; }

/// The number that the values of eight digits make, joined to pairs, fours and eight (Lemire 2021, "Number parsing at a gigabyte per
/// second").
constexpr std::uint64_t join_values(std::uint64_t word) noexcept {
  word = 10 * word + (word >> 8);
  constexpr std::uint64_t every_second_pair = 0x000000ff000000ff;
  return ((word & every_second_pair) * (100 + (std::uint64_t{1000000} << 32)) +
          ((word >> 16) & every_second_pair) * (1 + (std::uint64_t{10000} << 32))) >>
         32;
}

constexpr std::uint64_t join_eight_digits(std::uint64_t word) noexcept {
  return join_values(word - 0x3030303030303030);
}

/// Scans up to seven digits and returns the position behind them; the text itself when there are none, or more. Without
/// a branch for each digit: how many there are would be a guess.
inline const char* scan_short_unsigned(const char* text, unsigned& value) noexcept {
  const std::uint64_t word = load_uint64(text), others = marks_of_others(word);
  const int bits = std::countr_zero(others) & ~7;  // of the digits
  if (bits == 0 || others == 0) return text;
  constexpr std::uint64_t zeros = 0x3030303030303030;
  value = static_cast<unsigned>(join_eight_digits(word << (64 - bits) | zeros >> bits));
  return text + bits / 8;
}

/// Appends the digits at `text` to a number, which wraps when there are more than it holds. Returns the position behind
/// them.
inline const char* append_digits(const char* text, std::uint64_t& number) noexcept {
  for (; is_digit(*text); ++text) number = 10 * number + static_cast<std::uint64_t>(*text - '0');
  return text;
}

/// As append_digits(), for digits that usually are eight and more.
inline const char* append_many_digits(const char* text, std::uint64_t& number) noexcept {
  for (std::uint64_t word = load_uint64(text); is_eight_digits(word); word = load_uint64(text += 8)) {
    number = 100000000 * number + join_eight_digits(word);
  }
  return append_digits(text, number);
}

/// Scans the digits of an exponent; null when there are none or more than any double needs.
inline const char* scan_plain_exponent(const char* text, std::int64_t& exponent) noexcept {
  const bool negative = *text == '-';
  text += negative || *text == '+' ? 1 : 0;
  std::uint64_t value = 0;
  const char* const end = append_digits(text, value);
  if (end == text || end - text > 4) return nullptr;
  exponent += negative ? -static_cast<std::int64_t>(value) : static_cast<std::int64_t>(value);
  return end;
}

/// Scans the form of a decimal number without a sign, whatever follows. Null when there is none.
inline const char* scan_plain_digits(const char* text, decimal& number) noexcept {
  const char* end = append_digits(text, number.mantissa);
  number.digits = static_cast<std::uint64_t>(end - text);
  if (*end == '.') {
    const char* const fraction = end + 1;
    end = append_many_digits(fraction, number.mantissa);
    number.digits += static_cast<std::uint64_t>(end - fraction);
    number.exponent = fraction - end;
  }
  if (number.digits == 0) return nullptr;
  return to_lower(*end) == 'e' ? scan_plain_exponent(end + 1, number.exponent) : end;
}

/// The same for a number that ends at a blank, a control character or the end of the text; else null.
inline const char* scan_plain_form(const char* text, decimal& number) noexcept {
  const char* const end = scan_plain_digits(text, number);
  return end == nullptr || static_cast<unsigned char>(*end) > ' ' ? nullptr : end;
}

/// Scans a sign and what Scan finds behind it; null when that is nothing.
template <const char* (*Scan)(const char*, decimal&)>
const char* scan_signed(const char* text, double& value) noexcept {
  const bool negative = *text == '-';
  text = skip_sign(text);
  decimal number;
  const char* const end = Scan(text, number);
  if (end == nullptr) return nullptr;
  if (!convert_exactly(number, value)) value = nearest_double(number, text);
  const std::uint64_t sign = negative ? std::uint64_t{1} << 63 : 0;  // no branch: it would be a guess
  value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) | sign);
  return end;
}

/// Scans what scan_double() scans, if it is in plain form; else returns null.
inline const char* scan_plain_double(const char* text, double& value) noexcept {
  return scan_signed<scan_plain_form>(skip_blanks(text), value);
}

}  // namespace qel::gridwork::detail::io

#endif
