// Set of indices of any size: flags for those that are dense, a hash table for those that are not.
#ifndef QEL_GRIDWORK_IDS_GROWING_INDEX_SET_H
#define QEL_GRIDWORK_IDS_GROWING_INDEX_SET_H

#include <algorithm>
#include <bit>
#include <cstdint>

#include "core/check.h"
#include "core/limits.h"
#include "core/position_table.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Open addressing, at most half full. `none` marks empty slots. A key is its own slot, of half the size that it had in
/// a position_table, whose hashes and positions are of no use here.
class index_hash_set {
 public:
  /// Room for one more index.
  [[nodiscard]] bool make_room() noexcept { return 2 * (used_ + 1) <= keys_.size() || double_keys(); }

  /// True when `index` was not in the set.
  bool insert(unsigned index) noexcept {
    QEL_GRIDWORK_CHECK(index != none && 2 * (used_ + 1) <= keys_.size());
    unsigned& key = *slot_of(keys_, index);
    if (key == index) return false;
    key = index;
    ++used_;
    return true;
  }

 private:
  /// The slot that holds the index, or the empty one where it belongs.
  static unsigned* slot_of(dense1D<unsigned>& keys, unsigned index) noexcept {
    QEL_GRIDWORK_CHECK(std::has_single_bit(keys.size()));
    const std::uint64_t mask = keys.size() - 1;
    std::uint64_t i = mix_bits(index) & mask;
    while (keys[i] != none && keys[i] != index) i = (i + 1) & mask;
    return &keys[i];
  }

  [[nodiscard]] bool double_keys() noexcept {
    dense1D<unsigned> larger;
    if (!larger.resize(std::max(limits::fewest_keys, 2 * keys_.size()), none)) return false;
    for (const unsigned key : keys_) {
      if (key != none) *slot_of(larger, key) = key;
    }
    keys_.shallow_copy(larger);
    return true;
  }

  dense1D<unsigned> keys_;
  std::uint64_t used_ = 0;
};

/// Holds `none` from the start. A byte for each flag: bits would make every insertion wait for the one before it.
class growing_index_set {
 public:
  /// For up to `count` insertions; no more flags are kept than that number suggests. Before anything else.
  [[nodiscard]] bool prepare(std::uint64_t count) noexcept {
    most_flags_ = std::bit_ceil(limits::flags_per_insertion * count + limits::fewest_flags);
    if (!flags_.resize(limits::fewest_flags, 0)) return false;
    flags_[0] = 1;
    return true;
  }

  /// Inserts a run of indices and calls visit(index) for those that were not in the set. False when memory ran out.
  /// Meshes repeat their nodes: most groups of four bring nothing new.
  template <class Visit>
  [[nodiscard]] bool insert_run(const unsigned* begin, const unsigned* end, Visit visit) {
    for (begin = skip_held(begin, end); end - begin >= 4; begin = skip_held(begin + 4, end)) {
      if (!insert_each(begin, begin + 4, visit)) return false;
    }
    return insert_each(begin, end, visit);
  }

 private:
  /// Place of a flag; that of `none` comes first.
  static unsigned place_of(unsigned index) noexcept { return index + 1; }

  /// Passes by groups of four indices that are in the set and have flags, whose number is a power of two.
  const unsigned* skip_held(const unsigned* begin, const unsigned* end) const noexcept {
    const unsigned char* flags = flags_.data();
    const std::uint64_t count = flags_.size();
    QEL_GRIDWORK_CHECK(std::has_single_bit(count));
    for (; end - begin >= 4; begin += 4) {
      const unsigned a = place_of(begin[0]);
      const unsigned b = place_of(begin[1]);
      const unsigned c = place_of(begin[2]);
      const unsigned d = place_of(begin[3]);
      if ((a | b | c | d) >= count) break;
      QEL_GRIDWORK_CHECK(std::max({a, b, c, d}) < count);
      if ((flags[a] & flags[b] & flags[c] & flags[d]) == 0) break;
    }
    return begin;
  }

  template <class Visit>
  [[nodiscard]] bool insert_each(const unsigned* begin, const unsigned* end, Visit visit) {
    for (; begin != end; ++begin) {
      const unsigned place = place_of(*begin);
      if (place >= flags_.size() && !make_room(place)) return false;
      if (place < flags_.size() ? raise(place) : sparse_.insert(*begin)) visit(*begin);
    }
    return true;
  }

  [[nodiscard]] bool make_room(unsigned place) noexcept {
    if (place >= most_flags_) return sparse_.make_room();
    std::uint64_t count = flags_.size();
    while (count <= place) count *= 2;
    QEL_GRIDWORK_CHECK(count <= most_flags_);
    return flags_.resize(count, 0);
  }

  /// True when the flag was down.
  bool raise(unsigned place) noexcept {
    if (flags_[place] != 0) return false;
    flags_[place] = 1;
    return true;
  }

  dense1D<unsigned char> flags_;
  std::uint64_t most_flags_ = 0;  // a power of two, which doubling meets: what is in the hash table never gets a flag
  index_hash_set sparse_;
};

}  // namespace qel::gridwork::detail

#endif
