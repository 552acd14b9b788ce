// Numbers of the usual form, eight digits at a time, in texts with scan_margin bytes in memory behind their end.
// io/text/number_scan.h knows all other forms.
//
// Functions are always inline: of one that small programs compile for size as well, the linker may keep that copy for all.
#ifndef QEL_GRIDWORK_IO_TEXT_PLAIN_NUMBER_H
#define QEL_GRIDWORK_IO_TEXT_PLAIN_NUMBER_H

#include <bit>
#include <cstdint>

#include "io/bytes/little_endian.h"
#include "io/text/exact_number.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {

/// The powers of ten that doubles hold exactly. Not in the function, where compilers copy them for each number.
inline constexpr double exact_powers_of_ten[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                                 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// Exact when mantissa and power of ten are exact doubles, because then one rounding remains (Clinger 1990). False when
/// they are not.
[[gnu::always_inline]] inline bool convert_exactly(const decimal& number, double& value) noexcept {
  if (number.digits > most_mantissa_digits || number.mantissa > (std::uint64_t{1} << 53)) return false;
  if (number.exponent < -22 || number.exponent > 22) return false;
  const auto mantissa = static_cast<double>(static_cast<std::int64_t>(number.mantissa));
  value = number.exponent < 0 ? mantissa / exact_powers_of_ten[-number.exponent]
                              : mantissa * exact_powers_of_ten[number.exponent];
  return true;
}

/// Without a branch, for it would be a guess.
constexpr const char* skip_sign(const char* text) noexcept { return text + (*text == '-' || *text == '+' ? 1 : 0); }

/// A mark in the highest bit of each byte of a word of eight characters that is no digit; above the lowest such byte, of
/// others as well. The lowest byte is the first character.
constexpr std::uint64_t marks_of_others(std::uint64_t word) noexcept {
  return ((word + 0x4646464646464646) | (word - 0x3030303030303030)) & 0x8080808080808080;
}

/// How many digits a word begins with, from its marks.
constexpr int digits_before(std::uint64_t others) noexcept { return std::countr_zero(others) / 8; }

/// The number that the values of eight digits make, joined to pairs, fours and eight (Lemire 2021, "Number parsing at a gigabyte per
/// second").
[[gnu::always_inline]] constexpr std::uint64_t join_values(std::uint64_t word) noexcept {
  word = 10 * word + (word >> 8);
  constexpr std::uint64_t every_second_pair = 0x000000ff000000ff;
  return ((word & every_second_pair) * (100 + (std::uint64_t{1000000} << 32)) +
          ((word >> 16) & every_second_pair) * (1 + (std::uint64_t{10000} << 32))) >>
         32;
}

[[gnu::always_inline]] constexpr std::uint64_t join_eight_digits(std::uint64_t word) noexcept {
  return join_values(word - 0x3030303030303030);
}

/// The number that the first six characters of a word make.
[[gnu::always_inline]] constexpr std::uint64_t join_six_digits(std::uint64_t word) noexcept {
  return join_eight_digits(word << 16 | 0x3030);
}

/// Scans up to seven digits and returns the position behind them; the text itself when there are none, or more. Without
/// a branch for each digit: how many there are would be a guess.
inline const char* scan_short_unsigned(const char* text, unsigned& value) noexcept {
  const std::uint64_t word = load_uint64(text), others = marks_of_others(word);
  const int bits = 8 * digits_before(others);
  if (bits == 0 || others == 0) return text;
  constexpr std::uint64_t zeros = 0x3030303030303030;
  value = static_cast<unsigned>(join_eight_digits(word << (64 - bits) | zeros >> bits));
  return text + bits / 8;
}

/// Appends the digits at `text` to a number, which wraps when there are more than it holds. Returns the position behind
/// them.
[[gnu::always_inline]] inline const char* append_digits(const char* text, std::uint64_t& number) noexcept {
  for (; is_digit(*text); ++text) number = 10 * number + static_cast<std::uint64_t>(*text - '0');
  return text;
}

/// As append_digits(), for digits that usually are eight and more, or six.
[[gnu::always_inline]] inline const char* append_many_digits(const char* text, std::uint64_t& number) noexcept {
  std::uint64_t word = load_uint64(text), others = marks_of_others(word);
  for (; others == 0; others = marks_of_others(word)) {
    number = 100000000 * number + join_eight_digits(word);
    word = load_uint64(text += 8);
  }
  if (digits_before(others) != 6) return append_digits(text, number);
  number = 1000000 * number + join_six_digits(word);
  return text + 6;
}

/// Scans the digits of an exponent; null when there are none or more than any double needs.
[[gnu::always_inline]] inline const char* scan_plain_exponent(const char* text, std::int64_t& exponent) noexcept {
  const bool negative = *text == '-';
  text += negative || *text == '+' ? 1 : 0;
  std::uint64_t value = 0;
  const char* const end = append_digits(text, value);
  if (end == text || end - text > 4) return nullptr;
  exponent += negative ? -static_cast<std::int64_t>(value) : static_cast<std::int64_t>(value);
  return end;
}

/// Scans the form of a decimal number without a sign, whatever follows. Null when there is none.
[[gnu::always_inline]] inline const char* scan_plain_digits(const char* text, decimal& number) noexcept {
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

/// True where a number in plain form ends.
constexpr bool ends_plain_form(char c) noexcept { return static_cast<unsigned char>(c) <= ' '; }

/// Scans nothing or an exponent of two digits, as printf writes it, where a number ends then; else null.
[[gnu::always_inline]] inline const char* scan_printed_end(const char* text, std::int64_t& exponent) noexcept {
  if (ends_plain_form(*text)) return text;
  const std::uint32_t word = load_uint32(text);
  const bool negative = (word >> 8 & 0xff) == '-';
  const unsigned tens = (word >> 16 & 0xff) - '0', ones = (word >> 24) - '0';
  if ((word & 0xffff) != (negative ? 0x2d65U : 0x2b65U) || tens > 9 || ones > 9) return nullptr;
  const std::int64_t value = std::int64_t{10} * tens + ones;
  exponent += negative ? -value : value;
  return ends_plain_form(text[4]) ? text + 4 : nullptr;
}

/// Scans a digit, a point and six or eight digits, as most programs print numbers, with or without an exponent. Null when
/// there is another form.
[[gnu::always_inline]] inline const char* scan_printed_form(const char* text, decimal& number) noexcept {
  if (!is_digit(text[0]) || text[1] != '.') return nullptr;
  const auto front = static_cast<std::uint64_t>(text[0] - '0');
  const std::uint64_t word = load_uint64(text + 2), others = marks_of_others(word);
  if (others == 0) {
    number = {100000000 * front + join_eight_digits(word), -8, 9};
    return scan_printed_end(text + 10, number.exponent);
  }
  if (digits_before(others) != 6) return nullptr;
  number = {1000000 * front + join_six_digits(word), -6, 7};
  return scan_printed_end(text + 8, number.exponent);
}

/// The same for a number that ends at a blank, a control character or the end of the text; else null.
[[gnu::always_inline]] inline const char* scan_plain_form(const char* text, decimal& number) noexcept {
  const char* end = scan_printed_form(text, number);
  if (end != nullptr) return end;
  number = {};
  end = scan_plain_digits(text, number);
  return end == nullptr || !ends_plain_form(*end) ? nullptr : end;
}

/// Scans a sign and what Scan finds behind it; null when that is nothing.
template <const char* (*Scan)(const char*, decimal&)>
[[gnu::always_inline]] inline const char* scan_signed(const char* text, double& value) noexcept {
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
[[gnu::always_inline]] inline const char* scan_plain_double(const char* text, double& value) noexcept {
  return scan_signed<scan_plain_form>(skip_blanks(text), value);
}

}  // namespace qel::gridwork::detail::io

#endif
