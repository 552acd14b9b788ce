// Triangles and quadrangles, in the plane and in space.
#ifndef QEL_GRIDWORK_QUALITY_FACES_H
#define QEL_GRIDWORK_QUALITY_FACES_H

#include "quality/vectors.h"

namespace qel::gridwork::detail {

/// A quality, and something of the order of the squared size of the element.
template <class T>
struct sized_quality {
  T quality;
  T square;
};

/// Twice the signed area. Of two ways to compute it, the one whose factors are the shorter edges.
template <class T>
T triangle_cross(const point<2, T>& d1, const point<2, T>& d2, const T& length1, const T& length2,
                 const T& across) noexcept {
  const T by_short_edge = d1[0] * (d2[1] - d1[1]) - d1[1] * (d2[0] - d1[0]);
  return where(across <= smaller(length1, length2), by_short_edge, cross(d1, d2));
}

template <class T>
struct plane_triangle {
  T cross;
  T longest;
  T perimeter;

  explicit plane_triangle(const point<2, T>* p) noexcept {
    const point<2, T> d1 = difference(p[1], p[0]);
    const point<2, T> d2 = difference(p[2], p[0]);
    const T length1 = length(d1);
    const T length2 = length(d2);
    const T across = length(difference(p[2], p[1]));
    cross = triangle_cross(d1, d2, length1, length2, across);
    longest = larger(larger(length1, length2), across);
    perimeter = length1 + length2 + across;
  }
};

template <class T>
sized_quality<T> triangle_quality(const point<2, T>* p) noexcept {
  const plane_triangle<T> t(p);
  const T denominator = t.longest * t.perimeter;
  return {clamped(quotient_or_zero(3.4641016151377544 * t.cross, denominator)), denominator};
}

/// The order of the arguments keeps both values also where one is a NaN.
template <class T>
void put_larger_first(T& x, T& y) noexcept {
  const T most = larger(x, y);
  y = smaller(y, x);
  x = most;
}

/// Heron's formula in Kahan's order, which nothing cancels in: four times the area as the root of a product.
template <class T>
sized_quality<T> triangle_quality(const point<3, T>* p) noexcept {
  T a = length(difference(p[1], p[0]));
  T b = length(difference(p[2], p[1]));
  T c = length(difference(p[0], p[2]));
  put_larger_first(a, b);
  put_larger_first(b, c);
  put_larger_first(a, b);
  const T perimeter = a + b + c;
  const T K = (c - (a - b)) * (c + (a - b)) * ((a - c + b) * perimeter);
  const T denominator = a * perimeter;
  const T ratio = quotient_or_zero(root(larger(T(0.0), K)) * 0.5, denominator);
  return {clamped(ratio * 3.4641016151377544), denominator};
}

/// Twice the area, signed in the plane.
inline double triangle_jacobian(const point<2>* p) noexcept { return plane_triangle<double>(p).cross; }

inline double triangle_jacobian(const point<3>* p) noexcept {
  return length(cross(difference(p[1], p[0]), difference(p[2], p[0])));
}

/// The edges of a quadrangle, edge i from node i to the next.
template <unsigned Dim, class T>
struct quadrangle_edges {
  point<Dim, T> e[4];

  explicit quadrangle_edges(const point<Dim, T>* p) noexcept {
    for (unsigned i = 0; i < 4; ++i) e[i] = difference(p[(i + 1) % 4], p[i]);
  }

  /// The cross product of the two edges at corner i, which points up where the quadrangle turns counter-clockwise.
  auto corner(unsigned i) const noexcept { return cross(e[(i + 3) % 4], e[i]); }
};

/// The smallest corner cross product. In space, of the parts along the normal of the diagonals; 0 without that normal.
template <class T>
T smallest_corner(const quadrangle_edges<2, T>& edges, const point<2, T>*) noexcept {
  return smaller(smaller(edges.corner(0), edges.corner(1)), smaller(edges.corner(2), edges.corner(3)));
}

template <class T>
T smallest_corner(const quadrangle_edges<3, T>& edges, const point<3, T>* p) noexcept {
  const point<3, T> normal = cross(difference(p[2], p[0]), difference(p[3], p[1]));
  const T size = length(normal);
  T smallest = quotient_or_zero(dot(edges.corner(0), normal), size);
  for (unsigned i = 1; i < 4; ++i) {
    smallest = smaller(smallest, quotient_or_zero(dot(edges.corner(i), normal), size));
  }
  return smallest;
}

template <unsigned Dim>
double quadrangle_jacobian(const point<Dim>* p) noexcept {
  return smallest_corner(quadrangle_edges<Dim, double>(p), p);
}

template <unsigned Dim, class T>
sized_quality<T> quadrangle_quality(const vector_fixed<T, Dim>* p) noexcept {
  const quadrangle_edges<Dim, T> edges(p);
  T longest = larger(length(difference(p[2], p[0])), length(difference(p[3], p[1])));
  T perimeter = 0.0;
  for (const point<Dim, T>& e : edges.e) {
    const T edge_length = length(e);
    longest = larger(longest, edge_length);
    perimeter = perimeter + edge_length;
  }
  const T denominator = longest * perimeter;
  return {clamped(quotient_or_zero(5.656854249492381 * smallest_corner(edges, p), denominator)), denominator};
}

/// The smallest cosine between the normals at the corners and that of the diagonals, at least 0; 0 where one is
/// missing.
template <class T>
T flatness(const point<3, T>& p0, const point<3, T>& p1, const point<3, T>& p2, const point<3, T>& p3) noexcept {
  const point<3, T> p[4] = {p0, p1, p2, p3};
  const quadrangle_edges<3, T> edges(p);
  const point<3, T> normal = cross(difference(p2, p0), difference(p3, p1));
  const T size = length(normal);
  T smallest = 1.0;
  for (unsigned i = 0; i < 4; ++i) {
    const point<3, T> n = edges.corner(i);
    smallest = smaller(smallest, quotient_or_zero(dot(n, normal), length(n) * size));
  }
  return larger(smallest, T(0.0));
}

}  // namespace qel::gridwork::detail

#endif
