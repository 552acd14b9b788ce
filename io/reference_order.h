// Visits elements by increasing reference, in memory that does not grow with their number.
#ifndef QEL_GRIDWORK_IO_REFERENCE_ORDER_H
#define QEL_GRIDWORK_IO_REFERENCE_ORDER_H

#include <algorithm>
#include <cstdint>
#include <tuple>

#include "core/limits.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

/// The order of elements by reference, those of one reference as they come; the reference `none` is left out.
///
/// A pass over the references collects the next elements of the order, as many as fit a window, and sorts them. When
/// they are all of one reference, another pass visits all elements of that reference without collecting them. So there
/// are at most 1 + 2 min(references, elements / (window / 2)) passes.
class reference_order {
 public:
  explicit reference_order(const dense1D<unsigned>& references,
                           std::uint64_t window = limits::reference_window) noexcept
      : references_(references), capacity_(std::min(references.size(), window)) {}

  /// Takes the memory for the window; before anything else.
  [[nodiscard]] bool prepare() noexcept { return window_.resize(capacity_); }

  bool keeps(std::uint64_t j) const noexcept { return references_[j] != none; }

  /// Calls action(j, its reference) in order for the elements j that are wanted(j).
  template <class Wanted, class Action>
  void for_each(Wanted wanted, Action action) noexcept {
    key start{0, 0};
    for (bool more = true; more;) {
      more = collect(start, wanted);
      if (more && end_[-1].reference == window_[0].reference) {
        visit_group(window_[0], wanted, action);
        start = {window_[0].reference + 1, 0};
        continue;
      }
      for (const key* k = window_.begin(); k != end_; ++k) action(k->element, k->reference);
      if (more) start = {end_[-1].reference, end_[-1].element + 1};
    }
  }

 private:
  struct key {
    unsigned reference;
    std::uint64_t element;

    bool operator<(const key& other) const noexcept {
      return std::tie(reference, element) < std::tie(other.reference, other.element);
    }
  };

  /// Fills the window with the first elements from `start` on. True when there are more than fit.
  template <class Wanted>
  bool collect(const key& start, Wanted wanted) noexcept {
    key limit{none, 0};  // a key behind the window's
    bool more = false;
    end_ = window_.begin();
    for (std::uint64_t j = 0; j < references_.size(); ++j) {
      const key k{references_[j], j};
      if (k.reference - start.reference > limit.reference - start.reference) continue;  // most, at once
      if (k < start || !(k < limit) || !wanted(j)) continue;
      if (end_ == window_.end()) {
        end_ = window_.begin() + capacity_ / 2;
        std::nth_element(window_.begin(), end_, window_.end());
        limit = *end_;
        more = true;
        if (!(k < limit)) continue;
      }
      *end_++ = k;
    }
    if (!std::is_sorted(window_.begin(), end_)) std::sort(window_.begin(), end_);
    return more;
  }

  /// Calls action for all elements of one reference from `first` on.
  template <class Wanted, class Action>
  void visit_group(const key& first, Wanted wanted, Action action) noexcept {
    for (std::uint64_t j = first.element; j < references_.size(); ++j) {
      if (references_[j] == first.reference && wanted(j)) action(j, first.reference);
    }
  }

  const dense1D<unsigned>& references_;
  std::uint64_t capacity_;
  dense1D<key> window_;
  key* end_ = nullptr;
};

}  // namespace qel::gridwork::detail::io

#endif
