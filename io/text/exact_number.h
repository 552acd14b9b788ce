// Decimal and binary numbers, and the nearest double of either.
#ifndef QEL_GRIDWORK_IO_TEXT_EXACT_NUMBER_H
#define QEL_GRIDWORK_IO_TEXT_EXACT_NUMBER_H

#include <bit>
#include <cstdint>

namespace qel::gridwork::detail::io {

/// mantissa * 10^exponent, from so many digits.
struct decimal {
  std::uint64_t mantissa = 0;
  std::int64_t exponent = 0;
  std::uint64_t digits = 0;
};

/// The most digits that 64 bits hold, whatever they are.
inline constexpr std::uint64_t most_mantissa_digits = 19;

/// mantissa * 2^exponent.
struct binary {
  std::uint64_t mantissa;
  int exponent;
};

/// The exact value of a finite, positive double; the mantissa is below 2^53.
inline binary split(double value) noexcept {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const auto biased = static_cast<int>(bits >> 52);
  const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
  return biased == 0 ? binary{fraction, -1074} : binary{fraction | (std::uint64_t{1} << 52), biased - 1075};
}

/// Whether a value between integer 10^power and (integer + 1) 10^power is nearer to the latter; at a tie, to the even one.
bool rounds_up(std::uint64_t integer, int power, const binary& value) noexcept;

/// The double nearest to a number whose digits, fewer than 2^63, begin at `text`. Digits that a mantissa has no room for
/// are found there.
double nearest_double(const decimal& number, const char* text) noexcept;

/// The double nearest to a number; `is_cut` when it is a little larger than it says, by less than one in the mantissa.
double nearest_double(std::uint64_t mantissa, std::int64_t exponent, bool is_cut) noexcept;

}  // namespace qel::gridwork::detail::io

#endif
