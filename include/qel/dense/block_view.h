/// @file
/// What dense1D and dense2D have in common: a position and a size inside a block.
#ifndef QEL_DENSE_BLOCK_VIEW_H
#define QEL_DENSE_BLOCK_VIEW_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <utility>

#include "qel/dense/storage.h"

namespace qel {

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

}  // namespace qel

#endif
