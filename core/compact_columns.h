// Removal of the columns that a set does not hold.
#ifndef QEL_GRIDWORK_CORE_COMPACT_COLUMNS_H
#define QEL_GRIDWORK_CORE_COMPACT_COLUMNS_H

#include <algorithm>
#include <numeric>

#include "core/index_flags.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Moves the used columns up, from column `first` on, and enters the new index of each that is left in `new_IDs`.
/// Returns their number; the matrix keeps its size.
template <class T>
unsigned compact_columns(dense2D<T>& matrix, const index_flags& used, dense1D<unsigned>& new_IDs,
                         unsigned first = 0) noexcept {
  std::iota(new_IDs.begin(), new_IDs.begin() + first, 0U);
  unsigned kept = first;
  for (unsigned i = first; i < matrix.cols(); ++i) {
    if (!used.contains(i)) continue;
    if (kept < i) std::copy(matrix.begin_column(i), matrix.end_column(i), matrix.begin_column(kept));
    new_IDs[i] = kept++;
  }
  return kept;
}

}  // namespace qel::gridwork::detail

#endif
