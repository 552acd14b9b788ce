// The places of nodes, and lengths, of one element or of two side by side.
#ifndef QEL_GRIDWORK_QUALITY_VECTORS_H
#define QEL_GRIDWORK_QUALITY_VECTORS_H

#include "core/vectors.h"
#include "quality/double_pair.h"

namespace qel::gridwork::detail {

/// T is double, or double_pair for two elements side by side.
template <unsigned Dim, class T = double>
using point = vector_fixed<T, Dim>;

template <unsigned Dim, class T>
T length(const vector_fixed<T, Dim>& x) noexcept {
  return root(dot(x, x));
}

}  // namespace qel::gridwork::detail

#endif
