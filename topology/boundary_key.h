// Keys of boundaries: equal for the same cycle of nodes, wherever it starts and whichever way it runs.
#ifndef QEL_GRIDWORK_TOPOLOGY_BOUNDARY_KEY_H
#define QEL_GRIDWORK_TOPOLOGY_BOUNDARY_KEY_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "core/position_table.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork::detail {

/// Orders two nodes by one conditional move: where nodes are numbered at random, every second branch is mispredicted.
inline void order(unsigned& a, unsigned& b) noexcept {
  const unsigned lower = std::min(a, b);
  b ^= a ^ lower;
  a = lower;
}

/// The (first) smallest of four nodes, the node behind it, the opposite one and the node before it.
inline boundary_nodes from_smallest(const boundary_nodes& b) noexcept {
  const unsigned* n = b.nodes;
  const unsigned i = static_cast<unsigned>(n[1] < n[0]);
  const unsigned j = static_cast<unsigned>(n[3] < n[2]) + 2;
  const unsigned first = i + (j - i) * static_cast<unsigned>(n[j] < n[i]);
  return {b.size, {n[first], n[(first + 1) % 4], n[first ^ 2], n[(first + 3) % 4]}};
}

/// The same boundary from its smallest node on, in the direction of the smaller neighbour of that node.
inline boundary_nodes canonical(boundary_nodes b) noexcept {
  if (b.size == 4) {
    b = from_smallest(b);
    order(b.nodes[1], b.nodes[3]);
  }
  if (b.size == 3) {
    order(b.nodes[1], b.nodes[2]);
    order(b.nodes[0], b.nodes[1]);
    order(b.nodes[1], b.nodes[2]);
  }
  if (b.size == 2) order(b.nodes[0], b.nodes[1]);
  return b;
}

/// The nodes of a canonical boundary and, only where elements have boundaries of several sizes, its size.
template <class Columns>
using boundary_key = std::array<unsigned, Columns::largest.boundary_nodes + (Columns::equal_boundaries ? 0 : 1)>;

template <class Columns>
boundary_key<Columns> key_of(const boundary_nodes& boundary) noexcept {
  const boundary_nodes from = canonical(boundary);
  boundary_key<Columns> key;
  for (unsigned i = 0; i < Columns::largest.boundary_nodes; ++i) key[i] = from.nodes[i];
  if (!Columns::equal_boundaries) key.back() = from.size;
  return key;
}

/// Equality without a branch for each word.
template <std::size_t Words>
bool are_equal(const std::array<unsigned, Words>& a, const std::array<unsigned, Words>& b) noexcept {
  unsigned differences = 0;
  for (std::size_t i = 0; i < Words; ++i) differences |= a[i] ^ b[i];
  return differences == 0;
}

/// Two words at a time are multiplied by odd numbers without pattern; the upper bits of the sum are to be used.
template <std::size_t Words>
std::uint64_t hash_of(const std::array<unsigned, Words>& key) noexcept {
  constexpr std::uint64_t factors[] = {0x9e3779b97f4a7c15U, 0xbf58476d1ce4e5b9U, 0x94d049bb133111ebU};
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < Words; i += 2) {
    const std::uint64_t second = i + 1 < Words ? key[i + 1] : 0;
    sum += (key[i] | second << 32) * factors[i / 2];
  }
  return sum;
}

/// Equal for boundaries that coincide; any of its bits may be used.
inline std::uint64_t hash_of(const boundary_nodes& boundary) noexcept {
  const boundary_nodes from = canonical(boundary);
  return mix_bits(hash_of(std::array<unsigned, 4>{from.nodes[0], from.nodes[1], from.nodes[2], from.nodes[3]}));
}

}  // namespace qel::gridwork::detail

#endif
