// Numbers in text, as the C library's scanf reads "%lg" in the "C" locale, whatever the process's locale.
#ifndef QEL_GRIDWORK_IO_TEXT_NUMBER_SCAN_H
#define QEL_GRIDWORK_IO_TEXT_NUMBER_SCAN_H

#include "io/text/plain_number.h"

namespace qel::gridwork::detail::io {

/// Skips blanks and scans a number: decimal, hexadecimal, infinity or NaN. Returns the position behind it, or null when
/// there is none. The text ends with a NUL or a newline.
///
/// An exponent may lack its digits ("1e", "1e+"): it is consumed and counts as 0.
const char* scan_double(const char* text, double& value) noexcept;

/// As scan_double(), for a number whose value does not matter.
const char* skip_double(const char* text) noexcept;

/// As scan_double() and skip_double(), but faster, for a text with scan_margin bytes in memory behind its end.
[[gnu::always_inline]] inline const char* scan_number(const char* text, double& value) noexcept {
  const char* const end = scan_plain_double(text, value);
  return end != nullptr ? end : scan_double(text, value);
}

[[gnu::always_inline]] inline const char* skip_number(const char* text) noexcept {
  decimal number;
  const char* const end = scan_plain_form(skip_sign(skip_blanks(text)), number);
  return end != nullptr ? end : skip_double(text);
}

}  // namespace qel::gridwork::detail::io

#endif
