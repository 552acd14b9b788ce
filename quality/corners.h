// The corners of the solids whose edges meet in threes, and the triple products of their edge vectors.
#ifndef QEL_GRIDWORK_QUALITY_CORNERS_H
#define QEL_GRIDWORK_QUALITY_CORNERS_H

#include <algorithm>
#include <limits>

#include "core/linear_shapes.h"
#include "quality/tetrahedron.h"
#include "quality/vectors.h"

namespace qel::gridwork::detail {

/// Corner i is node i. Its neighbours come in the order that makes the triple product positive in a sound element: base
/// counter-clockwise seen from the top or the apex (see the drawings of the shapes).
struct corner_table {
  unsigned count;
  unsigned char neighbours[8][3];
};

/// Without the apex, where four edges meet.
inline constexpr corner_table pyramid_corners = {4, {{1, 3, 4}, {2, 0, 4}, {3, 1, 4}, {0, 2, 4}}};

inline constexpr corner_table wedge_corners = {6, {{1, 2, 3}, {2, 0, 4}, {0, 1, 5}, {5, 4, 0}, {3, 5, 1}, {4, 3, 2}}};

inline constexpr corner_table hexahedron_corners = {
    8, {{1, 3, 4}, {2, 0, 5}, {3, 1, 6}, {0, 2, 7}, {7, 5, 0}, {4, 6, 1}, {5, 7, 2}, {6, 4, 3}}};

template <const shape& Shape>
constexpr const corner_table& corners_of = Shape.type == ELT_PYRAMID5 ? pyramid_corners
                                           : Shape.type == ELT_WEDGE6 ? wedge_corners
                                                                      : hexahedron_corners;

template <const shape& Shape, class T>
T smallest_corner_jacobian(const point<3, T>* p) noexcept {
  constexpr const corner_table& corners = corners_of<Shape>;
  T smallest = std::numeric_limits<double>::infinity();
  for (unsigned i = 0; i < corners.count; ++i) {
    const unsigned char* n = corners.neighbours[i];
    const T J = triple(difference(p[n[0]], p[i]), difference(p[n[1]], p[i]), difference(p[n[2]], p[i]));
    smallest = smaller(smallest, J);
  }
  return smallest;
}

/// The smallest quality of the tetrahedra that the corners make with their neighbours; ends at the first flat one.
template <const shape& Shape>
double smallest_corner_tetrahedron(const point<3>* p) noexcept {
  constexpr const corner_table& corners = corners_of<Shape>;
  double smallest = 1;
  for (unsigned i = 0; i < corners.count && smallest > flat_quality; ++i) {
    const unsigned char* n = corners.neighbours[i];
    smallest = std::min(smallest, tetrahedron_quality(p[i], p[n[1]], p[n[0]], p[n[2]]));
  }
  return smallest;
}

}  // namespace qel::gridwork::detail

#endif
