// The map that every node has before it is merged or put in order.
#ifndef QEL_GRIDWORK_CORE_IDENTITY_MAP_H
#define QEL_GRIDWORK_CORE_IDENTITY_MAP_H

#include <cstdint>
#include <numeric>

#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Makes `map` 0, 1, ... count - 1. False when memory, or the 32-bit indices, ran out.
[[nodiscard]] inline bool set_identity(dense1D<unsigned>& map, std::uint64_t count) {
  if (count >= none || !map.resize(count)) return false;
  std::iota(map.begin(), map.end(), 0U);
  return true;
}

}  // namespace qel::gridwork::detail

#endif
