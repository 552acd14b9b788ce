// How matrices grow and shrink that belong to a caller or become his.
//
// Which way for what:
//
// | what grows | how | why so |
// |---|---|---|
// | an output that calls append to | append_columns.h | doubles, so that repeated calls are amortised |
// | a caller's matrix with other views | make_room(), grow() | in a block of its own: other views see nothing |
// | a list, entry by entry or by portions | reserve(n, 2) of dense1D | doubles; entries written without a test for each |
// | what a file gives, column by column | io/column_appender.h | from the bytes that are left follows what will come |
// | what an STL file gives | io/triangle_soup.cpp | the same, from the triangles that are left |
// | hash tables | make_room() of each | keys move, so it happens before a search, never within |
#ifndef QEL_GRIDWORK_CORE_GROWTH_H
#define QEL_GRIDWORK_CORE_GROWTH_H

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

/// Gives back memory if more than `slack` entries of it are unused; but for a caller's, which is not ours to give.
/// Without memory for the smaller copy, the array stays as it is.
template <class Array>
void trim(Array& array, std::uint64_t slack) {
  Array fitting;
  if (array.is_borrowed() || array.capacity() <= array.size() + slack) return;
  if (fitting.copy(array)) array.shallow_copy(fitting);
}

}  // namespace qel::gridwork::detail

#endif
