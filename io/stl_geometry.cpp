#include "io/stl_geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qel::gridwork::io {
namespace {

/// Squared distance of `p` from the line through `a` and `b`, measured from the nearer one for the sake of rounding.
double squared_height(const vector3& p, const vector3& a, const vector3& b) noexcept {
  const vector3 from_a = p - a;
  const vector3 from_b = p - b;
  const bool a_is_nearer = dot(from_a, from_a) <= dot(from_b, from_b);
  const vector3 along = a_is_nearer ? b - a : a - b;
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

vector3 facet_normal(const triangle& t) noexcept {
  const vector3& a = t.corners[0];
  const vector3& b = t.corners[1];
  const vector3& c = t.corners[2];
  const vector3 ab = b - a;
  const vector3 cb = b - c;
  const vector3 ca = a - c;
  const bool avoid_ab = dot(ab, ab) > std::min(dot(cb, cb), dot(ca, ca));
  vector3 normal = avoid_ab ? cross(ca, cb) : cross(ca, ab);
  const double length = std::sqrt(dot(normal, normal));
  if (length != 0 && !std::isnan(length)) {
    const double scale = 1 / length;
    for (double& component : normal) component *= scale;
  }
  for (double& component : normal) {  // processors and compilers do not agree on the sign of a NaN
    if (std::isnan(component)) component = std::numeric_limits<double>::quiet_NaN();
  }
  return normal;
}

}  // namespace qel::gridwork::io
