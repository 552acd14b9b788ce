#include "io/stl_geometry.h"

namespace qel::gridwork::detail::io {
namespace {

/// Squared distance of `p` from the line through `a` and `b`, measured from the nearer one for the sake of rounding.
double squared_height(const vector3& p, const vector3& a, const vector3& b) noexcept {
  const vector3 from_a = difference(p, a);
  const vector3 from_b = difference(p, b);
  const bool a_is_nearer = dot(from_a, from_a) <= dot(from_b, from_b);
  const vector3 along = a_is_nearer ? difference(b, a) : difference(a, b);
  const vector3 area = cross(a_is_nearer ? from_a : from_b, along);
  const double length = dot(along, along);
  return length == 0 ? dot(area, area) : dot(area, area) / length;
}

}  // namespace

double smallest_squared_height(const triangle& t) noexcept {
  double smallest = squared_height(t.corners[0], t.corners[1], t.corners[2]);
  for (unsigned i = 1; i < 3; ++i) {
    const double height = squared_height(t.corners[i], t.corners[(i + 1) % 3], t.corners[(i + 2) % 3]);
    if (height < smallest) smallest = height;
  }
  return smallest;
}

}  // namespace qel::gridwork::detail::io
