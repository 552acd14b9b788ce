// Tensors as columns of a matrix, and their dimension as a compile-time constant.
#ifndef QEL_GRIDWORK_METRICS_TENSORS_H
#define QEL_GRIDWORK_METRICS_TENSORS_H

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "qel/dense.h"
#include "qel/fixed.h"

namespace qel::gridwork::detail {

/// What sizes and squared lengths have to be.
inline bool is_positive_number(double x) noexcept { return x > 0 && x < std::numeric_limits<double>::max(); }

template <unsigned N>
using tensor = symmetric_fixed<double, N>;

/// Rows of a matrix of tensors.
template <unsigned N>
constexpr unsigned tensor_rows = tensor<N>::size();

template <unsigned N>
using dimension = std::integral_constant<unsigned, N>;

/// Calls action(dimension<N>()) for the dimension of tensors of that row count; returns `otherwise` when there is none.
template <class Result, class Action>
Result visit_dimension(std::uint64_t rows, Result otherwise, Action action) {
  if (rows == tensor_rows<2>) return action(dimension<2>());
  if (rows == tensor_rows<3>) return action(dimension<3>());
  return otherwise;
}

template <unsigned N>
tensor<N> tensor_at(const dense2D<double>& tensors, std::uint64_t j) noexcept {
  tensor<N> M;
  std::copy_n(tensors.column(j), tensor_rows<N>, M.data());
  return M;
}

template <unsigned N>
void set_tensor(dense2D<double>& tensors, std::uint64_t j, const tensor<N>& M) noexcept {
  std::copy_n(M.data(), tensor_rows<N>, tensors.column(j));
}

/// The sum of weights[i] * v_i v_i', where component k of v_i is component(i, k).
template <unsigned N, class Component>
tensor<N> weighted_squares(const vector_fixed<double, N>& weights, Component component) noexcept {
  tensor<N> M;
  for (unsigned k = 0; k < N; ++k) {
    for (unsigned j = 0; j <= k; ++j) {
      double sum = 0;
      for (unsigned i = 0; i < N; ++i) sum += weights[i] * component(i, j) * component(i, k);
      M(j, k) = sum;
    }
  }
  return M;
}

}  // namespace qel::gridwork::detail

#endif
