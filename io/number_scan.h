// Numbers in text, as the C library's scanf reads "%lg" in the "C" locale, whatever the process's locale.
#ifndef QEL_GRIDWORK_IO_NUMBER_SCAN_H
#define QEL_GRIDWORK_IO_NUMBER_SCAN_H

namespace qel::gridwork::io {

/// Skips blanks and scans a number: decimal, hexadecimal, infinity or NaN. Returns the position behind it, or null when
/// there is none. The text ends with a NUL or a newline.
///
/// An exponent may lack its digits ("1e", "1e+"): it is consumed and counts as 0.
const char* scan_double(const char* text, double& value) noexcept;

/// As scan_double(), for a number whose value does not matter.
const char* skip_double(const char* text) noexcept;

}  // namespace qel::gridwork::io

#endif
