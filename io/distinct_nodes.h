// The nodes of an element, compared with each other.
#ifndef QEL_GRIDWORK_IO_DISTINCT_NODES_H
#define QEL_GRIDWORK_IO_DISTINCT_NODES_H

#include <algorithm>

namespace qel::gridwork::detail::io {

/// True when no two of a few nodes are the same. Quadratic, which is faster than sorting so few.
inline bool are_distinct(const unsigned* nodes, unsigned count) noexcept {
  for (unsigned k = 1; k < count; ++k) {
    if (std::find(nodes, nodes + k, nodes[k]) != nodes + k) return false;
  }
  return true;
}

}  // namespace qel::gridwork::detail::io

#endif
