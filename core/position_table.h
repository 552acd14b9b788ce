// Hash table from keys to positions in some list that the caller holds: the keys themselves are not stored.
#ifndef QEL_GRIDWORK_CORE_POSITION_TABLE_H
#define QEL_GRIDWORK_CORE_POSITION_TABLE_H

#include <cstdint>

#include "core/check.h"
#include "core/limits.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Mixes all bits of `x` into all bits of the result (the finaliser of SplitMix64; Steele, Lea, Flood 2014).
constexpr std::uint64_t mix_bits(std::uint64_t x) noexcept {
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9U;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebU;
  return x ^ (x >> 31);
}

inline void prefetch(const void* address) noexcept {
#if defined(__GNUC__)
  __builtin_prefetch(address);
  __asm__ volatile("");  // GCC drops calls of functions that do nothing but prefetch, having no effect
#else
  (void)address;
#endif
}

/// Open addressing with linear probing. A slot holds half of the hash beside the position: nearly every probe of a
/// wrong key ends without a look at the caller's list, and the table can grow without the keys.
///
/// For keys that are larger than a number and that the caller keeps anyway. Two tables are not made of this one:
/// index_hash_set (ids/growing_index_set.h), whose keys are so small that they stand in the slots themselves, without
/// hashes or positions; and slot_groups (topology/slot_groups.h), which is refilled for each range of slots, never
/// grows, and is searched without branches.
class position_table {
 public:
  /// Empties the table and makes room for `count` positions.
  [[nodiscard]] bool reset(std::uint64_t count) noexcept {
    std::uint64_t slots = limits::fewest_slots;
    while (room_in(slots) < count) slots *= 2;
    used_ = 0;
    mask_ = slots - 1;
    slots_.clear();
    return slots_.resize(slots, slot{0, none});
  }

  /// Room for `count` more positions; called before insertions that reset() did not count on.
  [[nodiscard]] bool make_room(std::uint64_t count = 1) noexcept {
    while (used_ + count > room_in(mask_ + 1)) {
      if (!double_slots()) return false;
    }
    return true;
  }

  /// Positions in the table.
  std::uint64_t used() const noexcept { return used_; }

  void prefetch(std::uint64_t hash) const noexcept { detail::prefetch(slots_.data() + (tag_of(hash) & mask_)); }

  /// The position in the first slot where this hash may be, `none` if that is empty: most often the one that find() will
  /// compare, so that the caller can prefetch what it names.
  unsigned likely(std::uint64_t hash) const noexcept { return slots_[tag_of(hash) & mask_].position; }

  /// The position with this hash for which same(position) holds, or `none`.
  template <class Same>
  unsigned find(std::uint64_t hash, Same same) const {
    return locate(hash, same)->position;
  }

  /// As find(); where there is none, enters `position` and returns it.
  template <class Same>
  unsigned find_or_insert(std::uint64_t hash, unsigned position, Same same) {
    return *find_or_insert_slot(hash, position, same);
  }

  /// As find_or_insert(), but returns the place of the position, so that the caller may exchange it.
  template <class Same>
  unsigned* find_or_insert_slot(std::uint64_t hash, unsigned position, Same same) {
    slot* found = const_cast<slot*>(locate(hash, same));
    if (found->position == none) {
      QEL_GRIDWORK_CHECK(position != none && used_ < room_in(slots_.size()));
      *found = {tag_of(hash), position};
      ++used_;
    }
    return &found->position;
  }

 private:
  struct slot {
    unsigned tag, position;
  };

  /// Positions that a table of so many slots takes before probing becomes slow.
  static constexpr std::uint64_t room_in(std::uint64_t slots) noexcept { return slots / 4 * 3; }

  static unsigned tag_of(std::uint64_t hash) noexcept { return static_cast<unsigned>(hash >> 32); }

  /// The slot of the key, or the empty one where it belongs.
  template <class Same>
  const slot* locate(std::uint64_t hash, Same same) const {
    const unsigned tag = tag_of(hash);
    const slot* slots = slots_.data();
    QEL_GRIDWORK_CHECK(slots_.size() == mask_ + 1 && used_ < slots_.size());  // probing ends
    for (std::uint64_t i = tag & mask_;; i = (i + 1) & mask_) {
      if (slots[i].position == none || (slots[i].tag == tag && same(slots[i].position))) return slots + i;
    }
  }

  [[nodiscard]] bool double_slots() noexcept {
    dense1D<slot> larger;
    if (!larger.resize(2 * (mask_ + 1), slot{0, none})) return false;
    mask_ = 2 * mask_ + 1;
    for (const slot& old : slots_) {
      if (old.position == none) continue;
      std::uint64_t i = old.tag & mask_;
      while (larger[i].position != none) i = (i + 1) & mask_;
      larger[i] = old;
    }
    slots_.shallow_copy(larger);
    return true;
  }

  dense1D<slot> slots_;
  std::uint64_t mask_ = 0;
  std::uint64_t used_ = 0;
};

}  // namespace qel::gridwork::detail

#endif
