// Fields of NASTRAN's cards with plain numbers, read where they lie in a text with scan_margin bytes in memory behind its
// end. All positions are those behind what was read, or null for what is unusual.
#ifndef QEL_GRIDWORK_IO_NASTRAN_PLAIN_FIELDS_H
#define QEL_GRIDWORK_IO_NASTRAN_PLAIN_FIELDS_H

#include <cstddef>
#include <cstring>

#include "io/text/plain_field.h"
#include "io/text/text.h"

namespace qel::gridwork::detail::io::nastran {

inline constexpr std::ptrdiff_t field_width = 8;

/// The start of the next card, where a line ends; null when that cannot be told, or when the card goes on there.
inline const char* next_card(const char* p) noexcept {
  p += *p == '\r' ? 1 : 0;
  return *p == '\n' && is_letter(p[1]) ? p + 1 : nullptr;
}

/// The field behind a comma, and a blank.
inline const char* behind_comma(const char* p) noexcept { return p + (p[1] == ' ' ? 2 : 1); }

/// Where a line has all its fields: the comma behind the mark of the next one, if that goes on.
inline const char* pass_full_line(const char* p) noexcept {
  const char* end = p;
  if (p[0] == ',' && p[1] == '+') end = find_newline(p + 1, ",$");
  if (end == nullptr || *end != '\n') return p;
  if (end[1] == ',') return end + 1;
  if (end[1] != '+') return end;
  for (++end; *end != ','; ++end) {
    if (*end == '$' || *end == '*' || static_cast<unsigned char>(*end) < ' ') return p;
  }
  return end;
}

inline const char* skip_blank_columns(const char* p, std::ptrdiff_t count) noexcept {
  for (; count != 0; --count, ++p) {
    if (*p != ' ') return nullptr;
  }
  return p;
}

/// The end of a field whose number ends at `p`; that of the line if it comes first.
inline const char* end_field(const char* p, const char* end) noexcept {
  if (p == nullptr || p > end) return nullptr;
  for (; p != end && !is_line_end(p); ++p) {
    if (*p != ' ') return nullptr;
  }
  return p;
}

inline const char* read_unsigned_field(const char* p, std::ptrdiff_t size, unsigned& value) noexcept {
  return end_field(scan_plain_unsigned(skip_spaces(p), value), p + size);
}

inline const char* read_real_field(const char* p, std::ptrdiff_t size, double& value) noexcept {
  return end_field(scan_plain_real(skip_spaces(p), value), p + size);
}

/// Passes over the first field of a line that goes on with a card.
inline const char* skip_mark(const char* p) noexcept {
  const char* const end = p + field_width;
  for (; p != end; ++p) {
    if (*p == ',' || *p == '$' || static_cast<unsigned char>(*p) < ' ') return nullptr;
  }
  return p;
}

inline const char* skip_narrow_mark(const char* p) noexcept {
  return std::memchr(p, '*', static_cast<std::size_t>(field_width)) == nullptr ? skip_mark(p) : nullptr;
}

}  // namespace qel::gridwork::detail::io::nastran

#endif
