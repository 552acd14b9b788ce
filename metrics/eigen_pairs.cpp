// Eigenvalues and eigenvectors of one tensor, and of one in the frame of another.
#include "metrics/spectrum.h"
#include "qel/gridwork/metrics.h"

namespace qel::gridwork {

using namespace detail;

namespace {

template <unsigned N, class... Tensors>
bool store_spectrum(vector_fixed<double, N>& w, matrix_fixed<double, N, N>& V, const Tensors&... tensors) noexcept {
  spectrum<N> result{};
  const bool solved = decompose(tensors..., result);
  w = result.values;
  V = result.vectors;
  return solved;
}

}  // namespace

bool eigen_pairs(const symmetric_fixed<double, 2>& M, vector_fixed<double, 2>& w, matrix_fixed<double, 2, 2>& V) {
  return store_spectrum(w, V, M);
}

bool eigen_pairs(const symmetric_fixed<double, 3>& M, vector_fixed<double, 3>& w, matrix_fixed<double, 3, 3>& V) {
  return store_spectrum(w, V, M);
}

bool eigen_pairs(const symmetric_fixed<double, 2>& M1, const symmetric_fixed<double, 2>& M2, vector_fixed<double, 2>& w,
                 matrix_fixed<double, 2, 2>& V) {
  return store_spectrum(w, V, M1, M2);
}

bool eigen_pairs(const symmetric_fixed<double, 3>& M1, const symmetric_fixed<double, 3>& M2, vector_fixed<double, 3>& w,
                 matrix_fixed<double, 3, 3>& V) {
  return store_spectrum(w, V, M1, M2);
}

}  // namespace qel::gridwork
