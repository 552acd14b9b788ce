// The cell types of VTK by element type.
#ifndef QEL_GRIDWORK_IO_VTK_H
#define QEL_GRIDWORK_IO_VTK_H

#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io::vtk {

inline constexpr unsigned poly_vertex = 2;
inline constexpr unsigned tetra = 10;

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

}  // namespace qel::gridwork::detail::io::vtk

#endif
