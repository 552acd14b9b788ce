// Lists of distinct indices that are whole or not there.
#ifndef QEL_GRIDWORK_IDS_DISTINCT_INDICES_H
#define QEL_GRIDWORK_IDS_DISTINCT_INDICES_H

#include <cstdint>

#include "core/result.h"
#include "qel/dense.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork::detail {

/// Puts the distinct entries of a list or a matrix into an empty list; results as of unique_indices(). Room is made
/// first: that function drops what does not fit, and does not tell.
template <class Array>
[[nodiscard]] int list_distinct(const Array& source, dense1D<unsigned>& ids) {
  return ids.reserve(source.size()) ? unique_indices(ids, source) : out_of_memory;
}

/// The same for the matrices of [first, last).
[[nodiscard]] inline int list_distinct(const dense2D<unsigned>* first, const dense2D<unsigned>* last,
                                       dense1D<unsigned>& ids) {
  std::uint64_t entries = 0;
  for (const dense2D<unsigned>* matrix = first; matrix < last; ++matrix) entries += matrix->size();
  return ids.reserve(entries) ? unique_indices(ids, first, last) : out_of_memory;
}

}  // namespace qel::gridwork::detail

#endif
