// The sections of MEDIT meshes, with their order of the nodes: by element type as they are written, and as they are read.
#ifndef QEL_GRIDWORK_IO_MEDIT_H
#define QEL_GRIDWORK_IO_MEDIT_H

#include <string_view>

#include "io/node_order.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io::medit {

/// How an element appears in a file: the section, and its nodes by local number. Without nodes, it does not appear.
struct section {
  std::string_view keyword;
  unsigned nodes;
  unsigned char order[8];
};

inline constexpr section no_section = {"", 0, {}};
inline constexpr section edges = {"Edges", 2, {0, 1}};
inline constexpr section triangles = {"Triangles", 3, {0, 1, 2}};
inline constexpr section quadrilaterals = {"Quadrilaterals", 4, {0, 1, 2, 3}};
inline constexpr section tetrahedra = {"Tetrahedra", 4, {0, 1, 2, 3}};
inline constexpr section pyramids = {"Hexahedra", 8, {0, 1, 2, 3, 4, 4, 4, 4}};
inline constexpr section wedges = {"Hexahedra", 8, {0, 1, 2, 2, 3, 4, 5, 5}};
inline constexpr section hexahedra = {"Hexahedra", 8, {0, 1, 2, 3, 4, 5, 6, 7}};

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

/// What a section holds: elements of a type, whose node k is the local node order[k]; without an order, the local node k.
struct input_section {
  std::string_view keyword;
  element_type type;
  const unsigned char* order;
};

inline constexpr unsigned char tetra10_order[] = {0, 1, 2, 3, 6, 4, 5, 7, 8, 9};

inline constexpr input_section input_sections[] = {
    {edges.keyword, ELT_EDGE2, nullptr},
    {"EdgesP2", ELT_EDGE3, nullptr},
    {triangles.keyword, ELT_TRIA3, nullptr},
    {"TrianglesP2", ELT_TRIA6, tria6_order.nodes},
    {quadrilaterals.keyword, ELT_QUAD4, nullptr},
    {"QuadrilateralsQ2", ELT_QUAD9, nullptr},
    {tetrahedra.keyword, ELT_TETRA4, nullptr},
    {"TetrahedraP2", ELT_TETRA10, tetra10_order},
    {"Pyramids", ELT_PYRAMID5, nullptr},
    {"Prisms", ELT_WEDGE6, nullptr},
    {"Pentahedra", ELT_WEDGE6, nullptr},
    {hexahedra.keyword, ELT_HEXA8, nullptr},
    {"Hexaedra", ELT_HEXA8, nullptr},
};

/// Sections of elements that the library does not have.
inline constexpr std::string_view left_out_sections[] = {
    "EdgesP3",          "EdgesP4",      "TrianglesP3",  "TrianglesP4", "Quadrilaterals6", "QuadrilateralsQ3",
    "QuadrilateralsQ4", "TetrahedraP3", "TetrahedraP4", "PyramidsP2",  "PyramidsP3",      "PyramidsP4",
    "PrismsP2",         "PrismsP3",     "PrismsP4",     "Prisms9",     "Hexahedra12",     "HexahedraQ2",
    "HexahedraQ3",      "HexahedraQ4",  "Polyhedra"};

}  // namespace qel::gridwork::detail::io::medit

#endif
