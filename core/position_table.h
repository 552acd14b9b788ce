// Hash table from keys to positions in some list that the caller holds: the keys themselves are not stored.
#ifndef QEL_GRIDWORK_CORE_POSITION_TABLE_H
#define QEL_GRIDWORK_CORE_POSITION_TABLE_H

#include <cstdint>

#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork {

/// Mixes all bits of `x` into all bits of the result (the finaliser of SplitMix64; Steele, Lea, Flood 2014).
constexpr std::uint64_t mix_bits(std::uint64_t x) noexcept {
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9U;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebU;
  return x ^ (x >> 31);
}

inline void prefetch(const void* address) noexcept {
#if defined(__GNUC__)
  __builtin_prefetch(address);
#else
  (void)address;
#endif
}

/// Open addressing with linear probing; a slot holds half of the hash beside the position, so that nearly every probe of
/// a wrong key ends without a look at the caller's list.
class position_table {
 public:
  /// Empties the table and makes room for `count` positions.
  [[nodiscard]] bool reset(std::uint64_t count) noexcept {
    unsigned bits = 4;
    while (bits < 40 && (std::uint64_t{1} << bits) < count + count / 2 + 1) ++bits;
    mask_ = (std::uint64_t{1} << bits) - 1;
    slots_.clear();
    return slots_.resize(mask_ + 1, slot{0, none});
  }

  void prefetch(std::uint64_t hash) const noexcept { gridwork::prefetch(slots_.data() + (hash & mask_)); }

  /// A cheap guess at what find() will compare first; `none` when it will find nothing.
  unsigned first_position(std::uint64_t hash) const noexcept { return slots_[hash & mask_].position; }

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
    if (found->position == none) *found = {tag_of(hash), position};
    return &found->position;
  }

 private:
  struct slot {
    unsigned tag, position;
  };

  static unsigned tag_of(std::uint64_t hash) noexcept { return static_cast<unsigned>(hash >> 32); }

  /// The slot of the key, or the empty one where it belongs.
  template <class Same>
  const slot* locate(std::uint64_t hash, Same same) const {
    const unsigned tag = tag_of(hash);
    const slot* slots = slots_.data();
    for (std::uint64_t i = hash & mask_;; i = (i + 1) & mask_) {
      if (slots[i].position == none || (slots[i].tag == tag && same(slots[i].position))) return slots + i;
    }
  }

  dense1D<slot> slots_;
  std::uint64_t mask_ = 0;
};

}  // namespace qel::gridwork

#endif
