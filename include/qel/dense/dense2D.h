/// @file
/// dense2D: a matrix as a view of a storage block.
#ifndef QEL_DENSE_DENSE2D_H
#define QEL_DENSE_DENSE2D_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <type_traits>
#include <utility>

#include "qel/dense/block_view.h"
#include "qel/dense/dense1D.h"
#include "qel/dense/storage.h"

namespace qel {

/// Column-major matrix view on one storage block: entry (i, j) lies ld() * j + i entries behind the first one.
///
/// Columns are records: one column a node, one column an element. A matrix is empty when rows() * cols() is 0.
/// Entry access does not test its indices. Cost: constant, unless a member says otherwise; members that allocate are
/// linear in the entries they keep or write.
template <class T>
class dense2D : public detail::block_view<T, 8> {
  using base = detail::block_view<T, 8>;
  using base::block_;
  using base::offset_;
  using base::size_;

 public:
  using typename base::size_type;  ///< counts and positions of entries

  /// An empty matrix without storage.
  dense2D() noexcept = default;

  /// rows x cols entries of value 0; empty when memory ran out.
  dense2D(size_type rows, size_type cols) noexcept : dense2D(rows, cols, T{}) {}

  /// rows x cols entries of value `v`; empty when memory ran out.
  dense2D(size_type rows, size_type cols, T v) noexcept {
    if (!resize(rows, cols, v)) clear();
  }

  /// rows x cols entries, given column by column; entries that `values` lacks are 0. Empty when memory ran out.
  dense2D(size_type rows, size_type cols, std::initializer_list<T> values) noexcept : dense2D(rows, cols) {
    std::copy_n(values.begin(), (std::min)(size_type{values.size()}, size_), base::entries());
  }

  /// A view of a compact matrix at `p`, which stays the caller's: it is never freed and must outlive every view.
  template <class Pointer, class = std::enable_if_t<std::is_same<Pointer, T*>::value>>
  dense2D(size_type rows, size_type cols, Pointer p) noexcept : dense2D(rows, cols, rows, p) {}

  /// A view of a caller's matrix whose columns start `ld` entries apart.
  template <class Pointer, class = std::enable_if_t<std::is_same<Pointer, T*>::value>>
  dense2D(size_type rows, size_type cols, size_type ld, Pointer p) noexcept
      : base(base::borrow_block(p, extent(rows, cols, ld)), rows * cols, 0), rows_(rows), cols_(cols), ld_(ld) {
    if (!block_) clear();
  }

  /// A second view of the other's block; the view itself when the other is moved from, which is empty then.
  /// @{
  dense2D(const dense2D&) noexcept = default;
  dense2D& operator=(const dense2D&) noexcept = default;
  dense2D(dense2D&& other) noexcept
      : base(std::move(other)),
        rows_(std::exchange(other.rows_, 0)),
        cols_(std::exchange(other.cols_, 0)),
        ld_(std::exchange(other.ld_, 0)) {}
  dense2D& operator=(dense2D&& other) noexcept {
    base::operator=(std::move(other));
    rows_ = std::exchange(other.rows_, 0);
    cols_ = std::exchange(other.cols_, 0);
    ld_ = std::exchange(other.ld_, 0);
    return *this;
  }
  ~dense2D() = default;
  /// @}

  /// Number of rows.
  size_type rows() const noexcept { return rows_; }

  /// Number of columns.
  size_type cols() const noexcept { return cols_; }

  /// Leading dimension: entries between the starts of two consecutive columns.
  size_type ld() const noexcept { return ld_; }

  /// True when the entries lie one after another.
  bool compact() const noexcept { return ld_ == rows_ || cols_ <= 1; }

  /// Entry (i, j), 0 <= i < rows(), 0 <= j < cols().
  /// @{
  T& operator()(size_type i, size_type j) noexcept { return block_->data()[offset_ + j * ld_ + i]; }
  const T& operator()(size_type i, size_type j) const noexcept { return block_->data()[offset_ + j * ld_ + i]; }
  /// @}

  /// The first entry of column `j`.
  /// @{
  T* column(size_type j) noexcept { return base::entries() + j * ld_; }
  const T* column(size_type j) const noexcept { return base::entries() + j * ld_; }
  /// @}

  /// The entries of column `j` as a range.
  /// @{
  T* begin_column(size_type j) noexcept { return column(j); }
  T* end_column(size_type j) noexcept { return column(j) + rows_; }
  const T* begin_column(size_type j) const noexcept { return column(j); }
  const T* end_column(size_type j) const noexcept { return column(j) + rows_; }
  /// @}

  /// Makes the matrix rows x cols and compact. Entries inside both shapes are kept, others are not initialised.
  /// Appending columns by it is amortised linear in the new entries.
  [[nodiscard]] bool resize(size_type rows, size_type cols) noexcept {
    if (cols != 0 && rows > std::numeric_limits<size_type>::max() / cols) return false;
    const size_type kept_rows = (std::min)(rows, rows_);
    const size_type kept_cols = kept_rows == 0 ? 0 : (std::min)(cols, cols_);
    if (!rearrange(rows, cols, kept_rows, kept_cols)) return false;
    rows_ = ld_ = rows;
    cols_ = cols;
    size_ = rows * cols;
    return true;
  }

  /// As resize(rows, cols); every entry that is not kept equals `v`.
  [[nodiscard]] bool resize(size_type rows, size_type cols, T v) noexcept {
    const size_type kept_rows = (std::min)(rows, rows_);
    const size_type kept_cols = kept_rows == 0 ? 0 : (std::min)(cols, cols_);
    if (!resize(rows, cols)) return false;
    if (kept_rows < rows) {
      for (size_type j = 0; j < kept_cols; ++j) std::fill(column(j) + kept_rows, end_column(j), v);
    }
    if (kept_cols < cols) std::fill(column(kept_cols), column(cols), v);
    return true;
  }

  /// Makes room for rows x cols entries without changing the dimensions, so that columns may be appended up to `cols`;
  /// these start ld() entries apart where the columns that are there do.
  [[nodiscard]] bool reserve(size_type rows, size_type cols) noexcept {
    const size_type stride = cols_ == 0 ? rows : (std::max)(rows, ld_);
    if (cols != 0 && stride > std::numeric_limits<size_type>::max() / cols) return false;
    return base::ensure_capacity(extent(rows, cols, stride), extent(rows_, cols_, ld_), 1);
  }

  /// Makes this an independent, compact matrix with the other's dimensions and values. A block of its own that is large
  /// enough is reused; a view of a caller's memory leaves it as it is.
  [[nodiscard]] bool copy(const dense2D& other) noexcept {
    const dense2D source(other);  // keeps the values alive, and shared, when other is this matrix
    if (!base::replace_block(source.size_)) return false;
    rows_ = ld_ = source.rows_;
    cols_ = source.cols_;
    size_ = source.size_;
    copy_columns(source.base::entries(), source.ld_, base::entries(), rows_, rows_, cols_);
    return true;
  }

  /// Makes this a second view of the other's block, with its dimensions and leading dimension.
  void shallow_copy(const dense2D& other) noexcept { *this = other; }

  /// Appends the rows() entries at `values`, which may lie in this matrix. Amortised constant.
  [[nodiscard]] bool push_back_column(const T* values) noexcept {
    const size_type stride = cols_ == 0 ? rows_ : ld_;
    const size_type needed = stride * cols_ + rows_;
    Ptr<vector_num<T, 8>> old_block;
    if (needed > base::capacity()) old_block = block_;  // keeps the entries that values may point at
    if (!base::grow_capacity(needed, extent(rows_, cols_, ld_), 2)) return false;
    ld_ = stride;
    ++cols_;
    size_ += rows_;
    if (rows_ != 0) std::memmove(static_cast<void*>(column(cols_ - 1)), values, rows_ * sizeof(T));
    return true;
  }

  /// Appends a column; a matrix without columns takes its row count from it. False when the row count differs.
  [[nodiscard]] bool push_back_column(std::initializer_list<T> values) noexcept {
    if (cols_ != 0) return values.size() == rows_ && push_back_column(values.begin());
    const size_type old_rows = std::exchange(rows_, values.size());
    if (push_back_column(values.begin())) return true;
    rows_ = old_rows;
    return false;
  }

  /// 0 x 0; the block is kept for reuse.
  void clear() noexcept { size_ = rows_ = cols_ = ld_ = 0; }

  /// 0 x 0; the block is released.
  void clear_hard() noexcept { *this = dense2D(); }

  /// A view of rows i0 .. i0 + rows - 1 and columns j0 .. j0 + cols - 1; it keeps the leading dimension.
  /// @{
  dense2D sub_matrix(size_type i0, size_type j0, size_type rows, size_type cols) noexcept {
    return view(i0, j0, rows, cols);
  }
  const dense2D sub_matrix(size_type i0, size_type j0, size_type rows,  // NOLINT(readability-const-return-type)
                           size_type cols) const noexcept {
    return view(i0, j0, rows, cols);
  }
  /// @}

  /// A view of all entries, column by column, as one vector. The matrix must be compact.
  dense1D<T, 8> as_vector() const noexcept { return dense1D<T, 8>(block_, size_, offset_); }

  /// Same dimensions and equal entries, or not. Linear.
  /// @{
  bool operator==(const dense2D& other) const noexcept {
    if (rows_ != other.rows_ || cols_ != other.cols_) return false;
    for (size_type j = 0; j < cols_; ++j) {
      if (!std::equal(begin_column(j), end_column(j), other.begin_column(j))) return false;
    }
    return true;
  }
  bool operator!=(const dense2D& other) const noexcept { return !(*this == other); }
  /// @}

 private:
  /// Entries from the first to the last one of a matrix, the gaps between its columns included.
  static size_type extent(size_type rows, size_type cols, size_type ld) noexcept {
    return cols == 0 ? 0 : (cols - 1) * ld + rows;
  }

  static void copy_columns(const T* from, size_type from_ld, T* to, size_type to_ld, size_type rows,
                           size_type cols) noexcept {
    if (from_ld == rows && to_ld == rows) {
      std::copy_n(from, rows * cols, to);
      return;
    }
    for (size_type j = 0; j < cols; ++j) std::copy_n(from + j * from_ld, rows, to + j * to_ld);
  }

  /// Brings the kept entries into the compact layout of a rows x cols matrix, for which it makes room.
  bool rearrange(size_type rows, size_type cols, size_type kept_rows, size_type kept_cols) noexcept {
    const bool entries_stay = kept_cols <= 1 || rows == ld_;
    if (entries_stay) {
      return base::grow_capacity(rows * cols, extent(kept_rows, kept_cols, ld_), base::growth());
    }
    if (rows * cols <= base::capacity() && base::owns_block_alone()) {
      move_columns_in_place(rows, kept_rows, kept_cols);
      return true;
    }
    Ptr<vector_num<T, 8>> fresh = base::make_block(rows * cols);
    if (!fresh) return false;
    copy_columns(base::entries(), ld_, fresh->data(), rows, kept_rows, kept_cols);
    block_ = std::move(fresh);
    offset_ = 0;
    return true;
  }

  void move_columns_in_place(size_type new_ld, size_type kept_rows, size_type kept_cols) noexcept {
    T* first = base::entries();
    const auto move_column = [&](size_type j) {
      std::memmove(static_cast<void*>(first + j * new_ld), first + j * ld_,
                   static_cast<std::size_t>(kept_rows * sizeof(T)));
    };
    if (new_ld < ld_) {
      for (size_type j = 1; j < kept_cols; ++j) move_column(j);
    } else {
      for (size_type j = kept_cols; j-- > 1;) move_column(j);
    }
  }

  dense2D view(size_type i0, size_type j0, size_type rows, size_type cols) const noexcept {
    dense2D part(*this);
    part.offset_ += j0 * ld_ + i0;
    part.rows_ = rows;
    part.cols_ = cols;
    part.size_ = rows * cols;
    return part;
  }

  size_type rows_ = 0;
  size_type cols_ = 0;
  size_type ld_ = 0;
};

}  // namespace qel

#endif
