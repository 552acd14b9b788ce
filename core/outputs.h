// Arguments that share memory: functions neither read what they have written nor write what they will read.
#ifndef QEL_GRIDWORK_CORE_OUTPUTS_H
#define QEL_GRIDWORK_CORE_OUTPUTS_H

#include <utility>

#include "qel/dense.h"

namespace qel::gridwork::detail {

/// An array of matrices that a function reads; none when `last` does not lie behind `first`.
struct input_matrices {
  const dense2D<unsigned>* first;
  const dense2D<unsigned>* last;
};

/// True when writing to `a` could change `b`.
/// @{
template <class A, class B>
bool share_memory(const A& a, const B& b) noexcept {
  return static_cast<const void*>(&a) == static_cast<const void*>(&b) || a.shares_block(b);
}

template <class A>
bool share_memory(const A& a, const input_matrices& b) noexcept {
  const dense2D<unsigned>* matrix = b.first;
  while (matrix < b.last && !share_memory(a, *matrix)) ++matrix;
  return matrix < b.last;
}
/// @}

/// True for two views of the same entries, or one view passed twice.
template <class T>
bool are_same_view(const dense2D<T>& a, const dense2D<T>& b) noexcept {
  return a.data() == b.data() && a.rows() == b.rows() && a.cols() == b.cols() && a.ld() == b.ld();
}

/// What a function writes to: the caller's array or, where that shares memory with an input, one that the caller's array
/// becomes in the end.
template <class Array>
class written_array {
 public:
  written_array(const written_array&) = delete;
  written_array& operator=(const written_array&) = delete;

  operator Array&() noexcept { return is_apart_ ? own_ : argument_; }

 protected:
  written_array(Array& argument, bool is_apart) noexcept : argument_(argument), is_apart_(is_apart) {}
  ~written_array() {
    if (is_apart_) argument_ = std::move(own_);
  }

  Array& argument_;
  Array own_;
  bool is_apart_;
};

/// An output that is overwritten. The test for memory shared with any of the others costs a few comparisons.
template <class Array>
class output : public written_array<Array> {
 public:
  template <class... Others>
  explicit output(Array& argument, const Others&... others) noexcept
      : written_array<Array>(argument, (share_memory(argument, others) || ...)) {}
};

/// An output that is appended to, or changed in parts: what to write to is known once keep_entries() was called.
template <class Array>
class appended : public written_array<Array> {
 public:
  template <class... Others>
  explicit appended(Array& argument, const Others&... others) noexcept
      : written_array<Array>(argument, false), shares_((share_memory(argument, others) || ...)) {}

  /// False, with the caller's array as it was, when memory ran out.
  [[nodiscard]] bool keep_entries() noexcept {
    if (shares_) this->is_apart_ = this->own_.copy(this->argument_);
    return this->is_apart_ || !shares_;
  }

 private:
  bool shares_;
};

/// What a function reads that works in place: the caller's array or, where that shares memory with the one that is
/// changed, a copy.
template <class Array>
class input {
 public:
  template <class Changed>
  input(const Array& argument, const Changed& changed) noexcept
      : argument_(argument), is_apart_(share_memory(argument, changed)), is_ready_(!is_apart_ || own_.copy(argument)) {}

  /// False when memory for the copy ran out.
  bool is_ready() const noexcept { return is_ready_; }

  operator const Array&() const noexcept { return is_apart_ ? own_ : argument_; }

 private:
  const Array& argument_;
  Array own_;
  bool is_apart_;
  bool is_ready_;
};

}  // namespace qel::gridwork::detail

#endif
