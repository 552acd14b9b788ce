// Numbers as bytes, the highest one first on every machine.
#ifndef QEL_GRIDWORK_IO_BYTES_BIG_ENDIAN_H
#define QEL_GRIDWORK_IO_BYTES_BIG_ENDIAN_H

#include <bit>
#include <cstdint>
#include <type_traits>

namespace qel::gridwork::detail::io {

/// The number that `count` bytes are. Halves put together become one instruction, where compilers keep a loop over bytes.
template <unsigned count>
std::uint64_t join_big_endian(const char* bytes) noexcept {
  if constexpr (count == 1) {
    return static_cast<unsigned char>(*bytes);
  } else {
    return join_big_endian<count / 2>(bytes) << 4 * count | join_big_endian<count / 2>(bytes + count / 2);
  }
}

template <class T>
T load_big_endian(const char* bytes) noexcept {
  if constexpr (std::is_same_v<T, float>) {
    return std::bit_cast<float>(load_big_endian<std::uint32_t>(bytes));
  } else if constexpr (std::is_same_v<T, double>) {
    return std::bit_cast<double>(load_big_endian<std::uint64_t>(bytes));
  } else {
    return static_cast<T>(join_big_endian<sizeof(T)>(bytes));
  }
}

}  // namespace qel::gridwork::detail::io

#endif
