// Numbers as bytes, the lowest one first on every machine.
#ifndef QEL_GRIDWORK_IO_BYTES_LITTLE_ENDIAN_H
#define QEL_GRIDWORK_IO_BYTES_LITTLE_ENDIAN_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace qel::gridwork::detail::io {

constexpr std::uint32_t in_file_order(std::uint32_t x) noexcept {
  if constexpr (std::endian::native == std::endian::big) {
    return (x >> 24) | ((x >> 8) & 0xff00U) | ((x << 8) & 0xff0000U) | (x << 24);
  }
  return x;
}

inline std::uint32_t load_uint32(const char* bytes) noexcept {
  std::uint32_t x = 0;
  std::memcpy(&x, bytes, sizeof x);
  return in_file_order(x);
}

inline std::uint64_t load_uint64(const char* bytes) noexcept {
  if constexpr (std::endian::native == std::endian::big) {
    return load_uint32(bytes) | std::uint64_t{load_uint32(bytes + 4)} << 32;
  }
  std::uint64_t x = 0;
  std::memcpy(&x, bytes, sizeof x);
  return x;
}

inline float load_float(const char* bytes) noexcept { return std::bit_cast<float>(load_uint32(bytes)); }

inline char* store_uint32(char* bytes, std::uint32_t x) noexcept {
  x = in_file_order(x);
  std::memcpy(bytes, &x, sizeof x);
  return bytes + sizeof x;
}

inline char* store_float(char* bytes, float x) noexcept { return store_uint32(bytes, std::bit_cast<std::uint32_t>(x)); }

}  // namespace qel::gridwork::detail::io

#endif
