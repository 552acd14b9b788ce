#include "metrics/spectrum.h"

#include <algorithm>
#include <cmath>

#include "core/scaling.h"
#include "metrics/cholesky_factor.h"

namespace qel::gridwork::detail {
namespace {

/// A tensor whose entries may be multiplied with one another.
template <unsigned N>
struct scaled_tensor {
  tensor<N> M;
  int exponent;

  explicit scaled_tensor(const tensor<N>& original) noexcept
      : M(original), exponent(scale_exponent(largest_magnitude(M.begin(), M.end()))) {
    scale(M.begin(), M.end(), exponent);
  }

  /// From eigenvalues of M to those of the original; false when one is not finite.
  bool scale_back(vector_fixed<double, N>& w) const noexcept {
    scale(w.begin(), w.end(), -exponent);
    return std::all_of(w.begin(), w.end(), [](double x) { return std::isfinite(x); });
  }
};

/// Of two roots of which one is small in relation to the other, that one comes from the product of both.
vector_fixed<double, 2> closed_form(const tensor<2>& M) noexcept {
  constexpr double cancelled = 1e-12;
  const double a = M[0];
  const double b = M[1];
  const double c = M[2];
  const double d = std::sqrt((a - c) * (a - c) + 4 * (b * b));
  double low = (a + c - d) / 2;
  double high = low + d;
  const double det = a * c - b * b;
  if (!(std::abs(low) >= cancelled * std::abs(high))) {
    low = det / high;
  } else if (!(std::abs(high) >= cancelled * std::abs(low))) {
    high = det / low;
  }
  return {low, high};
}

matrix_fixed<double, 2, 2> eigenvectors(const tensor<2>& M, double low, bool normalised) noexcept {
  constexpr double isotropic = 1e-24;
  const double a = M[0];
  const double b = M[1];
  const double c = M[2];
  const double from_c = low - c;
  const double from_a = low - a;
  const bool first = from_c * from_c > from_a * from_a;
  double x = first ? from_c : b;
  double y = first ? b : from_a;
  const double s = b * b + (first ? from_c * from_c : from_a * from_a);
  if (!(s > isotropic * std::max(a * a, c * c))) {
    x = 1;
    y = 0;
  } else if (normalised) {
    x /= std::sqrt(s);
    y /= std::sqrt(s);
  }
  return {x, y, -y, x};
}

/// Gives each column unit length, where it has one.
template <unsigned N>
void normalise_columns(matrix_fixed<double, N, N>& V) noexcept {
  for (unsigned j = 0; j < N; ++j) {
    double square = 0;
    for (unsigned i = 0; i < N; ++i) square += V(i, j) * V(i, j);
    const double length = std::sqrt(square);
    for (unsigned i = 0; length != 0 && i < N; ++i) V(i, j) /= length;
  }
}

bool decompose_scaled(const tensor<2>& M1, const tensor<2>& M2, spectrum<2>& result) noexcept {
  const double a = M1[0];
  const double b = M1[1];
  const double det = M1[0] * M1[2] - M1[1] * M1[1];
  if (!(a != 0 && det > 0)) return false;
  const double root = std::sqrt(det);
  const double p = M2[0];
  const double q = M2[1];
  const double r = M2[2];
  const tensor<2> A = {p * det, (a * q - b * p) * root, a * a * r - (2 * a * q - b * p) * b};
  if (!decompose(A, result, false)) return false;
  for (unsigned j = 0; j < 2; ++j) {
    result.values[j] /= det * a;
    const double x = result.vectors(0, j);
    const double y = result.vectors(1, j);
    result.vectors(0, j) = root * x - b * y;
    result.vectors(1, j) = a * y;
  }
  normalise_columns(result.vectors);
  return true;
}

bool decompose_scaled(const tensor<3>& M1, const tensor<3>& M2, spectrum<3>& result) noexcept {
  cholesky_factor<3> L;
  if (!L.build_from_minors(M1) || !decompose(L.reduce(M2), result)) return false;
  for (unsigned j = 0; j < 3; ++j) L.solve_transposed(&result.vectors(0, j));
  normalise_columns(result.vectors);
  return true;
}

bool has_positive_minors(const tensor<3>& M) noexcept {
  const double minor = M[0] * M[2] - M[1] * M[1];
  if (!(M[0] > 0 && minor > 0)) return false;
  const double across = M[4] * M[0] - M[3] * M[1];
  return M[5] - M[3] * M[3] / M[0] - across * across / (M[0] * minor) > 0;
}

/// The sum of both, each divided by its trace.
tensor<3> balanced_sum(const tensor<3>& M1, const tensor<3>& M2) noexcept {
  const double weight1 = 1 / (M1[0] + M1[2] + M1[5]);
  const double weight2 = 1 / (M2[0] + M2[2] + M2[5]);
  tensor<3> sum;
  for (unsigned k = 0; k < tensor_rows<3>; ++k) sum[k] = weight1 * M1[k] + weight2 * M2[k];
  return sum;
}

template <unsigned N>
bool decompose_pair(const tensor<N>& M1, const tensor<N>& M2, spectrum<N>& result) noexcept {
  const scaled_tensor<N> S1(M1);
  const scaled_tensor<N> S2(M2);
  const bool solved = decompose_scaled(S1.M, S2.M, result);
  scale(result.values.begin(), result.values.end(), S1.exponent - S2.exponent);
  return solved;
}

}  // namespace

bool eigenvalues(const tensor<2>& M, vector_fixed<double, 2>& w) noexcept {
  const scaled_tensor<2> S(M);
  w = closed_form(S.M);
  return S.scale_back(w);
}

bool decompose(const tensor<2>& M, spectrum<2>& result, bool normalised) noexcept {
  const scaled_tensor<2> S(M);
  result.values = closed_form(S.M);
  const double low = result.values[0];
  const bool finite = S.scale_back(result.values);
  result.vectors = {1, 0, 0, 1};
  if (finite) result.vectors = eigenvectors(S.M, low, normalised);
  return finite;
}

bool decompose(const tensor<2>& M1, const tensor<2>& M2, spectrum<2>& result) noexcept {
  return decompose_pair(M1, M2, result);
}

bool decompose(const tensor<3>& M1, const tensor<3>& M2, spectrum<3>& result) noexcept {
  return decompose_pair(M1, M2, result);
}

bool find_common_axes(const tensor<2>& M1, const tensor<2>& M2, matrix_fixed<double, 2, 2>& axes) noexcept {
  spectrum<2> common;
  const bool found = decompose(M1, M2, common);
  axes = common.vectors;
  return found;
}

/// Both have the axes that one of them has with their sum. Reduced by the sum they have entries up to 1, where one
/// reduced by the other has entries up to its condition, and loses it once more.
bool find_common_axes(const tensor<3>& M1, const tensor<3>& M2, matrix_fixed<double, 3, 3>& axes) noexcept {
  const scaled_tensor<3> S1(M1);
  const scaled_tensor<3> S2(M2);
  if (!has_positive_minors(S1.M) || !has_positive_minors(S2.M)) return false;
  spectrum<3> common;
  if (!decompose_scaled(balanced_sum(S1.M, S2.M), S1.M, common)) return false;
  axes = common.vectors;
  return true;
}

}  // namespace qel::gridwork::detail
