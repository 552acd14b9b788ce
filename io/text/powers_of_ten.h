// Powers of ten as 64 leading bits, which one product with a mantissa of 64 bits turns into digits or into a double.
#ifndef QEL_GRIDWORK_IO_TEXT_POWERS_OF_TEN_H
#define QEL_GRIDWORK_IO_TEXT_POWERS_OF_TEN_H

#include <cstdint>

namespace qel::gridwork::detail::io {

/// floor(log2(10^n)), for |n| < 1000.
constexpr int binary_exponent(int n) noexcept { return (n * 1741647) >> 19; }

/// floor(log10(2^n)), for |n| < 2000.
constexpr int decimal_exponent(int n) noexcept { return (n * 1262611) >> 22; }

/// 128-bit mantissa of a power of ten; steps lose less than two units of the last place.
struct wide_mantissa {
  std::uint64_t high, low;

  constexpr wide_mantissa shifted_right(unsigned bits) const noexcept {
    return {high >> bits, (low >> bits) | (high << (64 - bits))};
  }

  constexpr wide_mantissa plus(wide_mantissa other) const noexcept {
    const std::uint64_t sum = low + other.low;
    return {high + other.high + (sum < low ? 1 : 0), sum};
  }

  constexpr wide_mantissa normalised() const noexcept {
    if (high >> 63 != 0) return *this;
    return {(high << 1) | (low >> 63), low << 1};
  }

  /// 5/8 = 1/2 + 1/8: ten times as much, but for the binary exponent.
  constexpr wide_mantissa times_ten() const noexcept { return shifted_right(1).plus(shifted_right(3)).normalised(); }

  /// 4/5 by long division in 32-bit digits: a tenth, but for the binary exponent.
  constexpr wide_mantissa over_ten() const noexcept {
    const std::uint64_t digits[] = {high >> 32, high & 0xffffffffU, low >> 32, low & 0xffffffffU};
    std::uint64_t quotient[4] = {};
    std::uint64_t remainder = 0;
    for (int k = 0; k < 4; ++k) {
      const std::uint64_t dividend = (remainder << 32) + 4 * digits[k];
      quotient[k] = dividend / 5;
      remainder = dividend % 5;
    }
    for (int k = 3; k > 0; --k) {
      quotient[k - 1] += quotient[k] >> 32;
      quotient[k] &= 0xffffffffU;
    }
    return wide_mantissa{(quotient[0] << 32) + quotient[1], (quotient[2] << 32) + quotient[3]}.normalised();
  }
};

inline constexpr int smallest_power = -342;
inline constexpr int largest_power = 345;

struct power_table {
  std::uint64_t mantissas[largest_power - smallest_power + 1] = {};

  constexpr power_table() noexcept {
    constexpr wide_mantissa one{std::uint64_t{1} << 63, 0};
    wide_mantissa m = one;
    for (int n = 0; n <= largest_power; ++n, m = m.times_ten()) mantissas[n - smallest_power] = m.high;
    m = one;
    for (int n = -1; n >= smallest_power; --n) {
      m = m.over_ten();
      mantissas[n - smallest_power] = m.high;
    }
  }

  /// 10^n = result * 2^(binary_exponent(n) - 63), truncated.
  constexpr std::uint64_t operator[](int n) const noexcept { return mantissas[n - smallest_power]; }
};

#ifdef QEL_GRIDWORK_TABLES_AT_START
// What comes over a network makes the table when it starts: compression does not shorten it.
inline power_table make_power_table() noexcept { return {}; }
inline const power_table powers_of_ten = make_power_table();
#else
inline constexpr power_table powers_of_ten;
#endif

/// The upper half of a product.
inline std::uint64_t product_high(std::uint64_t a, std::uint64_t b) noexcept {
#if defined(__SIZEOF_INT128__)
  __extension__ using wide = unsigned __int128;
  return static_cast<std::uint64_t>((static_cast<wide>(a) * b) >> 64);
#else
  const std::uint64_t a1 = a >> 32, a0 = a & 0xffffffffU, b1 = b >> 32, b0 = b & 0xffffffffU;
  const std::uint64_t middle = a1 * b0 + ((a0 * b0) >> 32);
  const std::uint64_t other = a0 * b1 + (middle & 0xffffffffU);
  return a1 * b1 + (middle >> 32) + (other >> 32);
#endif
}

}  // namespace qel::gridwork::detail::io

#endif
