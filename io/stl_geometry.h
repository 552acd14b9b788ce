// Heights and normals of triangles, operation for operation.
#ifndef QEL_GRIDWORK_IO_STL_GEOMETRY_H
#define QEL_GRIDWORK_IO_STL_GEOMETRY_H

#include <algorithm>

#include "qel/fixed.h"

namespace qel::gridwork::io {

using vector3 = vector_fixed<double, 3>;

struct triangle {
  vector3 corners[3];
};

inline vector3 operator-(const vector3& a, const vector3& b) noexcept {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline double dot(const vector3& a, const vector3& b) noexcept { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline vector3 cross(const vector3& a, const vector3& b) noexcept {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The smallest squared distance of a corner from the line through the other two.
double smallest_squared_height(const triangle& t) noexcept;

/// True when the smallest squared height is certainly not below `bound`: a cheap test for well-shaped triangles.
inline bool is_surely_higher(const triangle& t, double bound) noexcept {
  // Where the height is more than 1e-4 of the longest edge, the relative error of every evaluation of it is below
  // 1e-10.
  const vector3 ab = t.corners[1] - t.corners[0];
  const vector3 ac = t.corners[2] - t.corners[0];
  const vector3 bc = t.corners[2] - t.corners[1];
  const vector3 area = cross(ab, ac);
  const double square = dot(area, area);
  const double longest = std::max({dot(ab, ab), dot(ac, ac), dot(bc, bc)});
  return square > 1e-8 * (longest * longest) && square > bound * longest * (1 + 1e-6) && square > 1e-280;
}

/// The unit normal; of a degenerate triangle, what is left of it.
vector3 facet_normal(const triangle& t) noexcept;

}  // namespace qel::gridwork::io

#endif
