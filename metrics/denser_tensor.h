// A tensor that another one bounds, and how dense a tensor is.
#ifndef QEL_GRIDWORK_METRICS_DENSER_TENSOR_H
#define QEL_GRIDWORK_METRICS_DENSER_TENSOR_H

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/scaling.h"
#include "metrics/accurate_eigen_pairs.h"
#include "metrics/cholesky_factor.h"
#include "qel/gridwork/metrics.h"

namespace qel::gridwork::detail {

/// A change has to multiply the determinant by more than this, and more than rounding does, so that the number of changes
/// is bounded.
constexpr double least_gain = 1 + 1e-6;

/// log2(det M) in units of 2^-20; lowest when M is not positive definite by its factor. Where it decides an order, digits
/// that depend on rounding must not.
template <unsigned N>
double density(const tensor<N>& M) noexcept {
  cholesky_factor<N> L;
  return L.build(M) ? std::floor(L.log2_determinant() * 0x1p20 + 0.5) : -std::numeric_limits<double>::infinity();
}

/// The eigen-pairs of S in the frame of L, of values times 2^(2 exponent): 0 but for tensors of which one is so much denser
/// that a value leaves the range of numbers.
template <unsigned N>
struct relative_spectrum {
  spectrum<N> pairs;
  int exponent = 0;
  bool found;

  relative_spectrum(const cholesky_factor<N>& L, tensor<N> S) noexcept
      : found(accurate_eigen_pairs(L.reduce(S), pairs)) {
    if (found) return;
    exponent = 512;
    scale(S.begin(), S.end(), -2 * exponent);
    found = accurate_eigen_pairs(L.reduce(S), pairs);
  }

  /// What an intersection multiplies the determinant by.
  double gain() const noexcept {
    double product = 1;
    for (const double w : pairs.values) product *= std::max(1.0, std::ldexp(w, 2 * exponent));
    return product;
  }
};

/// B = L L' and the parts of S that are denser: B + sum over w > 1 of (w - 1) (L v)(L v)'.
template <unsigned N>
tensor<N> with_denser_parts(tensor<N> B, const cholesky_factor<N>& L, const relative_spectrum<N>& relative) noexcept {
  const double one = std::ldexp(1, -2 * relative.exponent);
  for (unsigned i = 0; i < N; ++i) {
    const double excess = relative.pairs.values[i] - one;
    if (!(excess > 0)) continue;
    double image[N];
    for (unsigned k = 0; k < N; ++k) image[k] = L.multiply(k, &relative.pairs.vectors(0, i));
    scale(image, image + N, relative.exponent);
    for (unsigned k = 0; k < N; ++k) {
      for (unsigned j = 0; j <= k; ++j) B(j, k) += excess * image[j] * image[k];
    }
  }
  return B;
}

/// Intersects B with S where S is denser, and renews the density of B. False, with nothing changed, when that gains too
/// little, or, of tensors at the limits of the numbers, nothing that can be told from rounding.
template <unsigned N>
bool intersect(tensor<N>& B, const tensor<N>& S, double& density_of_B) noexcept {
  cholesky_factor<N> L;
  if (!L.build(B)) return false;
  const relative_spectrum<N> relative(L, S);
  if (!relative.found || !(relative.gain() > least_gain + L.rounding(B))) return false;
  const tensor<N> met = with_denser_parts(B, L, relative);
  const double renewed = density(met);
  if (!(renewed > density_of_B) || !is_valid_metric(met)) return false;
  B = met;
  density_of_B = renewed;
  return true;
}

}  // namespace qel::gridwork::detail

#endif
