// Sets of indices that only grow: a bit set for dense indices, a hash set for sparse ones.
#ifndef QEL_GRIDWORK_CORE_INDEX_SET_H
#define QEL_GRIDWORK_CORE_INDEX_SET_H

#include <cstdint>

#include "core/position_table.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork {

/// Set of the indices below a bound.
class index_bits {
 public:
  [[nodiscard]] bool reset(std::uint64_t bound) noexcept {
    words_.clear();
    return words_.resize(bound / 64 + 1, 0);
  }

  bool contains(unsigned index) const noexcept { return (words_[index / 64] >> (index % 64) & 1) != 0; }

  /// 1 when `index` was not in the set, else 0.
  unsigned insert(unsigned index) noexcept {
    std::uint64_t& word = words_[index / 64];
    const unsigned bit = index % 64;
    const auto fresh = static_cast<unsigned>(~(word >> bit) & 1);
    word |= std::uint64_t{1} << bit;
    return fresh;
  }

 private:
  dense1D<std::uint64_t> words_;
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

  /// 1 when `index` was not in the set, else 0.
  unsigned insert(unsigned index) noexcept {
    unsigned* keys = keys_.data();
    std::uint64_t i = mix_bits(index) & mask_;
    while (keys[i] != none && keys[i] != index) i = (i + 1) & mask_;
    const unsigned fresh = keys[i] == none ? 1 : 0;
    keys[i] = index;
    return fresh;
  }

 private:
  dense1D<unsigned> keys_;
  std::uint64_t mask_ = 0;
};

/// True when a bit set over all indices up to `largest` is small beside `count` of them.
constexpr bool bits_are_small(std::uint64_t largest, std::uint64_t count) noexcept {
  return largest / 64 <= count + 64;
}

}  // namespace qel::gridwork

#endif
