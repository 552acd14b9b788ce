// What the metric of a node allows at the other ends of its edges.
#ifndef QEL_GRIDWORK_METRICS_GROWTH_LAWS_H
#define QEL_GRIDWORK_METRICS_GROWTH_LAWS_H

#include <cmath>
#include <limits>

#include "metrics/accurate_eigen_pairs.h"
#include "metrics/tensor_length.h"

namespace qel::gridwork::detail {

/// All sizes grow by the same factor, 1 + rate l, l the length of the edge in the metric: the shape stays.
template <unsigned N>
class proportional_growth {
 public:
  proportional_growth(const tensor<N>& M, double rate) noexcept : M_(M), rate_(rate) {}

  tensor<N> at(const edge_vector<N>& along) const noexcept {
    const double growth = rate_ > 0 ? rate_ * length_in(M_, along) : 0;  // the length may be infinite
    const double shrink = 1 / (1 + growth);
    tensor<N> S = M_;
    for (double& entry : S) entry = entry * shrink * shrink;  // the square of the factor may leave the range
    return S;
  }

 private:
  tensor<N> M_;
  double rate_;
};

/// Each principal size grows by rate |e|: the axes stay, the shape fades to a sphere.
template <unsigned N>
class additive_growth {
 public:
  additive_growth(const tensor<N>& M, double rate) noexcept : rate_(rate) {
    (void)accurate_eigen_pairs(M, axes_);  // the entries of a valid metric are finite
    for (double& h : axes_.values) h = h > 0 ? 1 / std::sqrt(h) : std::numeric_limits<double>::infinity();
  }

  tensor<N> at(const edge_vector<N>& along) const noexcept {
    const double step = rate_ * along.length();
    tensor<N> S{};
    for (unsigned i = 0; i < N; ++i) {
      const double density = 1 / (axes_.values[i] + step);
      const double* axis = &axes_.vectors(0, i);
      for (unsigned k = 0; k < N; ++k) {
        for (unsigned j = 0; j <= k; ++j) S(j, k) += density * axis[j] * (density * axis[k]);
      }
    }
    return S;
  }

 private:
  double rate_;
  spectrum<N> axes_;  // with sizes in place of eigenvalues
};

}  // namespace qel::gridwork::detail

#endif
