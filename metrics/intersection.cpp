// The metric of the smaller and that of the larger sizes of two tensors.
#include <algorithm>

#include "metrics/spectrum.h"
#include "qel/gridwork/metrics.h"

namespace qel::gridwork {

using namespace detail;

namespace {

matrix_fixed<double, 2, 2> inverse(const matrix_fixed<double, 2, 2>& P) noexcept {
  const double det = P(0, 0) * P(1, 1) - P(0, 1) * P(1, 0);
  return {P(1, 1) / det, -P(1, 0) / det, -P(0, 1) / det, P(0, 0) / det};
}

matrix_fixed<double, 3, 3> inverse(const matrix_fixed<double, 3, 3>& P) noexcept {
  const auto cofactor = [&P](unsigned i, unsigned j) {
    const unsigned i1 = (i + 1) % 3;
    const unsigned i2 = (i + 2) % 3;
    const unsigned j1 = (j + 1) % 3;
    const unsigned j2 = (j + 2) % 3;
    return P(i1, j1) * P(i2, j2) - P(i1, j2) * P(i2, j1);
  };
  const double det = P(0, 0) * cofactor(0, 0) + P(0, 1) * cofactor(0, 1) + P(0, 2) * cofactor(0, 2);
  matrix_fixed<double, 3, 3> Q;
  for (unsigned i = 0; i < 3; ++i) {
    for (unsigned j = 0; j < 3; ++j) Q(i, j) = cofactor(j, i) / det;
  }
  return Q;
}

/// v' M v for column j of V.
template <unsigned N>
double squared_length(const tensor<N>& M, const matrix_fixed<double, N, N>& V, unsigned j) noexcept {
  double sum = 0;
  for (unsigned k = 0; k < N; ++k) {
    double image = 0;
    for (unsigned i = 0; i < N; ++i) image += M(k, i) * V(i, j);
    sum += V(k, j) * image;
  }
  return sum;
}

/// Makes M the tensor that is diagonal in the common axes of both and has there the entries chosen of each two.
template <unsigned N, class Choose>
bool combine_in_common_axes(const tensor<N>& M1, const tensor<N>& M2, tensor<N>& M, Choose choose) noexcept {
  matrix_fixed<double, N, N> axes;
  if (!find_common_axes(M1, M2, axes)) return false;
  vector_fixed<double, N> chosen;
  for (unsigned i = 0; i < N; ++i) {
    const double d1 = squared_length(M1, axes, i);
    const double d2 = squared_length(M2, axes, i);
    if (!is_positive_number(d1) || !is_positive_number(d2)) return false;
    chosen[i] = choose(d1, d2);
  }
  const matrix_fixed<double, N, N> Q = inverse(axes);
  M = weighted_squares<N>(chosen, [&](unsigned i, unsigned k) { return Q(i, k); });
  return is_valid_metric(M);
}

/// The result may be one of the inputs, so it is written last.
template <unsigned N, class Choose>
bool combine(const tensor<N>& M1, const tensor<N>& M2, tensor<N>& M, Choose choose) noexcept {
  tensor<N> combined;
  const bool combines = combine_in_common_axes(M1, M2, combined, choose);
  M = combines ? combined : M1;
  return combines;
}

constexpr auto larger = [](double x, double y) { return std::max(x, y); };
constexpr auto smaller = [](double x, double y) { return std::min(x, y); };

}  // namespace

bool minimum_metric(const symmetric_fixed<double, 2>& M1, const symmetric_fixed<double, 2>& M2,
                    symmetric_fixed<double, 2>& M) {
  return combine(M1, M2, M, larger);
}

bool minimum_metric(const symmetric_fixed<double, 3>& M1, const symmetric_fixed<double, 3>& M2,
                    symmetric_fixed<double, 3>& M) {
  return combine(M1, M2, M, larger);
}

bool maximum_metric(const symmetric_fixed<double, 2>& M1, const symmetric_fixed<double, 2>& M2,
                    symmetric_fixed<double, 2>& M) {
  return combine(M1, M2, M, smaller);
}

bool maximum_metric(const symmetric_fixed<double, 3>& M1, const symmetric_fixed<double, 3>& M2,
                    symmetric_fixed<double, 3>& M) {
  return combine(M1, M2, M, smaller);
}

}  // namespace qel::gridwork
