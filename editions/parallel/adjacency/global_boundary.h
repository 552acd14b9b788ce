// Boundaries by the IDs of their nodes.
#ifndef QEL_GRIDWORK_PARALLEL_ADJACENCY_GLOBAL_BOUNDARY_H
#define QEL_GRIDWORK_PARALLEL_ADJACENCY_GLOBAL_BOUNDARY_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/position_table.h"
#include "parts/localize.h"
#include "qel/dense.h"
#include "topology/boundary_key.h"

namespace qel::gridwork::detail::parallel {

/// Equal for the same cycle of nodes. IDs are in the order of a part's indices, so that what is canonical among indices is
/// so among IDs; a triangle among quadrangles ends with no_ID.
template <std::size_t Nodes>
using global_key = std::array<std::uint64_t, Nodes>;

template <std::size_t Nodes>
global_key<Nodes> global_key_of(const boundary_nodes& boundary, const dense1D<std::uint64_t>& ids) noexcept {
  const boundary_nodes from = canonical(boundary);
  global_key<Nodes> key;
  for (std::size_t i = 0; i < Nodes; ++i) key[i] = from.nodes[i] == none ? no_ID : ids[from.nodes[i]];
  return key;
}

template <std::size_t Nodes>
std::uint64_t hash_of(const global_key<Nodes>& key) noexcept {
  std::uint64_t hash = 0;
  for (const std::uint64_t id : key) hash = mix_bits(hash ^ id);
  return hash;
}

}  // namespace qel::gridwork::detail::parallel

#endif
