/// @file
/// dense1D: a vector as a view of a storage block.
#ifndef QEL_DENSE_DENSE1D_H
#define QEL_DENSE_DENSE1D_H

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <type_traits>
#include <utility>

#include "qel/dense/block_view.h"
#include "qel/dense/storage.h"

namespace qel {

template <class T>
class dense2D;

/// View of consecutive values inside one storage block.
///
/// Entry access does not test its index. Cost: constant, unless a member says otherwise; members that allocate are
/// linear in the entries they keep or write.
template <class T, unsigned Align = 8>
class dense1D : public detail::block_view<T, Align> {
  using base = detail::block_view<T, Align>;
  using base::block_;
  using base::offset_;
  using base::size_;

 public:
  using typename base::size_type;  ///< counts and positions of entries

  /// An empty array without storage.
  dense1D() noexcept = default;

  /// `n` entries of value 0; empty when memory ran out.
  explicit dense1D(size_type n) noexcept : dense1D(n, T{}) {}

  /// `n` entries of value `v`; empty when memory ran out.
  dense1D(size_type n, T v) noexcept {
    if (!resize(n, v)) clear();
  }

  /// A view of `n` values at `p`, which stay the caller's: they are never freed and must outlive every view.
  template <class Pointer, class = std::enable_if_t<std::is_same<Pointer, T*>::value>>
  dense1D(size_type n, Pointer p) noexcept : base(base::borrow_block(p, n), n, 0) {
    if (!block_) size_ = 0;
  }

  /// A copy of `values`; empty when memory ran out.
  dense1D(std::initializer_list<T> values) noexcept {
    if (resize(values.size())) std::copy(values.begin(), values.end(), begin());
  }

  /// A second view of the other's block; the view itself when the other is moved from, which is empty then.
  /// @{
  dense1D(const dense1D&) noexcept = default;
  dense1D& operator=(const dense1D&) noexcept = default;
  dense1D(dense1D&&) noexcept = default;
  dense1D& operator=(dense1D&&) noexcept = default;
  ~dense1D() = default;
  /// @}

  /// Assigns `v` to every entry and returns it.
  T operator=(T v) noexcept {
    std::fill(begin(), end(), v);
    return v;
  }

  /// Entry i, 0 <= i < size().
  /// @{
  T& operator[](size_type i) noexcept { return block_->data()[offset_ + i]; }
  const T& operator[](size_type i) const noexcept { return block_->data()[offset_ + i]; }
  T& operator()(size_type i) noexcept { return (*this)[i]; }
  const T& operator()(size_type i) const noexcept { return (*this)[i]; }
  /// @}

  /// The entries as a range.
  /// @{
  T* begin() noexcept { return base::entries(); }
  T* end() noexcept { return base::entries() + size_; }
  const T* begin() const noexcept { return base::entries(); }
  const T* end() const noexcept { return base::entries() + size_; }
  /// @}

  /// Sets the size to `n`. Entries up to the smaller size are kept, new ones are not initialised. Appending by it is
  /// amortised linear in the new entries.
  [[nodiscard]] bool resize(size_type n) noexcept {
    if (!base::grow_capacity(n, (std::min)(n, size_), base::growth())) return false;
    size_ = n;
    return true;
  }

  /// Sets the size to `n`; entries beyond the old size equal `v`.
  [[nodiscard]] bool resize(size_type n, T v) noexcept {
    const size_type old_size = size_;
    if (!resize(n)) return false;
    if (n > old_size) std::fill(begin() + old_size, end(), v);
    return true;
  }

  /// Makes room for `n` entries without changing the size; a new capacity is at least the old one times `factor`.
  [[nodiscard]] bool reserve(size_type n, size_type factor = 1) noexcept {
    return base::ensure_capacity(n, size_, factor);
  }

  /// Makes this an independent array with the other's size and values. A block of its own that is large enough is
  /// reused; a view of a caller's memory leaves it as it is.
  [[nodiscard]] bool copy(const dense1D& other) noexcept {
    const dense1D source(other);  // keeps the values alive, and shared, when other is this array
    if (!base::replace_block(source.size_)) return false;
    size_ = source.size_;
    std::copy(source.begin(), source.end(), begin());
    return true;
  }

  /// Makes this a second view of the other's block.
  void shallow_copy(const dense1D& other) noexcept { *this = other; }

  /// Appends `v`. Amortised constant.
  [[nodiscard]] bool push_back(T v) noexcept { return push_back_n(v, 1); }

  /// Appends `n` entries of value `v`. Amortised linear in `n`.
  [[nodiscard]] bool push_back_n(T v, size_type n) noexcept {
    if (n > std::numeric_limits<size_type>::max() - size_) return false;
    return base::grow_capacity(size_ + n, size_, 2) && resize(size_ + n, v);
  }

  /// Size 0; the block is kept for reuse.
  void clear() noexcept { size_ = 0; }

  /// Size 0; the block is released.
  void clear_hard() noexcept { *this = dense1D(); }

  /// A view of entries start .. start + n - 1.
  /// @{
  dense1D sub_vector(size_type start, size_type n) noexcept { return dense1D(block_, n, offset_ + start); }
  const dense1D sub_vector(size_type start, size_type n) const noexcept {  // NOLINT(readability-const-return-type)
    return dense1D(block_, n, offset_ + start);
  }
  /// @}

  /// Same size and equal entries, or not. Linear.
  /// @{
  bool operator==(const dense1D& other) const noexcept {
    return size_ == other.size_ && std::equal(begin(), end(), other.begin());
  }
  bool operator!=(const dense1D& other) const noexcept { return !(*this == other); }
  /// @}

 private:
  friend class dense2D<T>;

  dense1D(Ptr<vector_num<T, Align>> block, size_type size, size_type offset) noexcept
      : base(std::move(block), size, offset) {}
};

}  // namespace qel

#endif
