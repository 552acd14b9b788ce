// Tensors of a wanted condition.
#ifndef QEL_FUZZ_TENSORS_H
#define QEL_FUZZ_TENSORS_H

#include <cmath>

#include "fuzz/input.h"

namespace fuzz {

using numbers = std::vector<double>;
using random_meshes::generator;
template <unsigned N>
using tensor = qel::symmetric_fixed<double, N>;

/// A full matrix by columns of these eigenvalues: the diagonal one, reflected.
inline numbers with_eigenvalues(generator& random, const numbers& eigenvalues) {
  const std::size_t n = eigenvalues.size();
  numbers v(n), m(n * n);
  double length = 0;
  for (double& x : v) x = random_meshes::real(random) - 0.5, length += x * x;
  const auto h = [&](std::size_t i, std::size_t j) { return (i == j ? 1 : 0) - 2 * v[i] * v[j] / length; };
  for (std::size_t e = 0; e < n * n * n; ++e) {
    const std::size_t i = e / n % n, j = e / n / n, k = e % n;
    m[j * n + i] += h(std::min(i, j), k) * eigenvalues[k] * h(k, std::max(i, j));
  }
  return m;
}

/// A tensor of eigenvalues from 1 to 10^digits, along random axes.
template <unsigned N>
tensor<N> positive(generator& random, double digits) {
  numbers w(N, std::pow(10, digits));
  for (unsigned k = 1; k < N; ++k) w[k] = std::pow(10, digits * random_meshes::real(random));
  const numbers m = with_eigenvalues(random, w);
  tensor<N> M;
  for (unsigned k = 0; k < N * N; ++k) M(k % N, k / N) = m[k];
  return M;
}

}  // namespace fuzz

#endif
