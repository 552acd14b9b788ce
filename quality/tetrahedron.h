// Quality of a tetrahedron: 2 sqrt(6) x inradius / longest edge, with the sign of its orientation.
#ifndef QEL_GRIDWORK_QUALITY_TETRAHEDRON_H
#define QEL_GRIDWORK_QUALITY_TETRAHEDRON_H

#include <algorithm>
#include <cmath>

#include "quality/vectors.h"

namespace qel::gridwork {

/// Qualities up to here are as good as 0.
constexpr double flat_quality = 1e-12;

/// Into [-1, 1].
inline double clamped(double q) noexcept { return std::clamp(q, -1.0, 1.0); }

struct tetrahedron_value {
  double quality;
  bool imprecise;
};

/// Four times the squared area of a triangle, from two edge vectors: their Gram determinant. Notes where too much of it
/// cancels.
class gram_determinants {
 public:
  double root(double xx, double yy, double xy) noexcept {
    const double leading = xx * yy;
    const double determinant = leading - xy * xy;
    cancelled_ |= determinant < 1e-12 * leading;
    return std::sqrt(determinant > 0 ? determinant : 0.0);
  }

  bool cancelled() const noexcept { return cancelled_; }

 private:
  bool cancelled_ = false;
};

/// Six times the volume.
inline double tetrahedron_determinant(const point<3>& p0, const point<3>& p1, const point<3>& p2,
                                      const point<3>& p3) noexcept {
  return triple(difference(p0, p3), difference(p1, p3), difference(p2, p3));
}

/// The formula as it stands, for one order of the nodes.
inline tetrahedron_value evaluate_tetrahedron(const point<3>& p0, const point<3>& p1, const point<3>& p2,
                                              const point<3>& p3) noexcept {
  const point<3> a = difference(p0, p3);
  const point<3> b = difference(p1, p3);
  const point<3> c = difference(p2, p3);
  const point<3> ab = difference(b, a);
  const point<3> ac = difference(c, a);
  const point<3> bc = difference(c, b);
  const double aa = dot(a, a);
  const double bb = dot(b, b);
  const double cc = dot(c, c);
  const double ab2 = dot(ab, ab);
  const double ac2 = dot(ac, ac);
  const double bc2 = dot(bc, bc);
  gram_determinants gram;
  double twice_surface = gram.root(aa, bb, dot(a, b));
  twice_surface += gram.root(bb, cc, dot(b, c));
  twice_surface += gram.root(aa, cc, dot(a, c));
  twice_surface += gram.root(ab2, ac2, dot(ab, ac));
  const double longest = std::sqrt(std::max(std::max(std::max(aa, bb), std::max(cc, ab2)), std::max(ac2, bc2)));
  const double denominator = longest * twice_surface;
  const bool coincident = !(ab2 > 0 && ac2 > 0 && bc2 > 0);
  const double q = denominator > 0 ? triple(a, b, c) / denominator * 4.898979485566356 : 0.0;
  return {clamped(q), gram.cancelled() || coincident};
}

/// The quality of smallest magnitude over all orders of the nodes of the same orientation, the given one of which has the
/// quality `first`; 0 when they do not agree on the sign.
double settle_tetrahedron(const point<3>* const* nodes, double first) noexcept;

/// Flat tetrahedra need care: rounding may turn even their sign.
inline double tetrahedron_quality(const point<3>& p0, const point<3>& p1, const point<3>& p2,
                                  const point<3>& p3) noexcept {
  constexpr double surely_sound = 1e-10;
  const auto [q, imprecise] = evaluate_tetrahedron(p0, p1, p2, p3);
  if (!imprecise && std::abs(q) >= surely_sound) return q;
  if (std::abs(q) <= flat_quality) return q;
  const point<3>* const nodes[] = {&p0, &p1, &p2, &p3};
  return settle_tetrahedron(nodes, q);
}

}  // namespace qel::gridwork

#endif
