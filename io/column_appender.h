// A matrix that grows column by column while a file is read.
#ifndef QEL_GRIDWORK_IO_COLUMN_APPENDER_H
#define QEL_GRIDWORK_IO_COLUMN_APPENDER_H

#include <algorithm>
#include <cstdint>
#include <utility>

#include "core/check.h"
#include "core/limits.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io {

/// How far a file has been read; a size of 0 is not known.
struct file_progress {
  std::uint64_t position;
  std::uint64_t size;
};

/// Appends columns to an empty matrix, which has its final size when the appender is gone.
///
/// From the bytes that a column took so far follows how many can still come. Room for these is taken at once: pages
/// that no column reaches are never touched, so too much room costs nothing, whereas growing copies.
template <class T>
class column_appender {
 public:
  explicit column_appender(dense2D<T>& matrix) noexcept : matrix_(matrix) {}
  column_appender(const column_appender&) = delete;
  column_appender& operator=(const column_appender&) = delete;
  ~column_appender() { finish(); }

  /// Gives the matrix its final size before the appender is gone; nothing can be appended any more.
  void finish() noexcept {
    if (rows_ != 0) static_cast<void>(matrix_.resize(rows_, count()));  // never grows
    rows_ = 0;
    next_ = end_ = nullptr;
  }

  /// Makes another matrix the columns so far, of which there are none yet.
  void take(dense2D<T>&& columns) noexcept {
    QEL_GRIDWORK_CHECK(count() == 0);
    matrix_ = std::move(columns);
    rows_ = matrix_.rows();
    next_ = end_ = matrix_.column(matrix_.cols());
  }

  /// Rows of the first column; 0 as long as there is none.
  std::uint64_t rows() const noexcept { return rows_; }
  std::uint64_t count() const noexcept {
    return rows_ == 0 ? 0 : static_cast<std::uint64_t>(next_ - matrix_.data()) / rows_;
  }

  /// The place of the next column, which commit() then counts; null when room_for() comes first.
  T* room() const noexcept { return next_ == end_ ? nullptr : next_; }

  /// The place of the next `count` columns, which commit() then counts; null when memory ran out.
  [[nodiscard]] T* room_for(std::uint64_t count, std::uint64_t rows, const file_progress& file) noexcept {
    const bool is_room = static_cast<std::uint64_t>(end_ - next_) >= count * rows;
    return is_room || make_room(count, rows, file) ? next_ : nullptr;
  }

  void commit(std::uint64_t count = 1) noexcept {
    QEL_GRIDWORK_CHECK(count * rows_ <= static_cast<std::uint64_t>(end_ - next_));
    next_ += count * rows_;
  }

  /// Appends columns that lie one behind the other.
  [[nodiscard]] bool append(const T* columns, std::uint64_t rows, const file_progress& file,
                            std::uint64_t count = 1) noexcept {
    T* const places = room_for(count, rows, file);
    if (places == nullptr) return false;
    std::copy_n(columns, count * rows, places);
    commit(count);
    return true;
  }

 private:
  bool make_room(std::uint64_t fresh, std::uint64_t rows, const file_progress& file) noexcept {
    QEL_GRIDWORK_CHECK(rows != 0 && (rows_ == 0 || rows_ == rows));
    const std::uint64_t old_count = count();
    if (old_count == 0) start_ = file.position;
    const std::uint64_t likely = old_count + std::max(likely_columns(old_count, file), fresh);
    if (!matrix_.resize(rows, likely) && !matrix_.resize(rows, old_count + old_count / 8 + fresh)) return false;
    rows_ = rows;
    next_ = matrix_.column(old_count);
    end_ = matrix_.column(matrix_.cols());
    return true;
  }

  std::uint64_t likely_columns(std::uint64_t old_count, const file_progress& file) const noexcept {
    constexpr std::uint64_t shortest_line = 4;
    const std::uint64_t many = std::max(old_count, limits::first_columns);
    if (file.size <= file.position) return many;
    const std::uint64_t left = file.size - file.position;
    const std::uint64_t most = left / shortest_line + 1;
    if (old_count == 0) return std::min(many, most);
    const std::uint64_t line = std::max((file.position - start_) / old_count, shortest_line);
    return std::min(std::max(left / line + left / line / 16, many), most);
  }

  dense2D<T>& matrix_;
  std::uint64_t rows_ = 0;
  std::uint64_t start_ = 0;  // of the first column in the file
  T* next_ = nullptr;
  T* end_ = nullptr;
};

/// Appends make(0) to make(count - 1) to a matrix of one row.
template <class T, class Make>
[[nodiscard]] bool push_each(column_appender<T>& list, std::uint64_t count, const file_progress& file,
                             Make make) noexcept {
  if (count == 0) return true;
  T* const places = list.room_for(count, 1, file);
  if (places == nullptr) return false;
  for (std::uint64_t i = 0; i < count; ++i) places[i] = make(i);
  list.commit(count);
  return true;
}

/// Appends to a matrix of one row.
template <class T>
[[nodiscard]] bool push(column_appender<T>& list, T value, const file_progress& file) noexcept {
  T* const place = list.room();
  if (place == nullptr) return list.append(&value, 1, file);
  *place = value;
  list.commit();
  return true;
}

}  // namespace qel::gridwork::detail::io

#endif
