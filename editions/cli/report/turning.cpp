#include "turning.h"

#include <algorithm>

namespace report {

namespace {

constexpr unsigned most_nodes = 27;

// Where the nodes of an element that is turned over come from; those of a linear type begin the row of its quadratic one.
struct turning {
  gw::element_type largest;
  gw::element_type others[3];
  unsigned char from[most_nodes];
};

constexpr turning turnings[] = {
    {gw::ELT_EDGE3, {gw::ELT_EDGE2}, {1, 0, 2}},
    {gw::ELT_TRIA6, {gw::ELT_TRIA3}, {0, 2, 1, 3, 5, 4}},
    {gw::ELT_QUAD9, {gw::ELT_QUAD4, gw::ELT_QUAD8}, {0, 3, 2, 1, 7, 6, 5, 4, 8}},
    {gw::ELT_TETRA10, {gw::ELT_TETRA4}, {0, 2, 1, 3, 4, 6, 5, 7, 9, 8}},
    {gw::ELT_PYRAMID14, {gw::ELT_PYRAMID5, gw::ELT_PYRAMID13}, {0, 3, 2, 1, 4, 8, 7, 6, 5, 9, 12, 11, 10, 13}},
    {gw::ELT_WEDGE18,
     {gw::ELT_WEDGE6, gw::ELT_WEDGE15},
     {0, 2, 1, 3, 5, 4, 6, 8, 7, 9, 11, 10, 12, 14, 13, 15, 17, 16}},
    {gw::ELT_HEXA27, {gw::ELT_HEXA8, gw::ELT_HEXA20}, {0,  3,  2,  1,  4,  7,  6,  5,  11, 10, 9,  8,  15, 14,
                                                       13, 12, 16, 19, 18, 17, 22, 23, 20, 21, 24, 25, 26}},
};

const turning* turning_of(gw::element_type type) {
  for (const turning& row : turnings) {
    if (row.largest == type || std::count(row.others, row.others + 3, type) != 0) return &row;
  }
  return nullptr;
}

}  // namespace

outcome turn_over(block& b) {
  const turning* row = turning_of(b.type);
  qel::dense2D<unsigned> turned;
  if (row == nullptr) return {};
  if (!turned.copy(b.connectivity)) return outcome::of_memory(false);
  for (std::uint64_t e = 0; e < turned.cols(); ++e) {
    for (std::uint64_t k = 0; k < turned.rows(); ++k) turned(k, e) = b.connectivity(row->from[k], e);
  }
  b.connectivity = turned;
  return {};
}

}  // namespace report
