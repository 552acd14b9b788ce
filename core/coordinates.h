// What functions on meshes ask of a matrix of coordinates.
#ifndef QEL_GRIDWORK_CORE_COORDINATES_H
#define QEL_GRIDWORK_CORE_COORDINATES_H

#include <algorithm>
#include <cstdint>

#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

inline bool in_plane_or_space(const dense2D<double>& coords) noexcept {
  return coords.rows() == 2 || coords.rows() == 3;
}

/// The number of nodes as a bound of their indices; never `none`, which would stand for no bound.
inline unsigned node_bound(const dense2D<double>& coords) noexcept {
  return static_cast<unsigned>(std::min<std::uint64_t>(coords.cols(), none - 1));
}

}  // namespace qel::gridwork::detail

#endif
