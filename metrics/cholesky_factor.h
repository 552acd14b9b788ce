// The Cholesky factor of a tensor, and the tests and determinants that come from it.
#ifndef QEL_GRIDWORK_METRICS_CHOLESKY_FACTOR_H
#define QEL_GRIDWORK_METRICS_CHOLESKY_FACTOR_H

#include <cmath>

#include "core/elementary.h"
#include "metrics/tensors.h"

namespace qel::gridwork::detail {

/// L with L L' = M. Its entries have the order of the root of those of M, so that no product leaves the range.
template <unsigned N>
class cholesky_factor {
 public:
  /// False when M is found not to be positive definite.
  [[nodiscard]] bool build(const tensor<N>& M) noexcept {
    for (unsigned i = 0; i < N; ++i) {
      for (unsigned j = 0; j < i; ++j) l_[i][j] = remainder(M, i, j) / l_[j][j];
      const double pivot = remainder(M, i, i);
      if (!(pivot > 0)) return false;
      l_[i][i] = std::sqrt(pivot);
    }
    return true;
  }

  /// The same by the leading minors, whose rounding differs; a last pivot of 0 or NaN is not found either.
  [[nodiscard]] bool build_from_minors(const tensor<3>& M) noexcept {
    static_assert(N == 3);
    const double minor = M[0] * M[2] - M[1] * M[1];
    if (M[0] <= 0 || minor <= 0) return false;
    l_[0][0] = std::sqrt(M[0]);
    l_[1][0] = M[1] / l_[0][0];
    l_[1][1] = std::sqrt(minor / M[0]);
    l_[2][0] = M[3] / l_[0][0];
    l_[2][1] = (M[4] - l_[2][0] * l_[1][0]) / l_[1][1];
    const double pivot = M[5] - l_[2][0] * l_[2][0] - l_[2][1] * l_[2][1];
    l_[2][2] = std::sqrt(pivot);
    return !(pivot < 0);
  }

  /// x = L^-T x.
  void solve_transposed(double* x) const noexcept {
    for (unsigned i = N; i-- > 0;) {
      for (unsigned k = i + 1; k < N; ++k) x[i] -= l_[k][i] * x[k];
      x[i] /= l_[i][i];
    }
  }

  /// L^-1 S L^-T.
  tensor<N> reduce(const tensor<N>& S) const noexcept {
    double rows[N][N];  // of (L^-1 S)', then of L^-1 (L^-1 S)'
    for (unsigned j = 0; j < N; ++j) {
      double column[N];
      for (unsigned i = 0; i < N; ++i) column[i] = S(i, j);
      solve(column);
      for (unsigned i = 0; i < N; ++i) rows[i][j] = column[i];
    }
    tensor<N> reduced;
    for (unsigned i = 0; i < N; ++i) {
      solve(rows[i]);
      for (unsigned j = 0; j <= i; ++j) reduced(j, i) = rows[i][j];
    }
    return reduced;
  }

  /// Row i of L x, for a column x of N entries.
  double multiply(unsigned i, const double* x) const noexcept {
    double sum = 0;
    for (unsigned j = 0; j <= i; ++j) sum += l_[i][j] * x[j];
    return sum;
  }

  /// What rounding may do to eigenvalues of reduced tensors near 1: in proportion to the condition that M has when its
  /// diagonal is scaled to ones.
  double rounding(const tensor<N>& M) const noexcept {
    double condition = 0;
    for (unsigned i = 0; i < N; ++i) {
      double column[N] = {};
      column[i] = 1;
      solve(column);
      for (const double x : column) condition += M(i, i) * x * x;
    }
    return 0x1p-50 * condition;
  }

  /// The logarithm of the determinant of M. A power of two in M changes none of its digits behind the point.
  double log2_determinant() const noexcept {
    double mantissa = 1;
    int exponent = 0;
    for (unsigned i = 0; i < N; ++i) {
      int e;
      mantissa *= std::frexp(l_[i][i], &e);
      exponent += e;
    }
    constexpr double log2_e = 1.4426950408889634;
    return 2 * (exponent + logarithm(mantissa) * log2_e);
  }

 private:
  double remainder(const tensor<N>& M, unsigned i, unsigned j) const noexcept {
    double rest = M(i, j);
    for (unsigned k = 0; k < j; ++k) rest -= l_[i][k] * l_[j][k];
    return rest;
  }

  /// x = L^-1 x.
  void solve(double* x) const noexcept {
    for (unsigned i = 0; i < N; ++i) {
      for (unsigned k = 0; k < i; ++k) x[i] -= l_[i][k] * x[k];
      x[i] /= l_[i][i];
    }
  }

  double l_[N][N];
};

/// True when all pivots are greater than 0: a factor without roots.
/// @{
inline bool is_positive_definite(const tensor<2>& M) noexcept { return M[0] > 0 && M[2] - M[1] / M[0] * M[1] > 0; }

inline bool is_positive_definite(const tensor<3>& M) noexcept {
  if (!(M[0] > 0)) return false;
  const double l10 = M[1] / M[0];
  const double l20 = M[3] / M[0];
  const double pivot = M[2] - l10 * M[1];
  const double across = M[4] - l20 * M[1];
  return pivot > 0 && M[5] - l20 * M[3] - across / pivot * across > 0;
}
/// @}

}  // namespace qel::gridwork::detail

#endif
