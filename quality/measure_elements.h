// The one way to take a measure of every element of a mesh.
#ifndef QEL_GRIDWORK_QUALITY_MEASURE_ELEMENTS_H
#define QEL_GRIDWORK_QUALITY_MEASURE_ELEMENTS_H

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "core/check.h"
#include "core/coordinates.h"
#include "core/elements.h"
#include "core/limits.h"
#include "core/linear_shapes.h"
#include "core/outputs.h"
#include "core/position_table.h"
#include "core/result.h"
#include "core/scaling.h"
#include "quality/vectors.h"

namespace qel::gridwork::detail {

/// Solids have three coordinates, the last one 0 on 2-row coordinates.
template <const shape& Shape, unsigned Rows>
constexpr unsigned dimension_of = Shape.boundary_nodes > 2 ? 3 : Rows;

/// The columns of the coordinates.
struct node_columns {
  const double* first;
  std::uint64_t ld;

  const double* operator[](unsigned node) const noexcept { return first + node * ld; }
};

/// The nodes of one element, or of two side by side; at(i, a) is coordinate a of node i.
template <const shape& Shape, unsigned Rows, class T = double>
struct element_points {
  static constexpr unsigned dim = dimension_of<Shape, Rows>;
  point<dim, T> p[Shape.nodes];

  template <class At>
  explicit element_points(At at) noexcept {
    for (unsigned i = 0; i < Shape.nodes; ++i) {
      for (unsigned a = 0; a < Rows; ++a) p[i][a] = at(i, a);
      for (unsigned a = Rows; a < dim; ++a) p[i][a] = 0.0;
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

  /// Makes a coordinate 0 that all nodes share. What differs at all is not far from the size of the element in
  /// magnitude: both can be scaled together. What is shared may be any number.
  void drop_shared_coordinates() noexcept {
    for (unsigned a = 0; a < dim; ++a) {
      const double shared = p[0][a];
      if (std::any_of(p, p + Shape.nodes, [=](const point<dim>& node) { return node[a] != shared; })) continue;
      for (point<dim>& node : p) node[a] = 0;
    }
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
  element.drop_shared_coordinates();
  element.scale_by(exponent);
  const double value = Measure::template of<Shape>(element.p);
  return std::ldexp(value, -(exponent + room_for_sums) * Measure::template power_of_length<Shape>);
}

template <class Measure, const shape& Shape, unsigned Rows>
double measure_element(node_columns coords, const unsigned* nodes) noexcept {
  const element_points<Shape, Rows> element([=](unsigned i, unsigned a) { return coords[nodes[i]][a]; });
  const double extent = element.extent();
  if (!(extent > 0x1p-64 && extent < 0x1p64)) return measure_extreme<Measure>(element);
  return Measure::template of<Shape>(element.p);
}

/// Measures one column, whose shape is known or told by its unused rows.
/// @{
template <class Measure, unsigned Rows, const shape& Shape>
double measure_column(uniform_columns<Shape>, node_columns coords, const unsigned* nodes) noexcept {
  return measure_element<Measure, Shape, Rows>(coords, nodes);
}

template <class Measure, unsigned Rows>
double measure_column(mixed_faces, node_columns coords, const unsigned* nodes) noexcept {
  return mixed_faces::of(nodes).type == ELT_TRIA3 ? measure_element<Measure, triangle_shape, Rows>(coords, nodes)
                                                  : measure_element<Measure, quadrangle_shape, Rows>(coords, nodes);
}

template <class Measure, unsigned Rows>
double measure_column(mixed_solids, node_columns coords, const unsigned* nodes) noexcept {
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

/// The columns of a connectivity of one kind, and their nodes.
template <class Columns>
struct element_columns {
  node_columns coords;
  const unsigned* first;
  std::uint64_t ld;
  std::uint64_t count;

  element_columns(const dense2D<double>& nodes, const dense2D<unsigned>& connectivity) noexcept
      : coords{nodes.data(), nodes.ld()},
        first(connectivity.data()),
        ld(connectivity.ld()),
        count(connectivity.cols()) {}

  const unsigned* operator[](std::uint64_t j) const noexcept { return first + j * ld; }

  /// Fetches the nodes of an element whose turn comes later.
  void prefetch_after(std::uint64_t j) const noexcept {
    constexpr std::uint64_t ahead = limits::elements_ahead;
    if (j + ahead >= count) return;
    const unsigned* nodes = (*this)[j + ahead];
    for (unsigned i = 0; i < Columns::of(nodes).nodes; ++i) prefetch(coords[nodes[i]]);
  }
};

/// Calls sink for the elements j and j + 1, if both can be measured side by side; false otherwise. T is double_pair.
template <class T, class Measure, unsigned Rows, const shape& Shape, class Sink>
[[gnu::always_inline]] inline bool measure_two(const element_columns<uniform_columns<Shape>>& elements, std::uint64_t j,
                                               Sink& sink) {
  QEL_GRIDWORK_CHECK(j + 1 < elements.count);
  const node_columns coords = elements.coords;
  const unsigned* first = elements[j];
  const unsigned* second = elements[j + 1];
  const element_points<Shape, Rows, T> points(
      [=](unsigned i, unsigned a) { return T(coords[first[i]][a], coords[second[i]][a]); });
  const auto [qualities, sure] = Measure::template of_two<Shape>(points.p);
  if (!sure.both()) return false;
  sink(j, qualities.first());
  sink(j + 1, qualities.second());
  return true;
}

/// Calls sink(j, measure of element j) for all elements, in order.
template <class Measure, unsigned Rows, class Columns, class Sink>
void measure_columns(const element_columns<Columns>& elements, Sink sink) {
  constexpr bool is_uniform = std::is_same_v<Columns, uniform_columns<Columns::largest>>;
  for (std::uint64_t j = 0; j < elements.count; ++j) {
    elements.prefetch_after(j);
    if constexpr (is_uniform && Measure::template takes_two<Columns::largest>) {
      elements.prefetch_after(j + 1);
      if (j + 1 < elements.count && measure_two<double_pair, Measure, Rows>(elements, j, sink)) {
        ++j;
        continue;
      }
    }
    sink(j, measure_column<Measure, Rows>(Columns(), elements.coords, elements[j]));
  }
}

/// The same for a type known at run time. -3 when the type has no measure, otherwise 0.
template <class Measure, class Sink>
int measure_elements(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                     Sink sink) {
  return visit_shape(resolve_type(type, connectivity.rows()), -3, [&](auto columns) {
    const element_columns<decltype(columns)> elements(coords, connectivity);
    if (coords.rows() == 2) {
      measure_columns<Measure, 2>(elements, sink);
    } else {
      measure_columns<Measure, 3>(elements, sink);
    }
    return 0;
  });
}

/// 0, or the code of the first of the two that is invalid.
inline int check_mesh(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type) {
  if (!in_plane_or_space(coords)) return -1;
  return check_IDs(connectivity, type, node_bound(coords)) ? 0 : -2;
}

/// Writes the measure of every element to `values`, which is empty on a negative result.
template <class Measure>
int measure_all(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                output<dense1D<double>>&& Q) {
  dense1D<double>& values = Q;
  values.clear();
  if (connectivity.empty()) return 0;
  const int code = check_mesh(coords, connectivity, type);
  if (code != 0) return code;
  if (!values.resize(connectivity.cols())) return out_of_memory;
  double* value = values.data();
  const int result =
      measure_elements<Measure>(coords, connectivity, type, [value](std::uint64_t j, double v) { value[j] = v; });
  if (result != 0) values.clear();
  return result;
}

}  // namespace qel::gridwork::detail

#endif
