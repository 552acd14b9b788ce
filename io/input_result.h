// What the readers of meshes return.
#ifndef QEL_GRIDWORK_IO_INPUT_RESULT_H
#define QEL_GRIDWORK_IO_INPUT_RESULT_H

#include <algorithm>
#include <cstdint>
#include <limits>

namespace qel::gridwork::detail::io {

constexpr int not_opened = -1;
constexpr int malformed = -2;
constexpr int unknown_node = -3;
constexpr int no_type_to_read = -4;
constexpr int node_differs = -5;
constexpr int no_system = -6;
constexpr int kind_not_read = -7;

/// The result of a mesh from whose file so many parts are missing.
inline int result_of_left_out(std::uint64_t count) noexcept {
  return static_cast<int>(std::min<std::uint64_t>(count, std::numeric_limits<int>::max()));
}

}  // namespace qel::gridwork::detail::io

#endif
