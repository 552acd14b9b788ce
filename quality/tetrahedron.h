// Quality of a tetrahedron: 2 sqrt(6) x inradius / longest edge, with the sign of its orientation.
#ifndef QEL_GRIDWORK_QUALITY_TETRAHEDRON_H
#define QEL_GRIDWORK_QUALITY_TETRAHEDRON_H

#include <cmath>

#include "quality/vectors.h"

namespace qel::gridwork::detail {

/// Qualities up to here are as good as 0.
constexpr double flat_quality = 1e-12;

/// What is left of the leading product of a Gram determinant, at least, where the area is precise.
constexpr double precise_gram = 1e-12;

/// Qualities from here on stand, unless the area of a face is not precise.
constexpr double sound_tetrahedron = 1e-10;

/// Four times the squared area of a triangle, from two edge vectors.
template <class T>
struct gram_determinant {
  T value;
  truth_of<T> cancelled;  // the triangle is so much of a needle that its area is not precise

  gram_determinant(const T& xx, const T& yy, const T& xy) noexcept
      : value(xx * yy - xy * xy), cancelled(value < precise_gram * (xx * yy)) {}

  T twice_area() const noexcept { return root(larger(T(0.0), value)); }
};

/// Six times the volume.
inline double tetrahedron_determinant(const point<3>& p0, const point<3>& p1, const point<3>& p2,
                                      const point<3>& p3) noexcept {
  return triple(difference(p0, p3), difference(p1, p3), difference(p2, p3));
}

template <class T>
struct tetrahedron_value {
  T quality;
  T longest2;             // the square of the longest edge
  T smallest_gram;        // of the determinants of the faces
  truth_of<T> cancelled;  // in one of the faces
  truth_of<T> distinct;   // p0, p1 and p2 are

  auto is_imprecise() const noexcept { return cancelled || !distinct; }
};

/// The formula as it stands, for one order of the nodes.
template <class T>
[[gnu::always_inline]] inline tetrahedron_value<T> evaluate_tetrahedron(const point<3, T>& p0, const point<3, T>& p1,
                                                                        const point<3, T>& p2,
                                                                        const point<3, T>& p3) noexcept {
  const point<3, T> a = difference(p0, p3);
  const point<3, T> b = difference(p1, p3);
  const point<3, T> c = difference(p2, p3);
  const point<3, T> ab = difference(b, a);
  const point<3, T> ac = difference(c, a);
  const point<3, T> bc = difference(c, b);
  const T aa = dot(a, a);
  const T bb = dot(b, b);
  const T cc = dot(c, c);
  const T ab2 = dot(ab, ab);
  const T ac2 = dot(ac, ac);
  const T bc2 = dot(bc, bc);
  const gram_determinant<T> faces[4] = {
      {aa, bb, dot(a, b)}, {bb, cc, dot(b, c)}, {aa, cc, dot(a, c)}, {ab2, ac2, dot(ab, ac)}};
  const T twice_surface = faces[0].twice_area() + faces[1].twice_area() + faces[2].twice_area() + faces[3].twice_area();
  const T longest2 = larger(larger(larger(aa, bb), larger(cc, ab2)), larger(ac2, bc2));
  const T q = quotient_or_zero(triple(a, b, c), root(longest2) * twice_surface) * 4.898979485566356;
  const T smallest_gram = smaller(smaller(faces[0].value, faces[1].value), smaller(faces[2].value, faces[3].value));
  const truth_of<T> cancelled = faces[0].cancelled | faces[1].cancelled | faces[2].cancelled | faces[3].cancelled;
  const truth_of<T> distinct = (0.0 < ab2) & (0.0 < ac2) & (0.0 < bc2);
  return {clamped(q), longest2, smallest_gram, cancelled, distinct};
}

/// The quality of smallest magnitude over all orders of the nodes of the same orientation, the given one of which has
/// the quality `first`; 0 when they do not agree on the sign.
double settle_tetrahedron(const point<3>* const* nodes, double first) noexcept;

/// Flat tetrahedra need care: rounding may turn even their sign.
inline double tetrahedron_quality(const point<3>& p0, const point<3>& p1, const point<3>& p2,
                                  const point<3>& p3) noexcept {
  const tetrahedron_value<double> value = evaluate_tetrahedron(p0, p1, p2, p3);
  const double q = value.quality;
  if (!value.is_imprecise() && std::abs(q) >= sound_tetrahedron) return q;
  if (std::abs(q) <= flat_quality) return q;
  const point<3>* const nodes[] = {&p0, &p1, &p2, &p3};
  return settle_tetrahedron(nodes, q);
}

}  // namespace qel::gridwork::detail

#endif
