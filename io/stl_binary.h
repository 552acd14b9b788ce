// Layout of the binary form of STL.
#ifndef QEL_GRIDWORK_IO_STL_BINARY_H
#define QEL_GRIDWORK_IO_STL_BINARY_H

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "io/bytes/little_endian.h"
#include "io/stl_geometry.h"

namespace qel::gridwork::detail::io {

constexpr std::string_view stl_binary_header = "QEL STL Binary";
constexpr std::uint64_t stl_header_bytes = 80;
constexpr std::uint64_t stl_count_bytes = 4;
constexpr std::uint64_t stl_vector_bytes = 12;
constexpr std::uint64_t stl_attribute_bytes = 2;
constexpr std::uint64_t stl_triangle_bytes = 4 * stl_vector_bytes + stl_attribute_bytes;  // normal and three corners

/// The corners of a triangle; its normal is not used.
inline triangle load_triangle(const char* bytes) noexcept {
  triangle t;
  bytes += stl_vector_bytes;
  for (vector3& corner : t.corners) {
    for (double& x : corner) {
      x = load_float(bytes);
      bytes += sizeof(float);
    }
  }
  return t;
}

inline char* store_floats(char* out, const vector3& v) noexcept {
  for (const double x : v) out = store_float(out, static_cast<float>(x));
  return out;
}

/// Writes a triangle with its normal and returns the position behind it.
inline char* store_triangle(char* out, const triangle& t) noexcept {
  out = store_floats(out, facet_normal(t));
  for (const vector3& corner : t.corners) out = store_floats(out, corner);
  return std::fill_n(out, stl_attribute_bytes, '\0');
}

}  // namespace qel::gridwork::detail::io

#endif
