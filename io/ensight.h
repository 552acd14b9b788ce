// The elements of EnSight by element type, with their order of the nodes.
#ifndef QEL_GRIDWORK_IO_ENSIGHT_H
#define QEL_GRIDWORK_IO_ENSIGHT_H

#include <string_view>

#include "io/node_order.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io::ensight {

/// EnSight's element of an element type; without a name, there is none.
struct ensight_element {
  std::string_view name;
  node_order order;
};

inline constexpr ensight_element no_element = {"", {}};

inline constexpr ensight_element elements[] = {
    no_element,                     // ELT_UNKNOWN
    no_element,                     // ELT_NODE
    no_element,                     // ELT_EDGE_MIX
    {"bar2", in_order(2)},          // ELT_EDGE2
    {"bar3", in_order(3)},          // ELT_EDGE3
    no_element,                     // ELT_FACE_MIX
    {"tria3", in_order(3)},         // ELT_TRIA3
    {"quad4", in_order(4)},         // ELT_QUAD4
    {"tria6", tria6_order},         // ELT_TRIA6
    {"quad8", in_order(8)},         // ELT_QUAD8
    {"quad8", in_order(8)},         // ELT_QUAD9
    no_element,                     // ELT_SOLID_MIX
    {"tetra4", mirrored_tetra4},    // ELT_TETRA4
    {"tetra10", mirrored_tetra10},  // ELT_TETRA10
    no_element,                     // ELT_PYRAMID5
    no_element,                     // ELT_PYRAMID13
    no_element,                     // ELT_PYRAMID14
    {"penta6", in_order(6)},        // ELT_WEDGE6
    no_element,                     // ELT_WEDGE15
    {"penta6", in_order(6)},        // ELT_WEDGE18
    {"hexa8", in_order(8)},         // ELT_HEXA8
    {"hexa20", in_order(20)},       // ELT_HEXA20
    {"hexa20", in_order(20)},       // ELT_HEXA27
};
static_assert(sizeof(elements) / sizeof(elements[0]) == ELT_HEXA27 + 1);

}  // namespace qel::gridwork::detail::io::ensight

#endif
