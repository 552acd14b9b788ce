// Elements of FEMAP neutral files: topologies, and the slots and order of their nodes.
#ifndef QEL_GRIDWORK_IO_FEMAP_H
#define QEL_GRIDWORK_IO_FEMAP_H

#include <cstdint>

#include "io/nastran.h"
#include "io/node_order.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io::femap {

constexpr unsigned nbr_slots = 20;

/// The numbers of the blocks that are read.
enum class block : std::int64_t { header = 100, nodes = 403, elements = 404 };

/// How an element appears: its topology, its kind by nodes and dimension, and the slots of its nodes, which come in the
/// order of NASTRAN's cards.
struct element_layout {
  element_type type, linear;
  unsigned topology;
  unsigned kind;
  unsigned char slots[nbr_slots];
};

inline constexpr element_layout element_layouts[] = {
    {ELT_EDGE2, ELT_EDGE2, 0, 1, {0, 1}},
    {ELT_EDGE3, ELT_EDGE2, 1, 1, {0, 1, 2}},
    {ELT_TRIA3, ELT_TRIA3, 2, 17, {0, 1, 2}},
    {ELT_QUAD4, ELT_QUAD4, 4, 17, {0, 1, 2, 3}},
    {ELT_TRIA6, ELT_TRIA3, 3, 18, {0, 1, 2, 4, 5, 6}},
    {ELT_QUAD8, ELT_QUAD4, 5, 18, {0, 1, 2, 3, 4, 5, 6, 7}},
    {ELT_TETRA4, ELT_TETRA4, 6, 25, {0, 1, 2, 4}},
    {ELT_TETRA10, ELT_TETRA4, 10, 26, {0, 1, 2, 4, 8, 9, 10, 12, 13, 14}},
    {ELT_PYRAMID5, ELT_PYRAMID5, 14, 25, {0, 1, 2, 3, 4}},
    {ELT_PYRAMID13, ELT_PYRAMID5, 19, 26, {0, 1, 2, 3, 4, 8, 9, 10, 11, 12, 13, 14, 15}},
    {ELT_WEDGE6, ELT_WEDGE6, 7, 25, {0, 1, 2, 4, 5, 6}},
    {ELT_WEDGE15, ELT_WEDGE6, 11, 26, {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 16, 17, 18}},
    {ELT_HEXA8, ELT_HEXA8, 8, 25, {0, 1, 2, 3, 4, 5, 6, 7}},
    {ELT_HEXA20, ELT_HEXA8, 12, 26, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19}},
};

/// The layout of a type, which for the types with nodes in their faces and bodies is that of the one without; null for
/// those that do not appear.
constexpr const element_layout* layout_of(element_type type) noexcept {
  const element_type written = type == ELT_QUAD9       ? ELT_QUAD8
                               : type == ELT_PYRAMID14 ? ELT_PYRAMID13
                               : type == ELT_WEDGE18   ? ELT_WEDGE15
                               : type == ELT_HEXA27    ? ELT_HEXA20
                                                       : type;
  for (const element_layout& layout : element_layouts) {
    if (layout.type == written) return &layout;
  }
  return nullptr;
}

/// The layout of a topology; null for one that no type here has.
constexpr const element_layout* layout_of_topology(std::int64_t topology) noexcept {
  for (const element_layout& layout : element_layouts) {
    if (layout.topology == topology) return &layout;
  }
  return nullptr;
}

/// The nodes of an element by local number, from its slots: those of its topology or, where others are in use, the first
/// ones. Returns its type: the linear one when a middle node is missing, ELT_UNKNOWN when a vertex is.
inline element_type take_slots(const element_layout& layout, const unsigned* slots, unsigned* nodes) noexcept {
  const node_order all = nastran::order_on_card(layout.type);
  const unsigned vertices = nastran::order_on_card(layout.linear).count;
  unsigned used = 0, expected = 0;
  for (unsigned k = 0; k < nbr_slots; ++k) used += slots[k] != 0 ? 1 : 0;
  for (unsigned k = 0; k < all.count; ++k) expected += slots[layout.slots[k]] != 0 ? 1 : 0;
  const bool is_packed = used != expected;
  element_type type = layout.type;
  for (unsigned k = 0; k < all.count; ++k) {
    const unsigned node = slots[is_packed ? k : layout.slots[k]];
    if (node == 0) type = k < vertices ? ELT_UNKNOWN : layout.linear;
    if (type == ELT_UNKNOWN) break;
    nodes[all.nodes[k]] = node;
  }
  return type;
}

}  // namespace qel::gridwork::detail::io::femap

#endif
