// Loops over the entries of arrays, whatever their layout.
#ifndef QEL_GRIDWORK_CORE_COLUMNS_H
#define QEL_GRIDWORK_CORE_COLUMNS_H

#include <algorithm>
#include <cstdint>

#include "core/limits.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Calls action(first, last) on runs of consecutive entries that together make up the array, in storage order, up to
/// the first that returns false. True when none did.
template <class T, unsigned Align, class Action>
bool for_each_run(const dense1D<T, Align>& values, Action action) {
  return action(values.begin(), values.end());
}

template <class T, class Action>
bool for_each_run(const dense2D<T>& matrix, Action action) {
  if (matrix.empty()) return true;
  if (matrix.compact()) return action(matrix.data(), matrix.data() + matrix.size());
  for (std::uint64_t j = 0; j < matrix.cols(); ++j) {
    if (!action(matrix.begin_column(j), matrix.end_column(j))) return false;
  }
  return true;
}

/// The same for entries that the action may change.
template <class T, unsigned Align, class Action>
void change_each_run(dense1D<T, Align>& values, Action action) {
  action(values.begin(), values.end());
}

template <class T, class Action>
void change_each_run(dense2D<T>& matrix, Action action) {
  if (matrix.empty()) return;
  if (matrix.compact()) {
    action(matrix.data(), matrix.data() + matrix.size());
    return;
  }
  for (std::uint64_t j = 0; j < matrix.cols(); ++j) action(matrix.begin_column(j), matrix.end_column(j));
}

/// True when the indices of a run, one or more, are below n; several are compared at a time.
inline bool all_below(const unsigned* begin, const unsigned* end, std::uint64_t n) noexcept {
  unsigned largest = 0;
  for (const unsigned* p = begin; p != end; ++p) largest = std::max(largest, *p);
  return largest < n;
}

/// Largest index of a run + 1, which is 0 for `none`.
inline unsigned index_bound(const unsigned* begin, const unsigned* end) noexcept {
  constexpr int lanes = limits::bound_lanes;
  unsigned bound[lanes] = {};
  for (; end - begin >= lanes; begin += lanes) {
    for (int k = 0; k < lanes; ++k) bound[k] = std::max(bound[k], begin[k] + 1);
  }
  for (; begin != end; ++begin) bound[0] = std::max(bound[0], *begin + 1);
  return *std::max_element(bound, bound + lanes);
}

/// Largest index of an array + 1; 0 without indices other than `none`.
template <class Array>
unsigned index_bound(const Array& ids) noexcept {
  unsigned bound = 0;
  for_each_run(ids, [&bound](const unsigned* begin, const unsigned* end) {
    bound = std::max(bound, index_bound(begin, end));
    return true;
  });
  return bound;
}

}  // namespace qel::gridwork::detail

#endif
