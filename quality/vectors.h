// Products of position vectors.
#ifndef QEL_GRIDWORK_QUALITY_VECTORS_H
#define QEL_GRIDWORK_QUALITY_VECTORS_H

#include <cmath>

#include "qel/fixed.h"

namespace qel::gridwork {

template <unsigned Dim>
using point = vector_fixed<double, Dim>;

/// The vector from q to p.
inline point<2> difference(const point<2>& p, const point<2>& q) noexcept { return {p[0] - q[0], p[1] - q[1]}; }

inline point<3> difference(const point<3>& p, const point<3>& q) noexcept {
  return {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
}

inline double dot(const point<2>& x, const point<2>& y) noexcept { return x[0] * y[0] + x[1] * y[1]; }

inline double dot(const point<3>& x, const point<3>& y) noexcept { return x[0] * y[0] + x[1] * y[1] + x[2] * y[2]; }

template <unsigned Dim>
double length(const point<Dim>& x) noexcept {
  return std::sqrt(dot(x, x));
}

inline double cross(const point<2>& x, const point<2>& y) noexcept { return x[0] * y[1] - y[0] * x[1]; }

inline point<3> cross(const point<3>& x, const point<3>& y) noexcept {
  return {x[1] * y[2] - x[2] * y[1], x[2] * y[0] - x[0] * y[2], x[0] * y[1] - x[1] * y[0]};
}

inline double triple(const point<3>& x, const point<3>& y, const point<3>& z) noexcept { return dot(x, cross(y, z)); }

}  // namespace qel::gridwork

#endif
