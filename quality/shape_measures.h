// The measures of the linear shapes.
#ifndef QEL_GRIDWORK_QUALITY_SHAPE_MEASURES_H
#define QEL_GRIDWORK_QUALITY_SHAPE_MEASURES_H

#include "core/linear_shapes.h"
#include "quality/corners.h"
#include "quality/faces.h"

namespace qel::gridwork::detail {

/// The smallest corner Jacobian over the 3/2 power of the sum of the squared edge lengths.
template <const shape& Shape, class T>
sized_quality<T> corner_ratio(const point<3, T>* p) noexcept {
  constexpr double ideal = Shape.type == ELT_HEXA8 ? 41.569219381653056 : 31.17691453623979;
  T squares = 0.0;
  for (unsigned k = 0; k < Shape.edges; ++k) {
    const point<3, T> e = difference(p[Shape.edge[k][1]], p[Shape.edge[k][0]]);
    squares = squares + dot(e, e);
  }
  const T smallest = smallest_corner_jacobian<Shape>(p);
  return {clamped(quotient_or_zero(ideal * smallest, squares * root(squares))), squares};
}

template <const shape& Shape, class T>
T smallest_flatness(const point<3, T>* p) noexcept {
  T smallest = 1.0;
  for (unsigned k = 0; k < Shape.boundaries; ++k) {
    const unsigned char* face = Shape.boundary[k];
    if (Shape.boundary_sizes[k] == 4) {
      smallest = smaller(smallest, flatness(p[face[0]], p[face[1]], p[face[2]], p[face[3]]));
    }
  }
  return smallest;
}

/// From here on the qualities of the corners, which are never below q / 84, need no look at them.
constexpr double sound_solid = 1e-10;

template <const shape& Shape>
double solid_quality(const point<3>* p) noexcept {
  const double q = corner_ratio<Shape>(p).quality;
  if (q <= flat_quality) return q;
  if (q < sound_solid) {
    const double corner = smallest_corner_tetrahedron<Shape>(p);
    if (corner < flat_quality) return corner;
  }
  return q * smallest_flatness<Shape>(p);
}

inline double pyramid_quality(const point<3>* p) noexcept {
  constexpr double largest_doubtful = 4.1569219381653057e-11;  // 24 sqrt(3) 1e-12
  double q = corner_ratio<pyramid_shape>(p).quality;
  if (q > flat_quality && q < largest_doubtful) q = smallest_corner_tetrahedron<pyramid_shape>(p);
  return q > 0 ? q * smallest_flatness<pyramid_shape>(p) : q;
}

/// The qualities of two elements, and which of them have it by the plain formula, whatever care others need.
template <class T>
struct checked_qualities {
  T qualities;
  truth_of<T> sure;
};

/// True where a square of the order of the element's leaves no doubt that it is measured at its own scale. False for a
/// NaN, which a coordinate passes on to the square or to the quality.
template <class T>
truth_of<T> is_usual(const T& square) noexcept {
  return (0x1p-120 < square) & (square < 0x1p100);
}

/// The fourth power of the longest edge bounds the leading products of all faces.
template <class T>
checked_qualities<T> check_tetrahedra(const tetrahedron_value<T>& value) noexcept {
  const T size = magnitude(value.quality);
  const truth_of<T> precise = precise_gram * (value.longest2 * value.longest2) <= value.smallest_gram;
  const truth_of<T> stands = (size <= flat_quality) | (precise & (sound_tetrahedron <= size));
  return {value.quality, is_usual(value.longest2) & stands};
}

template <const shape& Shape, class T>
checked_qualities<T> check_solids(const point<3, T>* p) noexcept {
  const auto [q, square] = corner_ratio<Shape>(p);
  const auto inverted = q <= 0.0;
  return {where(inverted, q, q * smallest_flatness<Shape>(p)), is_usual(square) & (inverted | (sound_solid <= q))};
}

/// What shape_qualities() measures; free of units.
struct quality_measure {
  template <const shape& Shape>
  static constexpr int power_of_length = 0;

  template <const shape& Shape>
  static constexpr bool takes_two = has_double_pairs && (Shape.type != ELT_EDGE2);

  template <const shape& Shape, unsigned Dim, class T>
  [[gnu::always_inline]] static checked_qualities<T> of_two(const vector_fixed<T, Dim>* p) noexcept {
    if constexpr (Shape.type == ELT_TRIA3) {
      const auto [q, square] = triangle_quality(p);
      return {q, is_usual(square)};
    } else if constexpr (Shape.type == ELT_QUAD4) {
      const auto [q, square] = quadrangle_quality(p);
      return {q, is_usual(square)};
    } else if constexpr (Shape.type == ELT_TETRA4) {
      return check_tetrahedra(evaluate_tetrahedron(p[0], p[1], p[2], p[3]));
    } else {
      return check_solids<Shape>(p);
    }
  }

  template <const shape& Shape, unsigned Dim>
  static double of(const point<Dim>* p) noexcept {
    if constexpr (Shape.type == ELT_EDGE2)
      return 1;
    else if constexpr (Shape.type == ELT_TRIA3)
      return triangle_quality(p).quality;
    else if constexpr (Shape.type == ELT_QUAD4)
      return quadrangle_quality(p).quality;
    else if constexpr (Shape.type == ELT_TETRA4)
      return tetrahedron_quality(p[0], p[1], p[2], p[3]);
    else if constexpr (Shape.type == ELT_PYRAMID5)
      return pyramid_quality(p);
    else
      return solid_quality<Shape>(p);
  }
};

/// What jacobians() measures.
struct jacobian_measure {
  template <const shape& Shape>
  static constexpr int power_of_length = Shape.type == ELT_EDGE2     ? 1
                                         : Shape.boundary_nodes == 2 ? 2
                                                                     : 3;

  template <const shape& Shape>
  static constexpr bool takes_two = false;

  template <const shape& Shape, unsigned Dim>
  static double of(const point<Dim>* p) noexcept {
    if constexpr (Shape.type == ELT_EDGE2)
      return length(difference(p[1], p[0]));
    else if constexpr (Shape.type == ELT_TRIA3)
      return triangle_jacobian(p);
    else if constexpr (Shape.type == ELT_QUAD4)
      return quadrangle_jacobian<Dim>(p);
    else if constexpr (Shape.type == ELT_TETRA4)
      return tetrahedron_determinant(p[0], p[1], p[2], p[3]);
    else
      return smallest_corner_jacobian<Shape>(p);
  }
};

}  // namespace qel::gridwork::detail

#endif
