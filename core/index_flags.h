// Set of indices below a bound.
#ifndef QEL_GRIDWORK_CORE_INDEX_FLAGS_H
#define QEL_GRIDWORK_CORE_INDEX_FLAGS_H

#include <cstdint>

#include "core/check.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

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

  [[nodiscard]] bool copy(const index_flags& other) noexcept { return flags_.copy(other.flags_); }

  bool contains(unsigned index) const noexcept {
    QEL_GRIDWORK_CHECK(index + 1U < flags_.size());
    return flags_.data()[index + 1U] != 0;
  }

  /// True when `index` was not in the set. It is stored in any case: those that are new come as no branch foretells.
  bool insert(unsigned index) noexcept {
    const bool is_new = flag(index) == 0;
    flag(index) = 1;
    return is_new;
  }

 private:
  /// That of `none` comes first.
  unsigned char& flag(unsigned index) noexcept {
    QEL_GRIDWORK_CHECK(index + 1U < flags_.size());
    return flags_.data()[index + 1U];
  }

  dense1D<unsigned char> flags_;
};

}  // namespace qel::gridwork::detail

#endif
