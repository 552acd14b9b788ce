// The length of an edge in a metric, at any scale.
#ifndef QEL_GRIDWORK_METRICS_TENSOR_LENGTH_H
#define QEL_GRIDWORK_METRICS_TENSOR_LENGTH_H

#include <cmath>

#include "core/edge_vector.h"
#include "core/limits.h"
#include "metrics/tensors.h"

namespace qel::gridwork::detail {

/// sqrt(e' M e) where a product leaves the range of numbers, or loses digits at its lower end.
template <unsigned N>
double scaled_length_in(tensor<N> M, edge_vector<N> along) noexcept {
  const double longest = largest_magnitude(along.e, along.e + N);
  const double densest = largest_magnitude(M.begin(), M.end());
  if (longest == 0 || densest == 0) return 0;
  const int vector_exponent = -std::ilogb(longest);
  const int root_exponent = -(std::ilogb(densest) / 2);
  scale(along.e, along.e + N, vector_exponent);
  scale(M.begin(), M.end(), 2 * root_exponent);
  const double square = squared_length(M, along.e);
  return square > 0 ? std::ldexp(std::sqrt(square), -vector_exponent - root_exponent) : 0;
}

/// sqrt(e' M e); 0 where rounding makes the square negative.
template <unsigned N>
double length_in(const tensor<N>& M, const edge_vector<N>& along) noexcept {
  constexpr double safe = limits::safe_square;
  const double square = squared_length(M, along.e);
  return square > 1 / safe && square < safe ? std::sqrt(square) : scaled_length_in(M, along);
}

}  // namespace qel::gridwork::detail

#endif
