// Heights and normals of triangles, operation for operation.
#ifndef QEL_GRIDWORK_IO_STL_GEOMETRY_H
#define QEL_GRIDWORK_IO_STL_GEOMETRY_H

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/vectors.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

using vector3 = vector_fixed<double, 3>;

struct triangle {
  vector3 corners[3];
};

/// Three nodes of a mesh, in space.
inline triangle corners_of(const dense2D<double>& coords, const unsigned* nodes) noexcept {
  triangle t;
  for (unsigned k = 0; k < 3; ++k) {
    const double* p = coords.column(nodes[k]);
    t.corners[k] = {p[0], p[1], coords.rows() == 3 ? p[2] : 0.0};
  }
  return t;
}

/// The smallest squared distance of a corner from the line through the other two.
double smallest_squared_height(const triangle& t) noexcept;

/// True when the smallest squared height is certainly not below `bound`: a cheap test for well-shaped triangles.
inline bool is_surely_higher(const triangle& t, double bound) noexcept {
  // Where the height is more than 1e-4 of the longest edge, the relative error of every evaluation of it is below
  // 1e-10.
  const vector3 ab = difference(t.corners[1], t.corners[0]);
  const vector3 ac = difference(t.corners[2], t.corners[0]);
  const vector3 bc = difference(t.corners[2], t.corners[1]);
  const vector3 area = cross(ab, ac);
  const double square = dot(area, area);
  const double longest = std::max({dot(ab, ab), dot(ac, ac), dot(bc, bc)});
  return square > 1e-8 * (longest * longest) && square > bound * longest * (1 + 1e-6) && square > 1e-280;
}

/// The normal before it is scaled: the cross product of two edges, ab not among them when another one is shorter.
inline vector3 facet_direction(const triangle& t) noexcept {
  const vector3 ab = difference(t.corners[1], t.corners[0]);
  const vector3 cb = difference(t.corners[1], t.corners[2]);
  const vector3 ca = difference(t.corners[0], t.corners[2]);
  const bool avoid_ab = dot(ab, ab) > std::min(dot(cb, cb), dot(ca, ca));
  return avoid_ab ? cross(ca, cb) : cross(ca, ab);
}

/// The unit normal; of a degenerate triangle, what is left of it. Inline, so that the corners stay in registers.
inline vector3 facet_normal(const triangle& t) noexcept {
  vector3 normal = facet_direction(t);
  const double length = std::sqrt(dot(normal, normal));
  const double scale = length > 0 ? 1 / length : 1;
  for (double& component : normal) component *= scale;
  if (length < std::numeric_limits<double>::infinity()) return normal;
  for (double& component : normal) {  // processors and compilers do not agree on the sign of a NaN
    if (std::isnan(component)) component = std::numeric_limits<double>::quiet_NaN();
  }
  return normal;
}

}  // namespace qel::gridwork::detail::io

#endif
