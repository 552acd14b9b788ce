// Numbers as text, as printf prints them in the "C" locale, whatever the process's locale.
#ifndef QEL_GRIDWORK_IO_NUMBER_FORMAT_H
#define QEL_GRIDWORK_IO_NUMBER_FORMAT_H

namespace qel::gridwork::io {

/// The most bytes that format_scientific() writes with up to 17 digits.
constexpr unsigned longest_scientific = 32;

/// Writes what printf("%.<digits>e") prints, without a NUL, and returns the position behind it. `digits` <= 17.
char* format_scientific(char* out, double value, unsigned digits) noexcept;

}  // namespace qel::gridwork::io

#endif
