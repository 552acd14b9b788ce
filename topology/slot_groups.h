// Slots grouped by their boundary.
#ifndef QEL_GRIDWORK_TOPOLOGY_SLOT_GROUPS_H
#define QEL_GRIDWORK_TOPOLOGY_SLOT_GROUPS_H

#include <algorithm>
#include <bit>
#include <cstdint>

#include "core/check.h"
#include "topology/boundary_key.h"

namespace qel::gridwork::detail {

/// Groups of slots with equal keys, found by hashing with linear probing.
///
/// That a slot begins a group or joins one is as good as random, so the search does the same for both, without a branch:
/// it compares keys alone, where a position_table has a test for the hash before. Heads are cleared for each range of
/// slots and stay in the first cache.
template <class Columns>
class slot_groups {
 public:
  using key = boundary_key<Columns>;

  /// `first` and `last` are the same slot in a group of one.
  struct group {
    key boundary;
    unsigned first, last;
  };

  /// Room for `most` groups.
  [[nodiscard]] bool prepare(std::uint64_t most) {
    if (!group_memory_.resize(most + 2) || !head_memory_.resize(heads_for(most))) return false;
    most_ = most;
    groups_ = group_memory_.data();
    heads_ = head_memory_.data();
    return true;
  }

  /// Forgets all groups, and expects `slots` slots.
  void reset(std::uint64_t slots) noexcept {
    const std::uint64_t heads = heads_for(std::min(slots, most_));
    shift_ = 64 - static_cast<std::uint64_t>(std::countr_zero(heads));
    mask_ = heads - 1;
    next_ = 1;  // 0 marks a head without a group
    std::fill_n(heads_, heads, 0U);
  }

  /// The group of a boundary; where there is none, a new one of this slot, or null if there is no room.
  group* find_or_begin(const key& boundary, unsigned slot) noexcept {
    QEL_GRIDWORK_CHECK(next_ <= most_ + 1 && 2 * next_ <= mask_ + 1);
    groups_[next_] = {boundary, slot, slot};
    for (std::uint64_t i = hash_of(boundary) >> shift_;; i = (i + 1) & mask_) {
      const std::uint64_t head = heads_[i];
      const std::uint64_t is_empty = head == 0;
      const std::uint64_t found = head | (next_ & (0 - is_empty));  // next_ where there is none
      if (!are_equal(groups_[found].boundary, boundary)) continue;
      if (found > most_) return nullptr;
      heads_[i] = static_cast<unsigned>(found);
      next_ += is_empty;
      return groups_ + found;
    }
  }

  const group* begin() const noexcept { return groups_ + 1; }
  const group* end() const noexcept { return groups_ + next_; }

 private:
  /// A power of two that leaves at least every second head empty, usually three of four.
  static std::uint64_t heads_for(std::uint64_t groups) noexcept { return std::bit_ceil(2 * groups + 2); }

  dense1D<group> group_memory_;
  dense1D<unsigned> head_memory_;
  group* groups_ = nullptr;
  unsigned* heads_ = nullptr;
  std::uint64_t mask_ = 0, shift_ = 0, next_ = 1, most_ = 0;
};

}  // namespace qel::gridwork::detail

#endif
