// Sets of indices that only grow: flags for dense indices, a hash table for sparse ones.
#ifndef QEL_GRIDWORK_CORE_INDEX_SET_H
#define QEL_GRIDWORK_CORE_INDEX_SET_H

#include <cstdint>

#include "core/position_table.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork {

/// Set of the indices below a bound, a byte each: bits would make every insertion wait for the one before it.
class index_flags {
 public:
  [[nodiscard]] bool reset(std::uint64_t bound) noexcept {
    flags_.clear();
    return flags_.resize(bound, 0);
  }

  bool contains(unsigned index) const noexcept { return flags_.data()[index] != 0; }

  /// True when `index` was not in the set.
  bool insert(unsigned index) noexcept {
    unsigned char& flag = flags_.data()[index];
    if (flag != 0) return false;
    flag = 1;
    return true;
  }

 private:
  dense1D<unsigned char> flags_;
};

/// Set of at most `count` indices of any size, other than `none`.
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
