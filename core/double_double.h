// Unevaluated sums of two doubles, hi + lo with |lo| <= ulp(hi) / 2, which carry about 106 bits: what exact constants and
// correctly rounded steps are made of. Plain operations only, so that the compiler can evaluate them, too.
// T. J. Dekker, A floating-point technique for extending the available precision, Numer. Math. 18 (1971).
#ifndef QEL_GRIDWORK_CORE_DOUBLE_DOUBLE_H
#define QEL_GRIDWORK_CORE_DOUBLE_DOUBLE_H

namespace qel::gridwork::detail {

struct double_double {
  double hi = 0;
  double lo = 0;
};

/// a + b, exactly, for |a| >= |b| or a = 0.
constexpr double_double sum_of_ordered(double a, double b) noexcept {
  const double s = a + b;
  return {s, b - (s - a)};
}

/// a + b, exactly.
constexpr double_double exact_sum(double a, double b) noexcept {
  const double s = a + b;
  const double b_seen = s - a;
  return {s, (a - (s - b_seen)) + (b - b_seen)};
}

/// The upper 26 bits of a, |a| < 2^990.
constexpr double upper_half(double a) noexcept {
  const double shifted = a * 0x1.0000002p27;
  return shifted - (shifted - a);
}

/// a b, exactly where neither overflows nor underflows.
constexpr double_double exact_product(double a, double b) noexcept {
  const double p = a * b;
  const double a_hi = upper_half(a), a_lo = a - a_hi;
  const double b_hi = upper_half(b), b_lo = b - b_hi;
  return {p, ((a_hi * b_hi - p) + a_hi * b_lo + a_lo * b_hi) + a_lo * b_lo};
}

constexpr double_double operator+(const double_double& a, const double_double& b) noexcept {
  const double_double s = exact_sum(a.hi, b.hi);
  return sum_of_ordered(s.hi, s.lo + (a.lo + b.lo));
}

constexpr double_double operator*(const double_double& a, const double_double& b) noexcept {
  const double_double p = exact_product(a.hi, b.hi);
  return sum_of_ordered(p.hi, p.lo + (a.hi * b.lo + a.lo * b.hi));
}

constexpr double_double operator/(const double_double& a, double b) noexcept {
  const double quotient = a.hi / b;
  const double_double p = exact_product(quotient, b);
  return sum_of_ordered(quotient, ((a.hi - p.hi) - p.lo + a.lo) / b);
}

}  // namespace qel::gridwork::detail

#endif
