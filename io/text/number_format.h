// Numbers as text, as printf prints them in the "C" locale, whatever the process's locale.
#ifndef QEL_GRIDWORK_IO_TEXT_NUMBER_FORMAT_H
#define QEL_GRIDWORK_IO_TEXT_NUMBER_FORMAT_H

#include <charconv>
#include <cstdint>
#include <cstring>

namespace qel::gridwork::detail::io {

/// The most bytes that format_scientific() writes with up to 17 digits, format_fixed(), and format_integer().
constexpr unsigned longest_scientific = 32;
constexpr unsigned longest_fixed = 317;
constexpr unsigned longest_integer = 20;

/// Moves a field of fewer than `width` bytes to the right of that width, and returns the position behind it.
inline char* align_right(char* begin, char* end, unsigned width) noexcept {
  const auto length = static_cast<unsigned>(end - begin);
  if (length >= width) return end;
  std::memmove(begin + (width - length), begin, length);
  std::memset(begin, ' ', width - length);
  return begin + width;
}

/// Writes what printf("%.<digits>e") prints, without a NUL, and returns the position behind it. `digits` <= 17.
char* format_scientific(char* out, double value, unsigned digits) noexcept;

/// The same for "%.<digits>E".
char* format_upper_scientific(char* out, double value, unsigned digits) noexcept;

/// The same for "%f": six digits behind the point.
char* format_fixed(char* out, double value) noexcept;

/// The same for "%<width>d", and for an unsigned number of any size.
template <class Integer>
char* format_integer(char* out, Integer value, unsigned width = 0) noexcept {
  return align_right(out, std::to_chars(out, out + longest_integer, value).ptr, width);
}

}  // namespace qel::gridwork::detail::io

#endif
