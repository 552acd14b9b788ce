// Lists of short integers in texts, found by the blanks between them.
#ifndef QEL_GRIDWORK_IO_TEXT_PLAIN_INTEGERS_H
#define QEL_GRIDWORK_IO_TEXT_PLAIN_INTEGERS_H

#include <bit>
#include <cstdint>

#include "io/bytes/little_endian.h"
#include "io/text/plain_number.h"

namespace qel::gridwork::detail::io {

/// A bit for each of the 64 characters at `text` that is a blank or a control character; the lowest is the first.
inline std::uint64_t marks_of_space(const char* text) noexcept {
  constexpr std::uint64_t high = 0x8080808080808080, above_space = 0x5f5f5f5f5f5f5f5f;
  std::uint64_t marks = 0;
  for (unsigned k = 0; k < 64; k += 8) {
    const std::uint64_t word = load_uint64(text + k);
    const std::uint64_t spaces = ~(((word & ~high) + above_space) | word) & high;
    marks |= ((spaces >> 7) * 0x0102040810204080) >> 56 << k;  // gathers the lowest bit of each byte
  }
  return marks;
}

/// Scans integers of up to eight digits, without signs, among the 64 characters at `text`, where a word or a blank begins,
/// up to `count`, and adds their number to `found`. Returns the end of the last one; what stopped it is for others to
/// decide. Reads up to scan_margin characters more.
///
/// Where numbers begin and end is known before the first of them is converted, so that none has to wait for another.
inline const char* scan_plain_integers(const char* text, std::int64_t* values, std::uint64_t count,
                                       std::uint64_t& found) noexcept {
  const std::uint64_t spaces = marks_of_space(text), behind_spaces = spaces << 1 | 1;
  std::uint64_t starts = ~spaces & behind_spaces, ends = spaces & ~behind_spaces;
  const char* done = text;
  for (; ends != 0 && found != count; starts &= starts - 1, ends &= ends - 1) {
    const int start = std::countr_zero(starts), end = std::countr_zero(ends);
    const int unused = 64 - 8 * (end - start);  // bits of a word of eight characters
    if (unused < 0) break;
    constexpr std::uint64_t zeros = 0x3030303030303030, above_nine = 0x7676767676767676, high = 0x8080808080808080;
    const std::uint64_t digits = load_uint64(text + start) << unused ^ zeros << unused;
    if ((((digits + above_nine) | digits) & high) != 0) break;
    values[found++] = static_cast<std::int64_t>(join_values(digits));
    done = text + end;
  }
  return done;
}

}  // namespace qel::gridwork::detail::io

#endif
