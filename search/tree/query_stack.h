// Stack of a tree walk: small ones need no allocation, deep trees do not overflow it.
#ifndef QEL_GRIDWORK_SEARCH_TREE_QUERY_STACK_H
#define QEL_GRIDWORK_SEARCH_TREE_QUERY_STACK_H

#include <cstdlib>
#include <new>

#include "core/check.h"
#include "core/limits.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

template <class T>
class query_stack {
 public:
  bool empty() const noexcept { return count_ == 0; }

  void push(const T& entry) {
    if (count_ < capacity) {
      inline_[count_] = entry;
    } else if (!overflow_.push_back(entry)) {
      report_overflow();
    }
    ++count_;
  }

  T pop() noexcept {
    QEL_GRIDWORK_CHECK(count_ != 0);
    --count_;
    if (count_ < capacity) return inline_[count_];
    const T entry = overflow_[overflow_.size() - 1];
    (void)overflow_.resize(overflow_.size() - 1);  // shrinking cannot fail
    return entry;
  }

 private:
  static constexpr unsigned capacity = limits::query_stack;

  [[noreturn]] static void report_overflow() {
#ifdef __cpp_exceptions
    throw std::bad_alloc();
#else
    std::abort();
#endif
  }

  T inline_[capacity];
  dense1D<T> overflow_;
  std::uint64_t count_ = 0;
};

}  // namespace qel::gridwork::detail

#endif
