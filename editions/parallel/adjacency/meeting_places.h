// Where the elements of several ranks that may have a boundary in common meet.
#ifndef QEL_GRIDWORK_PARALLEL_ADJACENCY_MEETING_PLACES_H
#define QEL_GRIDWORK_PARALLEL_ADJACENCY_MEETING_PLACES_H

#include <algorithm>
#include <cstdint>

#include "parts/checks.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork::detail::parallel {

/// The ranks that have all nodes of a boundary, this one among them. All of these find the same list.
class meeting_places {
 public:
  meeting_places(const node_sharing& sharing, int rank) noexcept : sharing_(sharing), rank_(rank) {}

  [[nodiscard]] bool prepare() {
    std::uint64_t most = 0;
    for (std::uint64_t i = 0; i + 1 < sharing_.offsets.size(); ++i) {
      most = std::max<std::uint64_t>(most, sharing_.offsets[i + 1] - sharing_.offsets[i]);
    }
    return ranks_.resize(most);
  }

  /// Looks up a boundary; true when other ranks have all its nodes. (Most boundaries fail at the first node.)
  bool look_up(const boundary_nodes& boundary) noexcept {
    const auto* begin = first(boundary.nodes[0]);
    const auto* end = last(boundary.nodes[0]);
    if (begin == end) return false;
    count_ = 0;
    for (const int* r = begin; r != end; ++r) {
      if (all_are_shared_with(*r, boundary)) ranks_[count_++] = *r;
    }
    return count_ != 0;
  }

  /// The other ranks that have the boundary's nodes, increasing.
  const int* begin() const noexcept { return ranks_.data(); }
  const int* end() const noexcept { return ranks_.data() + count_; }

  /// One of all these ranks and this one, the same for one hash everywhere.
  int choose(std::uint64_t hash) const noexcept {
    const std::uint64_t chosen = hash % (count_ + 1);
    const auto own = static_cast<std::uint64_t>(std::lower_bound(begin(), end(), rank_) - begin());
    if (chosen == own) return rank_;
    return begin()[chosen - (chosen > own ? 1 : 0)];
  }

 private:
  const int* first(unsigned node) const noexcept { return sharing_.ranks.data() + sharing_.offsets[node]; }
  const int* last(unsigned node) const noexcept {
    return sharing_.ranks.data() + sharing_.offsets[node + std::uint64_t{1}];
  }

  bool all_are_shared_with(int rank, const boundary_nodes& boundary) const noexcept {
    for (unsigned i = 1; i < boundary.size; ++i) {
      if (!std::binary_search(first(boundary.nodes[i]), last(boundary.nodes[i]), rank)) return false;
    }
    return true;
  }

  const node_sharing& sharing_;
  int rank_;
  dense1D<int> ranks_;
  std::uint64_t count_ = 0;
};

}  // namespace qel::gridwork::detail::parallel

#endif
