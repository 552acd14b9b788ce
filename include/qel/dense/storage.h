/// @file
/// The reference-counted blocks behind dense1D and dense2D.
#ifndef QEL_DENSE_STORAGE_H
#define QEL_DENSE_STORAGE_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
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

}  // namespace qel

#endif
