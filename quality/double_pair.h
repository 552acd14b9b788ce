// Two numbers that take the same steps side by side, and the steps, for one number and for two. Each of the two gets
// the bits that it would get alone. What that gains: docs/techniques.md.
#ifndef QEL_GRIDWORK_QUALITY_DOUBLE_PAIR_H
#define QEL_GRIDWORK_QUALITY_DOUBLE_PAIR_H

#include <algorithm>
#include <cmath>

#if defined(__SSE2__) || defined(_M_X64)
#define QEL_GRIDWORK_SSE2
#include <emmintrin.h>
#endif

namespace qel::gridwork::detail {

#if defined(QEL_GRIDWORK_SSE2)

constexpr bool has_double_pairs = true;

/// Two truth values, as masks.
struct bool_pair {
  __m128d bits;

  friend bool_pair operator&(bool_pair x, bool_pair y) noexcept { return {_mm_and_pd(x.bits, y.bits)}; }
  friend bool_pair operator|(bool_pair x, bool_pair y) noexcept { return {_mm_or_pd(x.bits, y.bits)}; }

  bool both() const noexcept { return _mm_movemask_pd(bits) == 3; }
};

class double_pair {
 public:
  double_pair() noexcept = default;
  double_pair(double both) noexcept : v_(_mm_set1_pd(both)) {}
  double_pair(double first, double second) noexcept : v_(_mm_setr_pd(first, second)) {}

  double first() const noexcept { return _mm_cvtsd_f64(v_); }
  double second() const noexcept { return _mm_cvtsd_f64(_mm_unpackhi_pd(v_, v_)); }

  friend double_pair operator+(double_pair x, double_pair y) noexcept { return double_pair(_mm_add_pd(x.v_, y.v_)); }
  friend double_pair operator-(double_pair x, double_pair y) noexcept { return double_pair(_mm_sub_pd(x.v_, y.v_)); }
  friend double_pair operator*(double_pair x, double_pair y) noexcept { return double_pair(_mm_mul_pd(x.v_, y.v_)); }
  friend bool_pair operator<(double_pair x, double_pair y) noexcept { return {_mm_cmplt_pd(x.v_, y.v_)}; }
  friend bool_pair operator<=(double_pair x, double_pair y) noexcept { return {_mm_cmple_pd(x.v_, y.v_)}; }

  // The instructions return their second operand where neither is the larger or smaller one.
  friend double_pair larger(double_pair x, double_pair y) noexcept { return double_pair(_mm_max_pd(y.v_, x.v_)); }
  friend double_pair smaller(double_pair x, double_pair y) noexcept { return double_pair(_mm_min_pd(y.v_, x.v_)); }
  friend double_pair root(double_pair x) noexcept { return double_pair(_mm_sqrt_pd(x.v_)); }
  friend double_pair magnitude(double_pair x) noexcept { return double_pair(_mm_andnot_pd(_mm_set1_pd(-0.0), x.v_)); }

  friend double_pair where(bool_pair condition, double_pair x, double_pair y) noexcept {
    return double_pair(_mm_or_pd(_mm_and_pd(condition.bits, x.v_), _mm_andnot_pd(condition.bits, y.v_)));
  }

  /// Divides by 1 where the quotient is not wanted, so that nothing is divided by 0.
  friend double_pair quotient_or_zero(double_pair x, double_pair y) noexcept {
    const bool_pair positive = 0.0 < y;
    const __m128d quotient = _mm_div_pd(x.v_, where(positive, y, 1.0).v_);
    return double_pair(_mm_and_pd(positive.bits, quotient));
  }

 private:
  explicit double_pair(__m128d v) noexcept : v_(v) {}

  __m128d v_;
};

#else

constexpr bool has_double_pairs = false;
class double_pair;

#endif

/// What a comparison of two Ts tells.
template <class T>
using truth_of = decltype(T() < T());

/// As std::max and std::min.
/// @{
inline double larger(double x, double y) noexcept { return std::max(x, y); }
inline double smaller(double x, double y) noexcept { return std::min(x, y); }
/// @}

inline double root(double x) noexcept { return std::sqrt(x); }

inline double where(bool condition, double x, double y) noexcept { return condition ? x : y; }

/// x / y where y > 0.
inline double quotient_or_zero(double x, double y) noexcept { return y > 0 ? x / y : 0.0; }

/// Into [-1, 1].
template <class T>
T clamped(T q) noexcept {
  return smaller(larger(q, T(-1.0)), T(1.0));
}

}  // namespace qel::gridwork::detail

#endif
