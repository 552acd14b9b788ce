// Differences and products of vectors in the plane and in space.
#ifndef QEL_GRIDWORK_CORE_VECTORS_H
#define QEL_GRIDWORK_CORE_VECTORS_H

#include "qel/fixed.h"

namespace qel::gridwork::detail {

/// The vector from q to p.
/// @{
template <class T>
vector_fixed<T, 2> difference(const vector_fixed<T, 2>& p, const vector_fixed<T, 2>& q) noexcept {
  return {p[0] - q[0], p[1] - q[1]};
}

template <class T>
vector_fixed<T, 3> difference(const vector_fixed<T, 3>& p, const vector_fixed<T, 3>& q) noexcept {
  return {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
}
/// @}

/// Of vectors, or of three numbers each.
/// @{
template <class T>
T dot(const vector_fixed<T, 2>& x, const vector_fixed<T, 2>& y) noexcept {
  return x[0] * y[0] + x[1] * y[1];
}

template <class T>
T dot(const vector_fixed<T, 3>& x, const vector_fixed<T, 3>& y) noexcept {
  return x[0] * y[0] + x[1] * y[1] + x[2] * y[2];
}

inline double dot(const double* x, const double* y) noexcept { return x[0] * y[0] + x[1] * y[1] + x[2] * y[2]; }
/// @}

template <class T>
T cross(const vector_fixed<T, 2>& x, const vector_fixed<T, 2>& y) noexcept {
  return x[0] * y[1] - y[0] * x[1];
}

template <class T>
vector_fixed<T, 3> cross(const vector_fixed<T, 3>& x, const vector_fixed<T, 3>& y) noexcept {
  return {x[1] * y[2] - x[2] * y[1], x[2] * y[0] - x[0] * y[2], x[0] * y[1] - x[1] * y[0]};
}

template <class T>
T triple(const vector_fixed<T, 3>& x, const vector_fixed<T, 3>& y, const vector_fixed<T, 3>& z) noexcept {
  return dot(x, cross(y, z));
}

}  // namespace qel::gridwork::detail

#endif
