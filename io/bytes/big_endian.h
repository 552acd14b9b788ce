// Numbers as bytes, the highest one first on every machine.
#ifndef QEL_GRIDWORK_IO_BYTES_BIG_ENDIAN_H
#define QEL_GRIDWORK_IO_BYTES_BIG_ENDIAN_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <type_traits>

#include "io/bytes/block_reader.h"

namespace qel::gridwork::detail::io {

/// The number that the bytes at `bytes` are; compilers make one instruction of it.
template <class T>
T load_big_endian(const char* bytes) noexcept {
  if constexpr (std::is_same_v<T, float>) {
    return std::bit_cast<float>(load_big_endian<std::uint32_t>(bytes));
  } else if constexpr (std::is_same_v<T, double>) {
    return std::bit_cast<double>(load_big_endian<std::uint64_t>(bytes));
  } else {
    std::make_unsigned_t<T> x = 0;
    for (unsigned k = 0; k < sizeof(T); ++k) {
      x = static_cast<std::make_unsigned_t<T>>(std::uint64_t{x} << 8 | static_cast<unsigned char>(bytes[k]));
    }
    return static_cast<T>(x);
  }
}

/// Reads `count` numbers of type T in pieces, and calls take(number) for each up to the first that does not return 0.
/// Returns what that was, `cut_short` when the stream ends before, else 0.
template <class T, class Take>
int read_big_endian(block_reader& blocks, std::uint64_t count, int cut_short, Take& take) {
  while (count != 0) {
    if (!blocks.fill(sizeof(T))) return cut_short;
    const std::uint64_t piece = std::min(count, blocks.available() / sizeof(T));
    const char* const begin = blocks.begin();
    for (std::uint64_t i = 0; i < piece; ++i) {
      const int result = take(load_big_endian<T>(begin + i * sizeof(T)));
      if (result != 0) return result;
    }
    blocks.consume(piece * sizeof(T));
    count -= piece;
  }
  return 0;
}

}  // namespace qel::gridwork::detail::io

#endif
