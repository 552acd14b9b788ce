// Sets of indices that only grow: flags for dense indices, a hash table for sparse ones.
#ifndef QEL_GRIDWORK_CORE_INDEX_SET_H
#define QEL_GRIDWORK_CORE_INDEX_SET_H

#include <cstdint>

#include "core/position_table.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork {

/// Set of the indices below a bound, and `none`, which is always in it. A byte each: bits would make every insertion wait
/// for the one before it.
class index_flags {
 public:
  [[nodiscard]] bool reset(std::uint64_t bound) noexcept {
    flags_.clear();
    if (!flags_.resize(bound + 1, 0)) return false;
    flag(none) = 1;
    return true;
  }

  bool contains(unsigned index) const noexcept { return flags_.data()[index + 1U] != 0; }

  /// True when `index` was not in the set.
  bool insert(unsigned index) noexcept {
    if (flag(index) != 0) return false;
    flag(index) = 1;
    return true;
  }

  /// Inserts a run of indices and calls visit(index) for those that were not in the set. Meshes repeat their nodes:
  /// most groups of four bring nothing new, which one test tells.
  template <class Visit>
  void insert_run(const unsigned* begin, const unsigned* end, Visit visit) {
    for (; end - begin >= 4; begin += 4) {
      if ((flag(begin[0]) & flag(begin[1]) & flag(begin[2]) & flag(begin[3])) == 0)
        insert_each(begin, begin + 4, visit);
    }
    insert_each(begin, end, visit);
  }

 private:
  unsigned char& flag(unsigned index) noexcept { return flags_.data()[index + 1U]; }  // that of `none` comes first

  template <class Visit>
  void insert_each(const unsigned* begin, const unsigned* end, Visit visit) {
    for (; begin != end; ++begin) {
      if (insert(*begin)) visit(*begin);
    }
  }

  dense1D<unsigned char> flags_;
};

/// Set of at most `count` indices of any size; `none` is always in it.
class index_hash_set {
 public:
  [[nodiscard]] bool reset(std::uint64_t count) noexcept {
    unsigned bits = 4;
    while (bits < 40 && (std::uint64_t{1} << bits) < 2 * count) ++bits;
    mask_ = (std::uint64_t{1} << bits) - 1;
    keys_.clear();
    return keys_.resize(mask_ + 1, none);
  }

  /// True when `index` was not in the set.
  bool insert(unsigned index) noexcept {
    unsigned* keys = keys_.data();
    std::uint64_t i = mix_bits(index) & mask_;
    while (keys[i] != none && keys[i] != index) i = (i + 1) & mask_;
    if (keys[i] == index) return false;
    keys[i] = index;
    return true;
  }

  /// Inserts a run of indices and calls visit(index) for those that were not in the set.
  template <class Visit>
  void insert_run(const unsigned* begin, const unsigned* end, Visit visit) {
    for (; begin != end; ++begin) {
      if (insert(*begin)) visit(*begin);
    }
  }

 private:
  dense1D<unsigned> keys_;
  std::uint64_t mask_ = 0;
};

/// True when flags for all indices up to `largest` are no more than `count` entries of input suggest.
constexpr bool flags_are_few(std::uint64_t largest, std::uint64_t count) noexcept {
  return largest <= 16 * count + 4096;
}

}  // namespace qel::gridwork

#endif
