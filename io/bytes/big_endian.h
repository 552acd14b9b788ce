// Numbers as bytes, the highest one first on every machine.
#ifndef QEL_GRIDWORK_IO_BYTES_BIG_ENDIAN_H
#define QEL_GRIDWORK_IO_BYTES_BIG_ENDIAN_H

#include <bit>
#include <cstdint>
#include <type_traits>

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

/// Loads `count` numbers of type T from where they lie one behind the other.
template <class T, class Number>
void load_big_endian(const char* bytes, std::uint64_t count, Number* numbers) noexcept {
  for (std::uint64_t i = 0; i < count; ++i) {
    const T number = load_big_endian<T>(bytes + i * sizeof(T));
    numbers[i] = static_cast<Number>(number);  // NOLINT(bugprone-signed-char-misuse): of a number, not a character
  }
}

}  // namespace qel::gridwork::detail::io

#endif
