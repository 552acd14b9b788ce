// Fields of records: numbers as programs in Fortran write them.
#ifndef QEL_GRIDWORK_IO_TEXT_FIELD_H
#define QEL_GRIDWORK_IO_TEXT_FIELD_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#include "core/limits.h"
#include "io/text/number_scan.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io {

constexpr std::string_view trim(std::string_view text) noexcept {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

/// The fields of a line, with commas, blanks or both between them.
class field_list {
 public:
  explicit field_list(std::string_view line) noexcept : rest_(line) {}

  /// The next field; empty behind the last one.
  std::string_view next() noexcept {
    skip_blanks();
    const auto end = std::find_if(rest_.begin(), rest_.end(), [](char c) { return c == ',' || is_blank(c); });
    const std::string_view field = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
    rest_.remove_prefix(field.size());
    skip_blanks();
    if (!rest_.empty() && rest_.front() == ',') rest_.remove_prefix(1);
    return field;
  }

  void skip(unsigned count) noexcept {
    for (; count != 0; --count) next();
  }

 private:
  void skip_blanks() noexcept {
    while (!rest_.empty() && is_blank(rest_.front())) rest_.remove_prefix(1);
  }

  std::string_view rest_;
};

/// Scans a whole number of up to 18 digits that takes all of a field.
constexpr bool scan_integer(std::string_view field, std::int64_t& value) noexcept {
  const bool negative = !field.empty() && field.front() == '-';
  if (negative || (!field.empty() && field.front() == '+')) field.remove_prefix(1);
  while (field.size() > 1 && field.front() == '0') field.remove_prefix(1);
  if (field.empty() || field.size() > std::numeric_limits<std::int64_t>::digits10) return false;
  value = 0;
  for (const char c : field) {
    if (!is_digit(c)) return false;
    value = 10 * value + (c - '0');
  }
  if (negative) value = -value;
  return true;
}

/// A positive number of 31 bits, as nodes and elements have them.
constexpr bool scan_ID(std::string_view field, unsigned& ID) noexcept {
  std::int64_t value = 0;
  if (!scan_integer(field, value) || value < 1 || value > std::numeric_limits<std::int32_t>::max()) return false;
  ID = static_cast<unsigned>(value);
  return true;
}

/// Any number of 32 bits with or without a sign; a negative one modulo 2^32.
constexpr bool scan_reference(std::string_view field, unsigned& reference) noexcept {
  std::int64_t value = 0;
  if (!scan_integer(field, value)) return false;
  reference = static_cast<unsigned>(value);
  return value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::uint32_t>::max();
}

/// Scans a finite number that takes all of a field: [sign] digits [.] digits, with an exponent behind E, D or nothing
/// but its sign.
class real_scanner {
 public:
  [[nodiscard]] bool scan(std::string_view field, double& value) noexcept {
    if (field.size() > limits::longest_record) return false;
    field_ = field;
    at_ = 0;
    out_ = text_;
    copy_sign();
    unsigned digits = copy_digits();
    if (copy_if('.')) digits += copy_digits();
    if (digits == 0 || !copy_exponent() || at_ != field_.size()) return false;
    for (std::uint64_t k = 0; k <= scan_margin; ++k) out_[k] = '\0';
    return scan_number(text_, value) != nullptr && std::isfinite(value);
  }

 private:
  char peek() const noexcept { return at_ < field_.size() ? field_[at_] : '\0'; }

  bool copy_if(char c) noexcept {
    if (peek() != c) return false;
    *out_++ = c;
    ++at_;
    return true;
  }

  bool copy_sign() noexcept { return copy_if('-') || copy_if('+'); }

  unsigned copy_digits() noexcept {
    const std::size_t first = at_;
    for (; is_digit(peek()); ++at_) *out_++ = peek();
    return static_cast<unsigned>(at_ - first);
  }

  bool copy_exponent() noexcept {
    if (at_ == field_.size()) return true;
    const char letter = to_lower(peek());
    const bool has_letter = letter == 'e' || letter == 'd';
    at_ += has_letter ? 1 : 0;
    *out_++ = 'e';
    const bool has_sign = copy_sign();
    return (has_letter || has_sign) && copy_digits() != 0;
  }

  std::string_view field_;
  std::size_t at_ = 0;
  char* out_ = nullptr;
  char text_[limits::longest_record + 2 + scan_margin];
};

}  // namespace qel::gridwork::detail::io

#endif
