// Groups of nodes at one position.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_COINCIDENT_NODES_H
#define QEL_GRIDWORK_SEARCH_MERGING_COINCIDENT_NODES_H

#include <algorithm>
#include <bit>
#include <cstdint>

#include "core/limits.h"
#include "core/position_table.h"
#include "core/result.h"
#include "qel/dense.h"
#include "search/geometry.h"
#include "search/merging/ranked_positions.h"

namespace qel::gridwork::detail {

/// Equal for equal values: 0 and -0 hash alike.
template <unsigned Dim>
std::uint64_t hash_values(const double* p) noexcept {
  constexpr std::uint64_t factors[] = {0x9e3779b97f4a7c15U, 0xc2b2ae3d27d4eb4fU, 0x165667b19e3779f9U};
  std::uint64_t sum = 0;
  for (unsigned a = 0; a < Dim; ++a) sum += std::bit_cast<std::uint64_t>(p[a] + 0.0) * factors[a];
  return (sum ^ (sum >> 32)) * factors[0];  // the upper half, which counts, now depends on every bit
}

/// For each node of a list the first one at its position, its leader. Nodes with a coordinate that is not finite
/// coincide with none.
template <unsigned Dim>
class coincident_nodes {
 public:
  /// False when memory ran out.
  [[nodiscard]] bool build(const ranked_positions<Dim>& positions) {
    const std::uint64_t count = positions.count();
    // A soup of triangles holds every node about six times. Where there are more positions, the table grows.
    if (count >= none || !table_.reset(count / 5) || !leaders_.resize(count) || !held_.reserve(count / 5)) return false;
    unsigned* leaders = leaders_.data();
    std::uint64_t hashes[ahead] = {};
    for (std::uint64_t rank = 0; rank < count && rank < ahead; ++rank) hashes[rank] = hash_values<Dim>(positions[rank]);
    for (std::uint64_t rank = 0; rank < count; ++rank) {
      const std::uint64_t hash = hashes[rank % ahead];
      if (rank + ahead < count) {
        hashes[rank % ahead] = hash_values<Dim>(positions[rank + ahead]);
        table_.prefetch(hashes[rank % ahead]);
      }
      if (rank + positions_ahead < count) prefetch_likely(hashes[(rank + positions_ahead) % ahead]);
      if (!enter(positions[rank], hash, leaders[rank] = static_cast<unsigned>(rank))) return false;
    }
    return true;
  }

  std::uint64_t leader_count() const noexcept { return leader_count_; }
  const dense1D<unsigned>& leaders() const noexcept { return leaders_; }

 private:
  static constexpr std::uint64_t ahead = limits::slots_ahead;
  static constexpr std::uint64_t positions_ahead = ahead / 2;  // by then the slot has come

  /// A position and who was there first. They lie side by side, in the order in which they were found, because few fit
  /// the cache where they come from.
  struct held_position {
    double values[Dim];
    std::uint64_t rank;
  };

  /// Prefetches the position that will be compared with one of this hash.
  void prefetch_likely(std::uint64_t hash) const noexcept {
    const unsigned held = table_.likely(hash);
    if (held != none) prefetch(held_.data() + held);
  }

  /// Makes `leader`, the node at `p`, the first one there. False when memory ran out.
  [[nodiscard]] bool enter(const double* p, std::uint64_t hash, unsigned& leader) {
    const auto fresh = static_cast<unsigned>(held_.size());
    ++leader_count_;
    if (!is_finite<Dim>(p)) return true;
    if (!table_.make_room()) return false;
    const auto is_here = [&](unsigned held) { return same_position<Dim>(held_[held].values, p); };
    const unsigned held = table_.find_or_insert(hash, fresh, is_here);
    if (held == fresh) {
      held_position first{{}, leader};
      std::copy_n(p, Dim, first.values);
      return held_.push_back(first);
    }
    leader = static_cast<unsigned>(held_[held].rank);
    --leader_count_;
    return true;
  }

  position_table table_;
  std::uint64_t leader_count_ = 0;
  dense1D<unsigned> leaders_;
  dense1D<held_position> held_;
};

}  // namespace qel::gridwork::detail

#endif
