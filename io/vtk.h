// The cell types of VTK: by element type as they are written, and what they are read as.
#ifndef QEL_GRIDWORK_IO_VTK_H
#define QEL_GRIDWORK_IO_VTK_H

#include "io/node_order.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io::vtk {

inline constexpr unsigned vertex = 1;
inline constexpr unsigned poly_vertex = 2;
inline constexpr unsigned poly_line = 4;
inline constexpr unsigned triangle_strip = 6;
inline constexpr unsigned polygon = 7;
inline constexpr unsigned tetra = 10;
inline constexpr unsigned char no_type = 255;

/// VTK's type of the cell made of an element's vertices; 0 where there is none.
inline constexpr unsigned vtk_types[] = {
    0,      // ELT_UNKNOWN
    0,      // ELT_NODE
    0,      // ELT_EDGE_MIX
    3,      // ELT_EDGE2
    3,      // ELT_EDGE3
    0,      // ELT_FACE_MIX
    5,      // ELT_TRIA3
    9,      // ELT_QUAD4
    5,      // ELT_TRIA6
    9,      // ELT_QUAD8
    9,      // ELT_QUAD9
    0,      // ELT_SOLID_MIX
    tetra,  // ELT_TETRA4
    tetra,  // ELT_TETRA10
    14,     // ELT_PYRAMID5
    0,      // ELT_PYRAMID13
    14,     // ELT_PYRAMID14
    13,     // ELT_WEDGE6
    0,      // ELT_WEDGE15
    13,     // ELT_WEDGE18
    12,     // ELT_HEXA8
    12,     // ELT_HEXA20
    12,     // ELT_HEXA27
};
static_assert(sizeof(vtk_types) / sizeof(vtk_types[0]) == ELT_HEXA27 + 1);

/// What a cell is read as: an element of a type, whose node k is the local node order[k]; without an order, the local
/// node k.
struct cell_form {
  element_type type;
  const unsigned char* order;
};

inline constexpr unsigned char pixel_order[] = {0, 1, 3, 2};
inline constexpr unsigned char voxel_order[] = {0, 1, 3, 2, 4, 5, 7, 6};
inline constexpr unsigned char tetra4_order[] = {0, 1, 3, 2};
inline constexpr unsigned char tetra10_order[] = {0, 1, 3, 2, 6, 8, 7, 5, 4, 9};
inline constexpr unsigned char wedge_order[] = {0, 1, 2, 3, 4, 5, 11, 9, 10, 14, 12, 13, 6, 7, 8, 17, 15, 16};

inline constexpr cell_form no_cell = {ELT_UNKNOWN, nullptr};

/// By VTK's type. Lines of many nodes, polygons and strips are not among them: their sizes tell what they are.
inline constexpr cell_form cell_forms[] = {
    no_cell,
    no_cell,
    no_cell,
    {ELT_EDGE2, nullptr},
    no_cell,
    {ELT_TRIA3, nullptr},
    no_cell,
    no_cell,
    {ELT_QUAD4, pixel_order},
    {ELT_QUAD4, nullptr},
    {ELT_TETRA4, tetra4_order},
    {ELT_HEXA8, voxel_order},
    {ELT_HEXA8, nullptr},
    {ELT_WEDGE6, nullptr},
    {ELT_PYRAMID5, nullptr},
    no_cell,  // 15
    no_cell,
    no_cell,
    no_cell,
    no_cell,
    no_cell,  // 20
    {ELT_EDGE3, nullptr},
    {ELT_TRIA6, tria6_order.nodes},
    {ELT_QUAD8, nullptr},
    {ELT_TETRA10, tetra10_order},
    {ELT_HEXA20, nullptr},
    {ELT_WEDGE15, wedge_order},
    {ELT_PYRAMID13, nullptr},
    {ELT_QUAD9, nullptr},
    {ELT_HEXA27, nullptr},
    no_cell,  // 30
    no_cell,
    {ELT_WEDGE18, wedge_order},
};
static_assert(cell_forms[tetra].type == ELT_TETRA4 && sizeof(cell_forms) / sizeof(cell_forms[0]) == 33);

}  // namespace qel::gridwork::detail::io::vtk

#endif
