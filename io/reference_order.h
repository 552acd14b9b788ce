// Visits elements by increasing reference.
#ifndef QEL_GRIDWORK_IO_REFERENCE_ORDER_H
#define QEL_GRIDWORK_IO_REFERENCE_ORDER_H

#include <algorithm>
#include <cstdint>

#include "core/columns.h"
#include "core/distribute.h"
#include "core/limits.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

/// The order of elements by reference, those of one reference as they come; the reference `none` is left out.
///
/// The elements are distributed over the values of one digit of their references after the other, from the lowest on:
/// a single pass where the references are small, and no memory by the largest of them.
class reference_order {
 public:
  explicit reference_order(const dense1D<unsigned>& references) noexcept : references_(references) {}

  /// Makes the order; before anything else. False when memory ran out, or for 2^32 - 1 elements and more.
  [[nodiscard]] bool prepare() {
    if (references_.size() >= none || !distribute_kept()) return false;
    const unsigned most = std::max(index_bound(references_), 1U) - 1;
    for (unsigned shift = digit_bits; shift < 32 && most >> shift != 0; shift += digit_bits) {
      if (!distribute_again(shift)) return false;
    }
    return true;
  }

  bool keeps(std::uint64_t j) const noexcept { return references_[j] != none; }

  /// Calls action(j, its reference) in order for the elements j that are wanted(j).
  template <class Wanted, class Action>
  void for_each(Wanted wanted, Action action) const {
    for (const unsigned j : order_) {
      if (wanted(j)) action(j, references_[j]);
    }
  }

 private:
  static constexpr unsigned digit_bits = limits::reference_digit_bits;
  static constexpr unsigned digits = 1U << digit_bits;

  unsigned digit(unsigned j, unsigned shift) const noexcept { return references_[j] >> shift & (digits - 1); }

  bool distribute_kept() {
    const auto count = static_cast<unsigned>(references_.size());
    const auto walk = [this, count](auto visit) {
      for (unsigned j = 0; j < count; ++j) {
        if (keeps(j)) visit(digit(j, 0), j);
      }
    };
    return distribute(digits, walk, order_, offsets_);
  }

  bool distribute_again(unsigned shift) {
    dense1D<unsigned> sorted;
    const auto walk = [this, shift](auto visit) {
      for (const unsigned j : order_) visit(digit(j, shift), j);
    };
    if (!distribute(digits, walk, sorted, offsets_)) return false;
    order_.shallow_copy(sorted);
    return true;
  }

  const dense1D<unsigned>& references_;
  dense1D<unsigned> order_;
  dense1D<unsigned> offsets_;
};

}  // namespace qel::gridwork::detail::io

#endif
