// The cards of NASTRAN bulk data by element type, with their order of the nodes.
#ifndef QEL_GRIDWORK_IO_NASTRAN_H
#define QEL_GRIDWORK_IO_NASTRAN_H

#include <string_view>

#include "io/node_order.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io::nastran {

/// The card of an element type; without a name, there is none.
struct card {
  std::string_view name;
  node_order order;
};

inline constexpr card no_card = {"", {}};
inline constexpr node_order wedge15_order = {15, {0, 1, 2, 3, 4, 5, 11, 9, 10, 6, 7, 8, 14, 12, 13}};
inline constexpr node_order hexa20_order = {20, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 16, 17, 18, 19, 12, 13, 14, 15}};

inline constexpr card cards[] = {
    no_card,                    // ELT_UNKNOWN
    no_card,                    // ELT_NODE
    no_card,                    // ELT_EDGE_MIX
    {"CBAR", in_order(2)},      // ELT_EDGE2
    {"CBAR", in_order(2)},      // ELT_EDGE3
    no_card,                    // ELT_FACE_MIX: that of each element
    {"CTRIA3", in_order(3)},    // ELT_TRIA3
    {"CQUAD4", in_order(4)},    // ELT_QUAD4
    {"CTRIA6", tria6_order},    // ELT_TRIA6
    {"CQUAD8", in_order(8)},    // ELT_QUAD8
    {"CQUAD8", in_order(8)},    // ELT_QUAD9
    no_card,                    // ELT_SOLID_MIX: that of each element
    {"CTETRA", tetra4_order},   // ELT_TETRA4
    {"CTETRA", tetra10_order},  // ELT_TETRA10
    {"CPYRAM", in_order(5)},    // ELT_PYRAMID5
    {"CPYRAM", in_order(13)},   // ELT_PYRAMID13
    {"CPYRAM", in_order(13)},   // ELT_PYRAMID14
    {"CPENTA", in_order(6)},    // ELT_WEDGE6
    {"CPENTA", wedge15_order},  // ELT_WEDGE15
    {"CPENTA", wedge15_order},  // ELT_WEDGE18
    {"CHEXA", in_order(8)},     // ELT_HEXA8
    {"CHEXA", hexa20_order},    // ELT_HEXA20
    {"CHEXA", hexa20_order},    // ELT_HEXA27
};
static_assert(sizeof(cards) / sizeof(cards[0]) == ELT_HEXA27 + 1);

}  // namespace qel::gridwork::detail::io::nastran

#endif
