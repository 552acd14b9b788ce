// The measures of the linear shapes, and the one way to take them of every element of a mesh.
#ifndef QEL_GRIDWORK_QUALITY_SHAPE_MEASURES_H
#define QEL_GRIDWORK_QUALITY_SHAPE_MEASURES_H

#include <cmath>

#include "core/elements.h"
#include "core/position_table.h"
#include "core/result.h"
#include "core/scaling.h"
#include "core/shapes.h"
#include "quality/corners.h"
#include "quality/faces.h"

namespace qel::gridwork {

/// The smallest corner Jacobian over the 3/2 power of the sum of the squared edge lengths.
template <const shape& Shape>
double corner_ratio(const point<3>* p) noexcept {
  constexpr double ideal = Shape.type == ELT_HEXA8 ? 41.569219381653056 : 31.17691453623979;
  double squares = 0;
  for (unsigned k = 0; k < Shape.edges; ++k) {
    const point<3> e = difference(p[Shape.edge[k][1]], p[Shape.edge[k][0]]);
    squares += dot(e, e);
  }
  return squares > 0 ? clamped(ideal * smallest_corner_jacobian<Shape>(p) / (squares * std::sqrt(squares))) : 0.0;
}

template <const shape& Shape>
double smallest_flatness(const point<3>* p) noexcept {
  double smallest = 1;
  for (unsigned k = 0; k < Shape.boundaries; ++k) {
    const unsigned char* face = Shape.boundary[k];
    if (Shape.boundary_sizes[k] == 4) {
      smallest = std::min(smallest, flatness(p[face[0]], p[face[1]], p[face[2]], p[face[3]]));
    }
  }
  return smallest;
}

/// Close to zero the qualities of the corners decide. They are never below q / 84, so a larger q needs no look at them.
template <const shape& Shape>
double solid_quality(const point<3>* p) noexcept {
  constexpr double largest_doubtful = 1e-10;
  const double q = corner_ratio<Shape>(p);
  if (q <= flat_quality) return q;
  if (q < largest_doubtful) {
    const double corner = smallest_corner_tetrahedron<Shape>(p);
    if (corner < flat_quality) return corner;
  }
  return q * smallest_flatness<Shape>(p);
}

inline double pyramid_quality(const point<3>* p) noexcept {
  constexpr double largest_doubtful = 4.1569219381653057e-11;  // 24 sqrt(3) 1e-12
  double q = corner_ratio<pyramid_shape>(p);
  if (q > flat_quality && q < largest_doubtful) q = smallest_corner_tetrahedron<pyramid_shape>(p);
  return q > 0 ? q * smallest_flatness<pyramid_shape>(p) : q;
}

/// What shape_qualities() measures; free of units.
struct quality_measure {
  template <const shape& Shape>
  static constexpr int power_of_length = 0;

  template <const shape& Shape, unsigned Dim>
  static double of(const point<Dim>* p) noexcept {
    if constexpr (Shape.type == ELT_EDGE2)
      return 1;
    else if constexpr (Shape.type == ELT_TRIA3)
      return triangle_quality(p);
    else if constexpr (Shape.type == ELT_QUAD4)
      return quadrangle_quality<Dim>(p);
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

/// Solids have three coordinates, the last one 0 on 2-row coordinates.
template <const shape& Shape, unsigned Rows>
constexpr unsigned dimension_of = Shape.boundary_nodes > 2 ? 3 : Rows;

/// The nodes of one element.
template <const shape& Shape, unsigned Rows>
struct element_points {
  static constexpr unsigned dim = dimension_of<Shape, Rows>;
  point<dim> p[Shape.nodes];

  element_points(const dense2D<double>& coords, const unsigned* nodes) noexcept {
    for (unsigned i = 0; i < Shape.nodes; ++i) {
      const double* node = coords.column(nodes[i]);
      for (unsigned a = 0; a < Rows; ++a) p[i][a] = node[a];
      for (unsigned a = Rows; a < dim; ++a) p[i][a] = 0;
    }
  }

  /// A length of the order of the largest; NaN or infinite when a coordinate is.
  double extent() const noexcept {
    point<dim> sums{};
    for (unsigned i = 1; i < Shape.nodes; ++i) {
      for (unsigned a = 0; a < dim; ++a) sums[a] += std::abs(p[i][a] - p[0][a]);
    }
    double sum = 0;
    for (const double s : sums) sum += s;
    return sum;
  }

  void scale_by(int exponent) noexcept {
    for (point<dim>& node : p) scale(node.begin(), node.end(), exponent);
  }
};

/// Elements whose size would make powers of lengths leave the range of numbers are measured at another scale. Points
/// that are not finite are measured as if all of them were one.
template <class Measure, const shape& Shape, unsigned Rows>
double measure_extreme(element_points<Shape, Rows> element) noexcept {
  const int room_for_sums = std::isfinite(element.extent()) ? 0 : -8;
  element.scale_by(room_for_sums);
  const double extent = element.extent();
  if (!std::isfinite(extent)) {
    for (auto& node : element.p) node = 0.0;
  }
  const int exponent = scale_exponent(extent);
  element.scale_by(exponent);
  const double value = Measure::template of<Shape>(element.p);
  return std::ldexp(value, -(exponent + room_for_sums) * Measure::template power_of_length<Shape>);
}

template <class Measure, const shape& Shape, unsigned Rows>
double measure_element(const dense2D<double>& coords, const unsigned* nodes) noexcept {
  const element_points<Shape, Rows> element(coords, nodes);
  const double extent = element.extent();
  if (!(extent > 0x1p-64 && extent < 0x1p64)) return measure_extreme<Measure>(element);
  return Measure::template of<Shape>(element.p);
}

/// Measures one column, whose shape is known or told by its unused rows.
/// @{
template <class Measure, unsigned Rows, const shape& Shape>
double measure_column(uniform_columns<Shape>, const dense2D<double>& coords, const unsigned* nodes) noexcept {
  return measure_element<Measure, Shape, Rows>(coords, nodes);
}

template <class Measure, unsigned Rows>
double measure_column(mixed_faces, const dense2D<double>& coords, const unsigned* nodes) noexcept {
  return mixed_faces::of(nodes).type == ELT_TRIA3 ? measure_element<Measure, triangle_shape, Rows>(coords, nodes)
                                                  : measure_element<Measure, quadrangle_shape, Rows>(coords, nodes);
}

template <class Measure, unsigned Rows>
double measure_column(mixed_solids, const dense2D<double>& coords, const unsigned* nodes) noexcept {
  switch (mixed_solids::of(nodes).type) {
    case ELT_TETRA4:
      return measure_element<Measure, tetrahedron_shape, Rows>(coords, nodes);
    case ELT_PYRAMID5:
      return measure_element<Measure, pyramid_shape, Rows>(coords, nodes);
    case ELT_WEDGE6:
      return measure_element<Measure, wedge_shape, Rows>(coords, nodes);
    default:
      return measure_element<Measure, hexahedron_shape, Rows>(coords, nodes);
  }
}
/// @}

/// Calls sink(j, measure of element j) for all elements, in order.
template <class Measure, unsigned Rows, class Columns, class Sink>
void measure_columns(Columns columns, const dense2D<double>& coords, const dense2D<unsigned>& connectivity, Sink sink) {
  constexpr std::uint64_t ahead = 16;
  const std::uint64_t count = connectivity.cols();
  for (std::uint64_t j = 0; j < count; ++j) {
    if (j + ahead < count) {
      const unsigned* later = connectivity.column(j + ahead);
      for (unsigned i = 0; i < Columns::largest.nodes; ++i) {
        if (later[i] != none) prefetch(coords.column(later[i]));
      }
    }
    sink(j, measure_column<Measure, Rows>(columns, coords, connectivity.column(j)));
  }
}

/// The same for a type known at run time. -3 when the type has no measure, otherwise 0.
template <class Measure, class Sink>
int measure_elements(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                     Sink sink) {
  return visit_shape(resolve_type(type, connectivity.rows()), -3, [&](auto columns) {
    if (coords.rows() == 2) {
      measure_columns<Measure, 2>(columns, coords, connectivity, sink);
    } else {
      measure_columns<Measure, 3>(columns, coords, connectivity, sink);
    }
    return 0;
  });
}

/// 0, or the code of the first of the two that is invalid.
inline int check_mesh(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type) {
  if (coords.rows() != 2 && coords.rows() != 3) return -1;
  const auto nodes = static_cast<unsigned>(std::min<std::uint64_t>(coords.cols(), none - 1));
  return check_IDs(connectivity, type, nodes) ? 0 : -2;
}

/// Writes the measure of every element to `values`, which is empty on a negative result.
template <class Measure>
int measure_all(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                dense1D<double>& values) {
  values.clear();
  if (connectivity.empty()) return 0;
  const int code = check_mesh(coords, connectivity, type);
  if (code != 0) return code;
  if (!values.resize(connectivity.cols(), 0.0)) return out_of_memory;
  double* value = values.data();
  const int result =
      measure_elements<Measure>(coords, connectivity, type, [value](std::uint64_t j, double v) { value[j] = v; });
  if (result != 0) values.clear();
  return result;
}

}  // namespace qel::gridwork

#endif
