// Triangles and quadrangles, in the plane and in space.
#ifndef QEL_GRIDWORK_QUALITY_FACES_H
#define QEL_GRIDWORK_QUALITY_FACES_H

#include <algorithm>
#include <cmath>

#include "quality/tetrahedron.h"
#include "quality/vectors.h"

namespace qel::gridwork {

/// Twice the signed area. Of two ways to compute it, the one whose factors are the shorter edges.
inline double triangle_cross(const point<2>& d1, const point<2>& d2, double length1, double length2,
                             double across) noexcept {
  if (across <= std::min(length1, length2)) return d1[0] * (d2[1] - d1[1]) - d1[1] * (d2[0] - d1[0]);
  return cross(d1, d2);
}

struct plane_triangle {
  double cross;
  double longest;
  double perimeter;

  explicit plane_triangle(const point<2>* p) noexcept {
    const point<2> d1 = difference(p[1], p[0]);
    const point<2> d2 = difference(p[2], p[0]);
    const double length1 = length(d1);
    const double length2 = length(d2);
    const double across = length(difference(p[2], p[1]));
    cross = triangle_cross(d1, d2, length1, length2, across);
    longest = std::max(std::max(length1, length2), across);
    perimeter = length1 + length2 + across;
  }
};

inline double triangle_quality(const point<2>* p) noexcept {
  const plane_triangle t(p);
  const double denominator = t.longest * t.perimeter;
  return denominator > 0 ? clamped(3.4641016151377544 * t.cross / denominator) : 0.0;
}

/// Heron's formula in Kahan's order, which nothing cancels in: four times the area as the root of a product.
inline double triangle_quality(const point<3>* p) noexcept {
  double a = length(difference(p[1], p[0]));
  double b = length(difference(p[2], p[1]));
  double c = length(difference(p[0], p[2]));
  if (a < b) std::swap(a, b);
  if (b < c) std::swap(b, c);
  if (a < b) std::swap(a, b);
  const double perimeter = a + b + c;
  const double K = (c - (a - b)) * (c + (a - b)) * ((a - c + b) * perimeter);
  const double denominator = a * perimeter;
  if (!(denominator > 0)) return 0;
  return clamped(std::sqrt(K > 0 ? K : 0.0) * 0.5 / denominator * 3.4641016151377544);
}

/// Twice the area, signed in the plane.
inline double triangle_jacobian(const point<2>* p) noexcept { return plane_triangle(p).cross; }

inline double triangle_jacobian(const point<3>* p) noexcept {
  return length(cross(difference(p[1], p[0]), difference(p[2], p[0])));
}

/// The edges of a quadrangle, edge i from node i to the next.
template <unsigned Dim>
struct quadrangle_edges {
  point<Dim> e[4];

  explicit quadrangle_edges(const point<Dim>* p) noexcept {
    for (unsigned i = 0; i < 4; ++i) e[i] = difference(p[(i + 1) % 4], p[i]);
  }

  /// The cross product of the two edges at corner i, which points up where the quadrangle turns counter-clockwise.
  auto corner(unsigned i) const noexcept { return cross(e[(i + 3) % 4], e[i]); }
};

/// The smallest corner cross product. In space, of the parts along the normal of the diagonals; 0 without that normal.
inline double smallest_corner(const quadrangle_edges<2>& edges, const point<2>*) noexcept {
  return std::min(std::min(edges.corner(0), edges.corner(1)), std::min(edges.corner(2), edges.corner(3)));
}

inline double smallest_corner(const quadrangle_edges<3>& edges, const point<3>* p) noexcept {
  const point<3> normal = cross(difference(p[2], p[0]), difference(p[3], p[1]));
  const double size = length(normal);
  if (!(size > 0)) return 0;
  double smallest = dot(edges.corner(0), normal) / size;
  for (unsigned i = 1; i < 4; ++i) smallest = std::min(smallest, dot(edges.corner(i), normal) / size);
  return smallest;
}

template <unsigned Dim>
double quadrangle_jacobian(const point<Dim>* p) noexcept {
  return smallest_corner(quadrangle_edges<Dim>(p), p);
}

template <unsigned Dim>
double quadrangle_quality(const point<Dim>* p) noexcept {
  const quadrangle_edges<Dim> edges(p);
  double longest = std::max(length(difference(p[2], p[0])), length(difference(p[3], p[1])));
  double perimeter = 0;
  for (const point<Dim>& e : edges.e) {
    const double edge_length = length(e);
    longest = std::max(longest, edge_length);
    perimeter += edge_length;
  }
  const double denominator = longest * perimeter;
  return denominator > 0 ? clamped(5.656854249492381 * smallest_corner(edges, p) / denominator) : 0.0;
}

/// The smallest cosine between the normals at the corners and that of the diagonals, at least 0; 0 where one is missing.
inline double flatness(const point<3>& p0, const point<3>& p1, const point<3>& p2, const point<3>& p3) noexcept {
  const point<3> p[4] = {p0, p1, p2, p3};
  const quadrangle_edges<3> edges(p);
  const point<3> normal = cross(difference(p2, p0), difference(p3, p1));
  const double size = length(normal);
  double smallest = 1;
  for (unsigned i = 0; i < 4; ++i) {
    const point<3> n = edges.corner(i);
    const double sizes = length(n) * size;
    smallest = std::min(smallest, sizes > 0 ? dot(n, normal) / sizes : 0.0);
  }
  return std::max(smallest, 0.0);
}

}  // namespace qel::gridwork

#endif
