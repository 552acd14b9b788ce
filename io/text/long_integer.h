// Integers as long as the exact conversion of a double needs them, on the stack.
#ifndef QEL_GRIDWORK_IO_TEXT_LONG_INTEGER_H
#define QEL_GRIDWORK_IO_TEXT_LONG_INTEGER_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/check.h"

namespace qel::gridwork::detail::io {

/// Words of 32 bits, the lowest first, and none that is 0 on top.
class long_integer {
 public:
  explicit long_integer(std::uint64_t value) noexcept {
    for (; value != 0; value >>= 32) append(static_cast<std::uint32_t>(value));
  }

  bool is_zero() const noexcept { return count_ == 0; }

  void multiply_add(std::uint32_t factor, std::uint32_t summand) noexcept {
    std::uint64_t carry = summand;
    for (unsigned k = 0; k < count_; ++k) {
      carry += std::uint64_t{words_[k]} * factor;
      words_[k] = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
    if (carry != 0) append(static_cast<std::uint32_t>(carry));
  }

  void multiply_by_power_of_5(unsigned exponent) noexcept {
    constexpr unsigned most = 13;  // whose power 32 bits hold
    constexpr std::uint32_t powers[] = {1,     5,      25,      125,     625,      3125,      15625,
                                        78125, 390625, 1953125, 9765625, 48828125, 244140625, 1220703125};
    for (; exponent >= most; exponent -= most) multiply_add(powers[most], 0);
    multiply_add(powers[exponent], 0);
  }

  void shift_left(unsigned bits) noexcept {
    if (is_zero()) return;
    multiply_add(std::uint32_t{1} << (bits % 32), 0);
    const unsigned whole = bits / 32;
    QEL_GRIDWORK_CHECK(count_ + whole <= capacity);
    std::memmove(words_ + whole, words_, count_ * sizeof *words_);
    std::fill_n(words_, whole, 0);
    count_ += whole;
  }

  /// Divides by 10^9 and returns the remainder: the lowest digits.
  std::uint32_t take_nine_digits() noexcept {
    constexpr std::uint32_t divisor = 1000000000;
    std::uint64_t rest = 0;
    for (unsigned k = count_; k-- > 0;) {
      rest = (rest << 32) + words_[k];
      words_[k] = static_cast<std::uint32_t>(rest / divisor);
      rest %= divisor;
    }
    while (count_ != 0 && words_[count_ - 1] == 0) --count_;
    return static_cast<std::uint32_t>(rest);
  }

  /// Below, at or above 0 as a is below, equal to or above b.
  friend int compare(const long_integer& a, const long_integer& b) noexcept {
    if (a.count_ != b.count_) return a.count_ < b.count_ ? -1 : 1;
    for (unsigned k = a.count_; k-- > 0;) {
      if (a.words_[k] != b.words_[k]) return a.words_[k] < b.words_[k] ? -1 : 1;
    }
    return 0;
  }

 private:
  static constexpr unsigned capacity = 88;

  void append(std::uint32_t word) noexcept {
    QEL_GRIDWORK_CHECK(count_ < capacity);
    words_[count_++] = word;
  }

  std::uint32_t words_[capacity];
  unsigned count_ = 0;
};

}  // namespace qel::gridwork::detail::io

#endif
