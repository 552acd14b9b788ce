/// @file
/// The numeric arrays that every signature uses: dense1D, dense2D and the storage blocks behind them.
///
/// An array is a *view*: a position and a size inside a reference-counted block. Copy construction, copy assignment
/// and shallow_copy() make a second view of the same block, copy() makes an independent one. The last view frees the
/// block. Members that may have to allocate return `bool`; on `false` the array is as it was. Nothing throws.
///
/// Two rules for views that share a block:
/// - an array that must move its entries (a new capacity, another row count) does so in place only while it is the
///   block's one owner, otherwise it leaves for a block of its own, so that no other view is disturbed;
/// - an array that grows inside the capacity it has writes behind its end, even where another view of the block lies.
///
/// Functions that take arrays keep apart what they read from what they write: an output that shares memory with an
/// input, or with another output, leaves it before it is written, and ends with a block of its own. Only where a
/// function says that it works in place do other views of the block see the result.
///
/// Growth is geometric once an array holds entries, so that appending one by one is amortised constant, also by
/// resize(); an empty array takes what it is asked for. Where memory for the geometric step is lacking, the size that
/// was asked for is tried.
#ifndef QEL_DENSE_H
#define QEL_DENSE_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "qel/export.h"

namespace qel {

/// Raw memory of `bytes` bytes, or null. Large requests are aligned so that the system can back them by huge pages.
QEL_GRIDWORK_API void* __vector_num_alloc(std::uint64_t bytes) noexcept;

/// Gives back memory that came from __vector_num_alloc(). Null is allowed.
QEL_GRIDWORK_API void __vector_num_free(void* raw) noexcept;

namespace math1 {

/// Base of objects that count their owners; the count is atomic, so owners may come and go in several threads.
class ref_counted {
 public:
  /// An object that nobody owns yet. Copies would share no count, so there are none.
  /// @{
  ref_counted() noexcept : count_(0) {}
  ref_counted(const ref_counted&) = delete;
  ref_counted& operator=(const ref_counted&) = delete;
  virtual ~ref_counted() = default;
  /// @}

  /// Deletes the object through its virtual destructor.
  void __destroy() noexcept { delete this; }

  /// Counts one owner more.
  void __add_owner() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }

  /// True when the owner that leaves was the last one.
  bool __remove_owner() noexcept { return count_.fetch_sub(1, std::memory_order_acq_rel) == 1; }

  /// True when exactly one owner is counted.
  bool __has_one_owner() const noexcept { return count_.load(std::memory_order_acquire) == 1; }

 private:
  std::atomic<std::uint64_t> count_;
};

}  // namespace math1

/// Intrusive owning pointer to a math1::ref_counted object.
template <class Object>
class Ptr {
 public:
  /// Owns `object`, the other's object, or nothing. A moved-from pointer is null.
  /// @{
  Ptr() noexcept = default;
  explicit Ptr(Object* object) noexcept : object_(object) { add_owner(); }
  Ptr(const Ptr& other) noexcept : object_(other.object_) { add_owner(); }
  Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  /// @}

  /// Releases the object.
  ~Ptr() { remove_owner(); }

  /// Takes a reference to the other's object and releases the one held before.
  Ptr& operator=(const Ptr& other) noexcept { return *this = other.object_; }

  /// Exchanges the objects.
  Ptr& operator=(Ptr&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  /// Takes a reference to `object` and releases the one held before.
  Ptr& operator=(Object* object) noexcept {
    Ptr incoming(object);
    std::swap(object_, incoming.object_);
    return *this;
  }

  /// The object, or null.
  Object* get() const noexcept { return object_; }

  /// The object, which must not be null.
  /// @{
  Object* operator->() const noexcept { return object_; }
  Object& operator*() const noexcept { return *object_; }
  /// @}

  /// True when there is an object.
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  void add_owner() noexcept {
    if (object_ != nullptr) object_->__add_owner();
  }

  void remove_owner() noexcept {
    if (object_ != nullptr && object_->__remove_owner()) object_->__destroy();
  }

  Object* object_ = nullptr;
};

/// Reference-counted block of T values, the first of them aligned to Align bytes.
template <class T, unsigned Align = 8>
class vector_num : public math1::ref_counted {
  static_assert(std::is_trivially_copyable<T>::value, "blocks are copied and moved as bytes");
  static_assert(Align >= 1 && Align <= 128 && (Align & (Align - 1)) == 0, "the alignment is a small power of two");

 public:
  using size_type = std::uint64_t;  ///< counts of values

  /// A block without memory.
  vector_num() noexcept = default;

  /// A block over `capacity` values of the caller's, which it never frees.
  vector_num(T* values, size_type capacity) noexcept : data_(values), capacity_(capacity), shift_(borrowed) {}

  /// Gives the memory back, but for a caller's.
  ~vector_num() override { release(); }

  /// The first value; null without memory.
  T* data() const noexcept { return data_; }

  /// Number of values that the memory holds.
  size_type capacity() const noexcept { return capacity_; }

  /// True when the memory is a caller's.
  bool is_borrowed() const noexcept { return shift_ == borrowed; }

  /// Moves the block to new memory for max(min_capacity, 2, capacity() * factor) values and keeps the first `keep`.
  /// False, with nothing changed, when that size overflows or cannot be had.
  [[nodiscard]] bool __grow(size_type min_capacity, size_type keep, size_type factor) noexcept {
    if (factor != 0 && capacity_ > std::numeric_limits<size_type>::max() / factor) return false;
    const size_type capacity = (std::max)({min_capacity, size_type{2}, capacity_ * factor});
    constexpr size_type limit = (std::numeric_limits<size_type>::max() - (Align - 1)) / sizeof(T);
    if (capacity > limit) return false;
    void* raw = __vector_num_alloc(capacity * sizeof(T) + (Align - 1));
    if (raw == nullptr) return false;

    const auto address = reinterpret_cast<std::uintptr_t>(raw);
    const auto shift = static_cast<unsigned char>((Align - address % Align) % Align);
    T* data = reinterpret_cast<T*>(static_cast<unsigned char*>(raw) + shift);
    const size_type kept = (std::min)({keep, capacity_, capacity});
    if (kept != 0) std::memcpy(static_cast<void*>(data), data_, static_cast<std::size_t>(kept * sizeof(T)));
    release();
    data_ = data;
    capacity_ = capacity;
    shift_ = shift;
    return true;
  }

 private:
  static constexpr unsigned char borrowed = 255;  // in place of a shift: the memory is the caller's

  void release() noexcept {
    if (data_ != nullptr && !is_borrowed()) {
      __vector_num_free(reinterpret_cast<unsigned char*>(data_) - shift_);
    }
  }

  T* data_ = nullptr;
  size_type capacity_ = 0;
  unsigned char shift_ = 0;
};

template <class T>
class dense2D;

namespace detail {

/// Position and size of a view inside its block: what dense1D and dense2D have in common.
template <class T, unsigned Align>
class block_view {
 public:
  using value_type = T;                     ///< of an entry
  using size_type = std::uint64_t;          ///< counts and positions of entries
  using block_type = vector_num<T, Align>;  ///< of the storage behind the view

  /// Number of entries.
  size_type size() const noexcept { return size_; }

  /// True when there is no entry.
  bool empty() const noexcept { return size_ == 0; }

  /// Entries that fit from the first one on without new memory. (A part without columns may lie behind the block.)
  size_type capacity() const noexcept {
    return block_ && offset_ < block_->capacity() ? block_->capacity() - offset_ : 0;
  }

  /// The first entry; null when there never was storage.
  T* data() noexcept { return entries(); }

  /// The first entry; null when there never was storage.
  const T* data() const noexcept { return entries(); }

  /// Position of the first entry in the block.
  size_type offset() const noexcept { return offset_; }

  /// True when there is storage and no other view shares it.
  bool owns_block_alone() const noexcept { return block_ && block_->__has_one_owner(); }

  /// True when the entries lie in memory of a caller's, as long as the array fits there.
  bool is_borrowed() const noexcept { return block_ && block_->is_borrowed(); }

  /// True when the blocks of two arrays have memory in common, whatever parts of it the arrays are views of.
  template <class U, unsigned OtherAlign>
  bool shares_block(const block_view<U, OtherAlign>& other) const noexcept {
    if (!block_ || !other.block_) return false;
    const std::less<const void*> before;
    return before(block_->data(), other.block_->data() + other.block_->capacity()) &&
           before(other.block_->data(), block_->data() + block_->capacity());
  }

 protected:
  /// @cond internal
  template <class U, unsigned OtherAlign>
  friend class block_view;

  block_view() noexcept = default;
  block_view(Ptr<block_type> block, size_type size, size_type offset) noexcept
      : block_(std::move(block)), size_(size), offset_(offset) {}
  block_view(const block_view&) noexcept = default;
  block_view(block_view&& other) noexcept
      : block_(std::move(other.block_)),
        size_(std::exchange(other.size_, 0)),
        offset_(std::exchange(other.offset_, 0)) {}
  block_view& operator=(const block_view&) noexcept = default;
  block_view& operator=(block_view&& other) noexcept {
    block_ = std::move(other.block_);
    size_ = std::exchange(other.size_, 0);
    offset_ = std::exchange(other.offset_, 0);
    if (this != &other) other.block_ = nullptr;
    return *this;
  }
  ~block_view() = default;

  static Ptr<block_type> make_block(size_type capacity) noexcept {
    Ptr<block_type> block(new (std::nothrow) block_type);
    if (block && !block->__grow(capacity, 0, 1)) block = nullptr;
    return block;
  }

  static Ptr<block_type> borrow_block(T* values, size_type capacity) noexcept {
    return Ptr<block_type>(new (std::nothrow) block_type(values, capacity));
  }

  T* entries() const noexcept { return block_ ? block_->data() + offset_ : nullptr; }

  /// Capacity for `count` entries from the first one on, the first `keep` of them preserved.
  bool ensure_capacity(size_type count, size_type keep, size_type factor) noexcept {
    if (count <= capacity()) return true;
    if (owns_block_alone() && offset_ == 0) return block_->__grow(count, keep, factor);
    if (factor != 0 && capacity() > std::numeric_limits<size_type>::max() / factor) return false;
    Ptr<block_type> fresh = make_block((std::max)(count, capacity() * factor));
    if (!fresh) return false;
    if (keep != 0)
      std::memcpy(static_cast<void*>(fresh->data()), entries(), static_cast<std::size_t>(keep * sizeof(T)));
    block_ = std::move(fresh);
    offset_ = 0;
    return true;
  }

  /// The same for an array that may grow again: with room to spare, if memory allows.
  bool grow_capacity(size_type count, size_type keep, size_type factor) noexcept {
    return ensure_capacity(count, keep, factor) || (factor > 1 && ensure_capacity(count, keep, 1));
  }

  /// The factor by which resize() enlarges the capacity.
  size_type growth() const noexcept { return size_ == 0 ? 1 : 2; }

  /// A block for `count` entries whose old values do not matter, shared with no other view and no caller's.
  bool replace_block(size_type count) noexcept {
    if (owns_block_alone() && !is_borrowed() && block_->capacity() >= count) {
      offset_ = 0;
      return true;
    }
    Ptr<block_type> fresh = make_block(count);
    if (!fresh) return false;
    block_ = std::move(fresh);
    offset_ = 0;
    return true;
  }

  Ptr<block_type> block_;
  size_type size_ = 0;
  size_type offset_ = 0;
  /// @endcond
};

}  // namespace detail

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
