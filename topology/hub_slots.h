// Which slot coincides with a boundary, for boundaries that begin with a node of very many elements.
#ifndef QEL_GRIDWORK_TOPOLOGY_HUB_SLOTS_H
#define QEL_GRIDWORK_TOPOLOGY_HUB_SLOTS_H

#include <cstdint>

#include "core/index_flags.h"
#include "core/position_table.h"
#include "core/result.h"
#include "topology/boundary_key.h"
#include "topology/node_ring.h"

namespace qel::gridwork::detail {

/// Of the slots that coincide with a boundary: the first in the same direction, else the last in the other.
class best_slot {
 public:
  void offer(direction found, unsigned slot) noexcept {
    if (found == direction::same && same_ == none) same_ = slot;
    if (found == direction::opposite) opposite_ = slot;
  }

  bool is_final() const noexcept { return same_ != none; }
  unsigned slot() const noexcept { return is_final() ? same_ : opposite_; }

 private:
  unsigned same_ = none, opposite_ = none;
};

/// Holds the answers for all boundaries that begin with certain nodes, the hubs. The same boundary may have another
/// answer when it begins with another node, whose elements come in another order.
class hub_slots {
  struct answer {
    unsigned hub;
    boundary_nodes boundary;
    best_slot same_direction, opposite_direction;  // for a boundary of this direction, and of the other one
  };

  /// For comparisons with what the table holds.
  auto same_as(unsigned hub, const boundary_nodes& wanted) const noexcept {
    return [this, hub, &wanted](unsigned i) {
      return answers_[i].hub == hub && compare_boundaries(wanted, answers_[i].boundary) != direction::different;
    };
  }

 public:
  /// For hubs below a bound.
  [[nodiscard]] bool prepare(std::uint64_t bound) { return hubs_.reset(bound) && table_.reset(0); }

  bool has(unsigned hub) const noexcept { return hubs_.contains(hub); }

  /// Adds a hub with the elements round it.
  template <class Ring>
  [[nodiscard]] bool add(unsigned hub, const Ring& ring) {
    hubs_.insert(hub);
    return ring.visit_slots([&](const boundary_nodes& boundary, unsigned slot) {
      return !holds(boundary, hub) || add_slot(hub, boundary, slot);
    });
  }

  /// The slot of a boundary that begins with a hub, or `none`.
  unsigned find(const boundary_nodes& wanted) const {
    const unsigned hub = wanted.nodes[0];
    const unsigned found = table_.find(hash_of(wanted) + hub, same_as(hub, wanted));
    if (found == none) return none;
    const bool same = compare_boundaries(wanted, answers_[found].boundary) == direction::same;
    return (same ? answers_[found].same_direction : answers_[found].opposite_direction).slot();
  }

 private:
  [[nodiscard]] bool add_slot(unsigned hub, const boundary_nodes& boundary, unsigned slot) {
    const auto next = static_cast<unsigned>(answers_.size());
    if (!table_.make_room() || !answers_.reserve(next + std::uint64_t{1}, 2)) return false;
    const unsigned found = table_.find_or_insert(hash_of(boundary) + hub, next, same_as(hub, boundary));
    if (found == next && !answers_.push_back({hub, boundary, {}, {}})) return false;
    const bool same = compare_boundaries(answers_[found].boundary, boundary) == direction::same;
    answers_[found].same_direction.offer(same ? direction::same : direction::opposite, slot);
    answers_[found].opposite_direction.offer(same ? direction::opposite : direction::same, slot);
    return true;
  }

  index_flags hubs_;
  position_table table_;
  dense1D<answer> answers_;
};

}  // namespace qel::gridwork::detail

#endif
