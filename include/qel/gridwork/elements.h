/// @file
/// The element types, their tables, the check of a connectivity against its type, and the library's version.
///
/// Conventions of the whole library
/// - `coords` is a `dense2D<double>`: one column per node, 2 or 3 rows.
/// - `connectivity` is a `dense2D<unsigned>`: one column per element, one row per local node, nodes counted from 0.
/// - `~0U` stands for "none": no node, no neighbour, nothing found, an unused row of a mixed element.
/// - A matrix with rows * cols = 0 is empty; empty input is valid input.
/// - `int` results: 0 (or a count, where a function says so) on success, a negative code on failure; -k names the k-th
///   argument unless the function lists its codes; -199 means that memory ran out.
#ifndef QEL_GRIDWORK_ELEMENTS_H
#define QEL_GRIDWORK_ELEMENTS_H

#include "qel/dense.h"
#include "qel/export.h"

namespace qel {
namespace gridwork {

/// Element types. Vertices come first in a column, the other nodes of quadratic elements follow.
///
/// The mixed types hold the linear elements of a family in one matrix, with `~0U` in the unused last rows of a column:
/// ELT_FACE_MIX (4 rows) triangles and quadrangles, ELT_SOLID_MIX (8 rows) tetrahedra, pyramids, wedges and hexahedra.
/// A mixed matrix with the row count of a smaller member (3; 4, 5, 6) holds only that member.
///
/// Wherever a function takes a type, a number that is none of these counts as ELT_UNKNOWN: an element without nodes,
/// which no connectivity with entries fits. In a list of types it is refused with the code of a matrix that does not fit
/// its type, even if the matrix is empty.
enum element_type : int {
  ELT_UNKNOWN = 0,     ///< no element
  ELT_NODE = 1,        ///< a single node
  ELT_EDGE_MIX = 2,    ///< same tables as ELT_EDGE2
  ELT_EDGE2 = 3,       ///< 2-node edge
  ELT_EDGE3 = 4,       ///< 3-node edge
  ELT_FACE_MIX = 5,    ///< triangles and quadrangles
  ELT_TRIA3 = 6,       ///< 3-node triangle
  ELT_QUAD4 = 7,       ///< 4-node quadrangle
  ELT_TRIA6 = 8,       ///< 6-node triangle
  ELT_QUAD8 = 9,       ///< 8-node quadrangle
  ELT_QUAD9 = 10,      ///< 9-node quadrangle
  ELT_SOLID_MIX = 11,  ///< tetrahedra, pyramids, wedges and hexahedra
  ELT_TETRA4 = 12,     ///< 4-node tetrahedron
  ELT_TETRA10 = 13,    ///< 10-node tetrahedron
  ELT_PYRAMID5 = 14,   ///< 5-node pyramid
  ELT_PYRAMID13 = 15,  ///< 13-node pyramid
  ELT_PYRAMID14 = 16,  ///< 14-node pyramid
  ELT_WEDGE6 = 17,     ///< 6-node wedge
  ELT_WEDGE15 = 18,    ///< 15-node wedge
  ELT_WEDGE18 = 19,    ///< 18-node wedge
  ELT_HEXA8 = 20,      ///< 8-node hexahedron
  ELT_HEXA20 = 21,     ///< 20-node hexahedron
  ELT_HEXA27 = 22      ///< 27-node hexahedron
};

/// The version of the library that runs, with a fourth number: "4.8.0.0", a constant string. version.h has that of the
/// headers.
QEL_GRIDWORK_API const char* version();

/// Nodes of an element: the row count of a connectivity of that type. Constant.
QEL_GRIDWORK_API unsigned nbr_nodes(element_type type);

/// Vertices of an element. Constant.
QEL_GRIDWORK_API unsigned nbr_base_nodes(element_type type);

/// Topological dimension of an element: 0 (node) to 3 (solid). Constant.
QEL_GRIDWORK_API unsigned element_dim(element_type type);

/// Boundaries of an element: faces of a solid, edges of a face, ends of an edge. Constant.
QEL_GRIDWORK_API unsigned nbr_boundaries(element_type type);

/// True when `connectivity` has the row count of `type` and every node index is below `n`.
///
/// @param connectivity rows x e; an empty one is valid for every type
/// @param type         type of all columns; a mixed type with the row count of a member is read as that member
/// @param n            exclusive bound of the node indices, usually `coords.cols()`; `~0U` checks the shape alone
///
/// In mixed matrices `~0U` is allowed where it marks the end of a column: in row 3 of ELT_FACE_MIX; in all rows from 4, 5
/// or 6 on of ELT_SOLID_MIX. Other types allow it nowhere. Cost: linear in the entries.
QEL_GRIDWORK_API bool check_IDs(const dense2D<unsigned>& connectivity, element_type type, unsigned n);

}  // namespace gridwork
}  // namespace qel

#endif
