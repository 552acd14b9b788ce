// Numbers of the usual form in records, read where they lie in a text with scan_margin bytes in memory behind its end.
// io/text/field.h knows all other forms.
#ifndef QEL_GRIDWORK_IO_TEXT_PLAIN_FIELD_H
#define QEL_GRIDWORK_IO_TEXT_PLAIN_FIELD_H

#include <cmath>
#include <cstddef>
#include <string_view>

#include "core/limits.h"
#include "io/text/plain_number.h"

namespace qel::gridwork::detail::io {

/// Scans digits that an unsigned holds, whatever follows; null when there are none, or more.
inline const char* scan_plain_unsigned(const char* text, unsigned& value) noexcept {
  constexpr std::ptrdiff_t most_digits = 9;
  const char* end = scan_short_unsigned(text, value);
  if (end != text) return end;
  unsigned digits = 0;
  for (; is_digit(*end); ++end) digits = 10 * digits + static_cast<unsigned>(*end - '0');
  value = digits;
  return end == text || end - text > most_digits ? nullptr : end;
}

/// Scans a finite number of usual length, whatever follows; null when there is none.
inline const char* scan_plain_real(const char* text, double& value) noexcept {
  const char* const end = scan_signed<scan_plain_digits>(text, value);
  return end != nullptr && end - text <= limits::plain_number && std::isfinite(value) ? end : nullptr;
}

inline const char* skip_spaces(const char* text) noexcept {
  while (*text == ' ') ++text;
  return text;
}

/// True where a line ends.
inline bool is_line_end(const char* text) noexcept { return *text == '\n' || (*text == '\r' && text[1] == '\n'); }

/// The newline behind a short text without some characters; null when there is one of them, a NUL, or too much.
inline const char* find_newline(const char* text, std::string_view refused) noexcept {
  const char* end = text;
  for (; *end != '\n'; ++end) {
    if (*end == '\0' || end - text == limits::plain_rest || refused.find(*end) != std::string_view::npos)
      return nullptr;
  }
  return end;
}

}  // namespace qel::gridwork::detail::io

#endif
