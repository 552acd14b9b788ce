// The linear shapes as data: nodes, boundaries and edges by local node, drawn once for everything that needs them.
// Which way boundaries point is told in qel/gridwork/topology.h.
#ifndef QEL_GRIDWORK_CORE_LINEAR_SHAPES_H
#define QEL_GRIDWORK_CORE_LINEAR_SHAPES_H

#include "core/result.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail {

constexpr unsigned most_boundaries = 6;
constexpr unsigned most_boundary_nodes = 4;
constexpr unsigned most_edges = 12;

struct shape {
  element_type type;
  unsigned nodes;
  unsigned boundaries;
  unsigned boundary_nodes;  // of the largest boundary
  unsigned edges;
  unsigned char boundary_sizes[most_boundaries];
  unsigned char boundary[most_boundaries][most_boundary_nodes];
  unsigned char edge[most_edges][2];
};

// 0 ---- 1
inline constexpr shape edge_shape = {ELT_EDGE2, 2, 2, 1, 1, {1, 1}, {{1}, {0}}, {{0, 1}}};

//    2
//   / \        edge k is opposite node k
//  0 - 1
inline constexpr shape triangle_shape = {
    ELT_TRIA3, 3, 3, 2, 3, {2, 2, 2}, {{1, 2}, {2, 0}, {0, 1}}, {{1, 2}, {2, 0}, {0, 1}}};

//  3 - 2
//  |   |       edge k runs from node k to the next one
//  0 - 1
inline constexpr shape quadrangle_shape = {
    ELT_QUAD4, 4, 4, 2, 4, {2, 2, 2, 2}, {{0, 1}, {1, 2}, {2, 3}, {3, 0}}, {{0, 1}, {1, 2}, {2, 3}, {3, 0}}};

//      3
//    / | \     face k is opposite node k
//   0 -|- 2
//    \ | /
//      1
inline constexpr shape tetrahedron_shape = {ELT_TETRA4,
                                            4,
                                            4,
                                            3,
                                            6,
                                            {3, 3, 3, 3},
                                            {{1, 2, 3}, {2, 0, 3}, {1, 3, 0}, {2, 1, 0}},
                                            {{1, 2}, {2, 0}, {0, 1}, {0, 3}, {1, 3}, {2, 3}}};

//       4
//      /|\     base 0-1-2-3, apex 4
//   3 / | \ 2
//    /  |  \.
//   0 ------ 1
inline constexpr shape pyramid_shape = {ELT_PYRAMID5,
                                        5,
                                        5,
                                        4,
                                        8,
                                        {3, 3, 3, 3, 4},
                                        {{0, 4, 1}, {1, 4, 2}, {2, 4, 3}, {3, 4, 0}, {0, 1, 2, 3}},
                                        {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}};

//   3 ------ 5
//   | \    / |
//   |   4    |  bottom 0-1-2, top 3-4-5
//   0 --|--- 2
//     \ | /
//       1
inline constexpr shape wedge_shape = {ELT_WEDGE6,
                                      6,
                                      5,
                                      4,
                                      9,
                                      {3, 3, 4, 4, 4},
                                      {{0, 1, 2}, {3, 5, 4}, {2, 1, 4, 5}, {0, 2, 5, 3}, {1, 0, 3, 4}},
                                      {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}}};

//     7 ---- 6
//    /|     /|
//   4 ---- 5 |  bottom 0-1-2-3, top 4-5-6-7
//   | 3 ---| 2
//   |/     |/
//   0 ---- 1
inline constexpr shape hexahedron_shape = {
    ELT_HEXA8,
    8,
    6,
    4,
    12,
    {4, 4, 4, 4, 4, 4},
    {{0, 3, 7, 4}, {1, 5, 6, 2}, {0, 4, 5, 1}, {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 7, 6, 5}},
    {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}}};

// Where a column of a mixed matrix ends, there are three answers, which agree on all columns that check_IDs() accepts:
// - check_IDs() (elements.cpp): `none` in row 4, 5 or 6 and in every later one, or there is no end before row 8;
// - here, for topology and quality: behind the first of rows 3, 4 and 5 that holds a node and is followed by `none`;
// - plain_type() (io/matrix_range.h), for writers: at the first `none` from row 4 on, whatever lies before or behind.

/// The shape of one column of a mixed face connectivity of 4 rows.
constexpr const shape& face_shape(const unsigned* nodes) noexcept {
  return nodes[3] == none ? triangle_shape : quadrangle_shape;
}

/// The shape of one column of a mixed solid connectivity of 8 rows.
constexpr const shape& solid_shape(const unsigned* nodes) noexcept {
  if (nodes[3] != none && nodes[4] == none) return tetrahedron_shape;
  if (nodes[4] != none && nodes[5] == none) return pyramid_shape;
  if (nodes[5] != none && nodes[6] == none) return wedge_shape;
  return hexahedron_shape;
}

/// True when the boundaries of a shape have the same number of nodes.
constexpr bool has_equal_boundaries(const shape& s) noexcept {
  for (unsigned k = 1; k < s.boundaries; ++k) {
    if (s.boundary_sizes[k] != s.boundary_sizes[0]) return false;
  }
  return true;
}

/// Gives every column the same shape.
template <const shape& Shape>
struct uniform_columns {
  static constexpr const shape& largest = Shape;
  static constexpr bool equal_boundaries = has_equal_boundaries(Shape);
  static constexpr const shape& of(const unsigned*) noexcept { return Shape; }
};

/// Gives a column of a mixed connectivity its shape; `largest` tells the counts that all of them fit in.
struct mixed_faces {
  static constexpr const shape& largest = quadrangle_shape;
  static constexpr bool equal_boundaries = true;
  static constexpr const shape& of(const unsigned* nodes) noexcept { return face_shape(nodes); }
};

struct mixed_solids {
  static constexpr const shape& largest = hexahedron_shape;
  static constexpr bool equal_boundaries = false;
  static constexpr const shape& of(const unsigned* nodes) noexcept { return solid_shape(nodes); }
};

/// Calls action(columns), where `columns` is one of the three kinds above, for a linear type that is pure or mixed of
/// full row count, and returns its result; for any other type returns `otherwise`.
template <class Result, class Action>
constexpr Result visit_shape(element_type type, Result otherwise, Action action) {
  switch (type) {
    case ELT_EDGE2:
      return action(uniform_columns<edge_shape>());
    case ELT_TRIA3:
      return action(uniform_columns<triangle_shape>());
    case ELT_QUAD4:
      return action(uniform_columns<quadrangle_shape>());
    case ELT_FACE_MIX:
      return action(mixed_faces());
    case ELT_TETRA4:
      return action(uniform_columns<tetrahedron_shape>());
    case ELT_PYRAMID5:
      return action(uniform_columns<pyramid_shape>());
    case ELT_WEDGE6:
      return action(uniform_columns<wedge_shape>());
    case ELT_HEXA8:
      return action(uniform_columns<hexahedron_shape>());
    case ELT_SOLID_MIX:
      return action(mixed_solids());
    default:
      return otherwise;
  }
}

}  // namespace qel::gridwork::detail

#endif
