// Products of position vectors.
#ifndef QEL_GRIDWORK_QUALITY_VECTORS_H
#define QEL_GRIDWORK_QUALITY_VECTORS_H

#include "qel/fixed.h"
#include "quality/double_pair.h"

namespace qel::gridwork::detail {

/// T is double, or double_pair for two elements side by side.
template <unsigned Dim, class T = double>
using point = vector_fixed<T, Dim>;

/// The vector from q to p.
template <class T>
point<2, T> difference(const point<2, T>& p, const point<2, T>& q) noexcept {
  return {p[0] - q[0], p[1] - q[1]};
}

template <class T>
point<3, T> difference(const point<3, T>& p, const point<3, T>& q) noexcept {
  return {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
}

template <class T>
T dot(const point<2, T>& x, const point<2, T>& y) noexcept {
  return x[0] * y[0] + x[1] * y[1];
}

template <class T>
T dot(const point<3, T>& x, const point<3, T>& y) noexcept {
  return x[0] * y[0] + x[1] * y[1] + x[2] * y[2];
}

template <unsigned Dim, class T>
T length(const vector_fixed<T, Dim>& x) noexcept {
  return root(dot(x, x));
}

template <class T>
T cross(const point<2, T>& x, const point<2, T>& y) noexcept {
  return x[0] * y[1] - y[0] * x[1];
}

template <class T>
point<3, T> cross(const point<3, T>& x, const point<3, T>& y) noexcept {
  return {x[1] * y[2] - x[2] * y[1], x[2] * y[0] - x[0] * y[2], x[0] * y[1] - x[1] * y[0]};
}

template <class T>
T triple(const point<3, T>& x, const point<3, T>& y, const point<3, T>& z) noexcept {
  return dot(x, cross(y, z));
}

}  // namespace qel::gridwork::detail

#endif
