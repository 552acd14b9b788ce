// Eigen-pairs to the last digits, also of nearly isotropic tensors of the plane.
#ifndef QEL_GRIDWORK_METRICS_ACCURATE_EIGEN_PAIRS_H
#define QEL_GRIDWORK_METRICS_ACCURATE_EIGEN_PAIRS_H

#include <cmath>

#include "metrics/spectrum.h"

namespace qel::gridwork::detail {

/// One Jacobi rotation. The values are in no order; false when one is not finite.
[[nodiscard]] inline bool accurate_eigen_pairs(const tensor<2>& M, spectrum<2>& result) noexcept {
  const double theta = (M[2] - M[0]) / 2 / M[1];
  const double t = M[1] == 0 ? 0 : std::copysign(1 / (std::abs(theta) + std::sqrt(1 + theta * theta)), theta);
  const double c = 1 / std::sqrt(1 + t * t);
  const double s = t * c;
  result.values = {M[0] - t * M[1], M[2] + t * M[1]};
  result.vectors = {c, -s, s, c};
  return std::isfinite(result.values[0]) && std::isfinite(result.values[1]);
}

[[nodiscard]] inline bool accurate_eigen_pairs(const tensor<3>& M, spectrum<3>& result) noexcept {
  return decompose(M, result);
}

}  // namespace qel::gridwork::detail

#endif
