// Layout of the binary form of STL.
#ifndef QEL_GRIDWORK_IO_STL_BINARY_H
#define QEL_GRIDWORK_IO_STL_BINARY_H

#include <cstdint>

namespace qel::gridwork::detail::io {

constexpr std::uint64_t stl_header_bytes = 80;
constexpr std::uint64_t stl_count_bytes = 4;
constexpr std::uint64_t stl_vector_bytes = 12;
constexpr std::uint64_t stl_attribute_bytes = 2;
constexpr std::uint64_t stl_triangle_bytes = 4 * stl_vector_bytes + stl_attribute_bytes;  // normal and three corners

}  // namespace qel::gridwork::detail::io

#endif
