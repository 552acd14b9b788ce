// Growth of a caller's matrix, of which there may be other views.
#ifndef QEL_GRIDWORK_TRANSFORMS_GROWTH_H
#define QEL_GRIDWORK_TRANSFORMS_GROWTH_H

#include <algorithm>
#include <cstdint>
#include <utility>

#include "core/check.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Makes room for rows x cols entries, not fewer than there are, in a block that is the matrix's own: growing there
/// disturbs no other view, not even one that lies behind the last column or in gaps between columns. Shape and values
/// stay. Where columns come, a sole owner reserves for as many as there are, so that calls in a row are amortised.
template <class T>
[[nodiscard]] bool make_room(dense2D<T>& matrix, std::uint64_t rows, std::uint64_t cols) {
  if (rows == matrix.rows() && cols == matrix.cols()) return true;
  if (matrix.compact() && matrix.owns_block_alone()) {
    if (rows == 0 || cols <= matrix.capacity() / rows) return true;
    const std::uint64_t ample = cols > matrix.cols() ? std::max(2 * matrix.cols(), cols) : cols;
    return matrix.reserve(rows, ample) || matrix.reserve(rows, cols);
  }
  dense2D<T> own;
  if (!own.reserve(rows, cols) || !own.copy(matrix)) return false;
  matrix = std::move(own);
  return true;
}

/// Makes the matrix rows x cols, not smaller than it is: old columns hold `fill` in new rows, new columns are not
/// initialised. False, with shape and values unchanged, when memory ran out; never after make_room().
template <class T>
[[nodiscard]] bool grow(dense2D<T>& matrix, std::uint64_t rows, std::uint64_t cols, T fill) {
  if (rows == matrix.rows() && cols == matrix.cols()) return true;
  QEL_GRIDWORK_CHECK(rows >= matrix.rows() && cols >= matrix.cols());
  return make_room(matrix, rows, cols) && matrix.resize(rows, matrix.cols(), fill) && matrix.resize(rows, cols);
}

}  // namespace qel::gridwork::detail

#endif
