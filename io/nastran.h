// The cards of NASTRAN bulk data by element type, with their order of the nodes.
#ifndef QEL_GRIDWORK_IO_NASTRAN_H
#define QEL_GRIDWORK_IO_NASTRAN_H

#include <string_view>

#include "io/node_order.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io::nastran {

/// The card of an element type; without a name, there is none.
struct written_card {
  std::string_view name;
  node_order order;
};

inline constexpr written_card no_card = {"", {}};
inline constexpr node_order wedge15_order = {15, {0, 1, 2, 3, 4, 5, 11, 9, 10, 6, 7, 8, 14, 12, 13}};
inline constexpr node_order hexa20_order = {20, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 16, 17, 18, 19, 12, 13, 14, 15}};

inline constexpr written_card written_cards[] = {
    no_card,                       // ELT_UNKNOWN
    no_card,                       // ELT_NODE
    no_card,                       // ELT_EDGE_MIX
    {"CBAR", in_order(2)},         // ELT_EDGE2
    {"CBAR", in_order(2)},         // ELT_EDGE3
    no_card,                       // ELT_FACE_MIX: that of each element
    {"CTRIA3", in_order(3)},       // ELT_TRIA3
    {"CQUAD4", in_order(4)},       // ELT_QUAD4
    {"CTRIA6", tria6_order},       // ELT_TRIA6
    {"CQUAD8", in_order(8)},       // ELT_QUAD8
    {"CQUAD8", in_order(8)},       // ELT_QUAD9
    no_card,                       // ELT_SOLID_MIX: that of each element
    {"CTETRA", mirrored_tetra4},   // ELT_TETRA4
    {"CTETRA", mirrored_tetra10},  // ELT_TETRA10
    {"CPYRAM", in_order(5)},       // ELT_PYRAMID5
    {"CPYRAM", in_order(13)},      // ELT_PYRAMID13
    {"CPYRAM", in_order(13)},      // ELT_PYRAMID14
    {"CPENTA", in_order(6)},       // ELT_WEDGE6
    {"CPENTA", wedge15_order},     // ELT_WEDGE15
    {"CPENTA", wedge15_order},     // ELT_WEDGE18
    {"CHEXA", in_order(8)},        // ELT_HEXA8
    {"CHEXA", hexa20_order},       // ELT_HEXA20
    {"CHEXA", hexa20_order},       // ELT_HEXA27
};
static_assert(sizeof(written_cards) / sizeof(written_cards[0]) == ELT_HEXA27 + 1);

/// A card that is read: an element of its linear type where a node behind the vertices is blank, else of the other one.
struct element_card {
  std::string_view name;
  element_type linear, quadratic;
  bool has_property;  // in the field behind the identifier
};

inline constexpr element_card element_cards[] = {
    {"CTETRA", ELT_TETRA4, ELT_TETRA10, true},    {"CHEXA", ELT_HEXA8, ELT_HEXA20, true},
    {"CQUAD4", ELT_QUAD4, ELT_QUAD4, true},       {"CTRIA3", ELT_TRIA3, ELT_TRIA3, true},
    {"CPENTA", ELT_WEDGE6, ELT_WEDGE15, true},    {"CTRIA6", ELT_TRIA3, ELT_TRIA6, true},
    {"CQUAD8", ELT_QUAD4, ELT_QUAD8, true},       {"CPYRAM", ELT_PYRAMID5, ELT_PYRAMID13, true},
    {"CPYRA", ELT_PYRAMID5, ELT_PYRAMID13, true}, {"CBAR", ELT_EDGE2, ELT_EDGE2, true},
    {"CBEAM", ELT_EDGE2, ELT_EDGE2, true},        {"CROD", ELT_EDGE2, ELT_EDGE2, true},
    {"CTUBE", ELT_EDGE2, ELT_EDGE2, true},        {"CBEND", ELT_EDGE2, ELT_EDGE2, true},
    {"CONROD", ELT_EDGE2, ELT_EDGE2, false},      {"CBEAM3", ELT_EDGE2, ELT_EDGE3, true},
    {"CTRIAR", ELT_TRIA3, ELT_TRIA3, true},       {"CQUADR", ELT_QUAD4, ELT_QUAD4, true},
    {"CSHEAR", ELT_QUAD4, ELT_QUAD4, true},       {"CQUAD", ELT_QUAD4, ELT_QUAD9, true},
};

/// The order of the nodes on a card that is read: that of the card that is written, but for the types that are written
/// as lower ones.
constexpr node_order order_on_card(element_type type) noexcept {
  if (type == ELT_EDGE3) return in_order(3);
  return type == ELT_QUAD9 ? in_order(9) : written_cards[type].order;
}

}  // namespace qel::gridwork::detail::io::nastran

#endif
