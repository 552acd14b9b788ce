// The sections of MEDIT meshes by element type, with their order of the nodes.
#ifndef QEL_GRIDWORK_IO_MEDIT_H
#define QEL_GRIDWORK_IO_MEDIT_H

#include <string_view>

#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io::medit {

/// How an element appears in a file: the section, and its nodes by local number. Without nodes, it does not appear.
struct section {
  std::string_view keyword;
  unsigned nodes;
  unsigned char order[8];
};

inline constexpr section no_section = {"", 0, {}};
inline constexpr section edges = {"Edges\n", 2, {0, 1}};
inline constexpr section triangles = {"Triangles\n", 3, {0, 1, 2}};
inline constexpr section quadrilaterals = {"Quadrilaterals\n", 4, {0, 1, 2, 3}};
inline constexpr section tetrahedra = {"Tetrahedra\n", 4, {0, 1, 2, 3}};
inline constexpr section pyramids = {"Hexahedra\n", 8, {0, 1, 2, 3, 4, 4, 4, 4}};
inline constexpr section wedges = {"Hexahedra\n", 8, {0, 1, 2, 2, 3, 4, 5, 5}};
inline constexpr section hexahedra = {"Hexahedra\n", 8, {0, 1, 2, 3, 4, 5, 6, 7}};

inline constexpr section sections[] = {
    no_section,      // ELT_UNKNOWN
    no_section,      // ELT_NODE
    no_section,      // ELT_EDGE_MIX
    edges,           // ELT_EDGE2
    edges,           // ELT_EDGE3
    no_section,      // ELT_FACE_MIX
    triangles,       // ELT_TRIA3
    quadrilaterals,  // ELT_QUAD4
    triangles,       // ELT_TRIA6
    quadrilaterals,  // ELT_QUAD8
    quadrilaterals,  // ELT_QUAD9
    no_section,      // ELT_SOLID_MIX
    tetrahedra,      // ELT_TETRA4
    tetrahedra,      // ELT_TETRA10
    pyramids,        // ELT_PYRAMID5
    no_section,      // ELT_PYRAMID13
    pyramids,        // ELT_PYRAMID14
    wedges,          // ELT_WEDGE6
    no_section,      // ELT_WEDGE15
    wedges,          // ELT_WEDGE18
    hexahedra,       // ELT_HEXA8
    hexahedra,       // ELT_HEXA20
    hexahedra,       // ELT_HEXA27
};
static_assert(sizeof(sections) / sizeof(sections[0]) == ELT_HEXA27 + 1);

}  // namespace qel::gridwork::detail::io::medit

#endif
