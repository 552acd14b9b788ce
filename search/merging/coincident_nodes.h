// Groups of nodes at one position.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_COINCIDENT_NODES_H
#define QEL_GRIDWORK_SEARCH_MERGING_COINCIDENT_NODES_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

#include "core/limits.h"
#include "core/position_table.h"
#include "core/result.h"
#include "qel/dense.h"
#include "search/geometry.h"
#include "search/node_list.h"

namespace qel::gridwork::detail {

/// Positions of the nodes of a list, one after another; a node is named by its rank, its place in the list.
template <unsigned Dim>
class ranked_positions {
 public:
  ranked_positions() noexcept = default;

  /// All nodes.
  explicit ranked_positions(const dense2D<double>& coords) noexcept
      : first_(coords.data()), ld_(coords.ld()), count_(coords.cols()) {}

  /// The nodes of a list. They are copied unless their ranks are their indices, so that loops over ranks read in order.
  [[nodiscard]] bool gather(const dense2D<double>& coords, node_list list) {
    *this = ranked_positions(coords);
    count_ = list.count;
    if (list.ids == nullptr) return true;
    if (!gathered_.resize(Dim * list.count)) return false;
    for (std::uint64_t rank = 0; rank < list.count; ++rank) {
      if (rank + ahead < list.count) prefetch(coords.column(list.ids[rank + ahead]));
      std::copy_n(coords.column(list.ids[rank]), Dim, gathered_.data() + Dim * rank);
    }
    first_ = gathered_.data();
    ld_ = Dim;
    return true;
  }

  std::uint64_t count() const noexcept { return count_; }
  const double* operator[](std::uint64_t rank) const noexcept { return first_ + ld_ * rank; }

 private:
  static constexpr std::uint64_t ahead = limits::nodes_ahead;

  const double* first_ = nullptr;
  std::uint64_t ld_ = 0;
  std::uint64_t count_ = 0;
  dense1D<double> gathered_;
};

/// Equal for equal values: 0 and -0 hash alike.
template <unsigned Dim>
std::uint64_t hash_values(const double* p) noexcept {
  constexpr std::uint64_t factors[] = {0x9e3779b97f4a7c15U, 0xc2b2ae3d27d4eb4fU, 0x165667b19e3779f9U};
  std::uint64_t sum = 0;
  for (unsigned a = 0; a < Dim; ++a) sum += std::bit_cast<std::uint64_t>(p[a] + 0.0) * factors[a];
  return (sum ^ (sum >> 32)) * factors[0];  // the upper half, which counts, now depends on every bit
}

/// For each node of a list the first one at its position (its leader) and, for leaders, the second one.
/// Nodes with a coordinate that is not finite coincide with none.
template <unsigned Dim>
class coincident_nodes {
 public:
  /// `with_second`: whether seconds() will be asked for.
  [[nodiscard]] bool build(const ranked_positions<Dim>& positions, bool with_second) {
    const std::uint64_t count = positions.count();
    // A soup of triangles holds every node about six times. Where there are more positions, the table grows.
    if (count >= none || !table_.reset(count / 5) || !leaders_.resize(count)) return false;
    if (with_second && !seconds_.resize(count, none)) return false;
    unsigned* leaders = leaders_.data();
    std::uint64_t hashes[ahead] = {};
    for (std::uint64_t rank = 0; rank < count && rank < ahead; ++rank) hashes[rank] = hash_values<Dim>(positions[rank]);
    for (std::uint64_t rank = 0; rank < count; ++rank) {
      const std::uint64_t hash = hashes[rank % ahead];
      if (rank + ahead < count) {
        hashes[rank % ahead] = hash_values<Dim>(positions[rank + ahead]);
        table_.prefetch(hashes[rank % ahead]);
      }
      if (!table_.make_room()) return false;
      leaders[rank] = enter(positions, hash, static_cast<unsigned>(rank));
      leader_count_ += leaders[rank] == rank ? 1 : 0;
    }
    if (with_second) note_seconds();
    return true;
  }

  std::uint64_t leader_count() const noexcept { return leader_count_; }
  const dense1D<unsigned>& leaders() const noexcept { return leaders_; }
  unsigned leader(std::uint64_t rank) const noexcept { return leaders_[rank]; }

  /// For each leader the second node at its position, or `none`; `none` for other nodes.
  dense1D<unsigned>& seconds() noexcept { return seconds_; }

  /// Gives the table away for another use; find() is of no more use then.
  position_table release_table() noexcept { return std::move(table_); }

  /// The leader at the position `p`, or `none`.
  unsigned find(const ranked_positions<Dim>& positions, const double* p) const {
    return table_.find(hash_values<Dim>(p), [&](unsigned held) { return same_position<Dim>(positions[held], p); });
  }

 private:
  static constexpr std::uint64_t ahead = limits::slots_ahead;

  unsigned enter(const ranked_positions<Dim>& positions, std::uint64_t hash, unsigned rank) {
    const double* p = positions[rank];
    if (!is_finite<Dim>(p)) return rank;
    return table_.find_or_insert(hash, rank, [&](unsigned held) { return same_position<Dim>(positions[held], p); });
  }

  void note_seconds() noexcept {
    for (std::uint64_t rank = leaders_.size(); rank-- > 0;) {
      if (leaders_[rank] != rank) seconds_[leaders_[rank]] = static_cast<unsigned>(rank);
    }
  }

  position_table table_;
  std::uint64_t leader_count_ = 0;
  dense1D<unsigned> leaders_;
  dense1D<unsigned> seconds_;
};

}  // namespace qel::gridwork::detail

#endif
