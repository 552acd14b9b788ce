// Matrices that calls append to.
#ifndef QEL_GRIDWORK_CORE_APPEND_COLUMNS_H
#define QEL_GRIDWORK_CORE_APPEND_COLUMNS_H

#include <algorithm>
#include <cstdint>

#include "core/check.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Adds `count` columns, not initialised, to a matrix that is empty or has so many rows; repeated calls grow it by
/// doubling. False, with the matrix as it was, when memory ran out.
template <class T>
[[nodiscard]] bool append_columns(dense2D<T>& m, std::uint64_t rows, std::uint64_t count) {
  QEL_GRIDWORK_CHECK(m.empty() || m.rows() == rows);
  const std::uint64_t old_count = m.empty() ? 0 : m.cols();
  const std::uint64_t new_count = old_count + count;
  if (m.capacity() < rows * new_count && !m.reserve(rows, std::max(new_count, 2 * old_count + 4))) return false;
  return m.resize(rows, new_count);
}

}  // namespace qel::gridwork::detail

#endif
