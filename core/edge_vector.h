// The vector along an edge, its length at any scale, and its square in a metric.
#ifndef QEL_GRIDWORK_CORE_EDGE_VECTOR_H
#define QEL_GRIDWORK_CORE_EDGE_VECTOR_H

#include <cmath>

#include "core/limits.h"
#include "core/scaling.h"
#include "qel/dense.h"
#include "qel/fixed.h"

namespace qel::gridwork::detail {

template <unsigned Dim>
struct edge_vector {
  double e[Dim];

  edge_vector(const dense2D<double>& coords, unsigned from, unsigned to) noexcept {
    const double* a = coords.column(from);
    const double* b = coords.column(to);
    for (unsigned k = 0; k < Dim; ++k) e[k] = b[k] - a[k];
  }

  /// The same in both directions, to the last bit.
  double length() const noexcept {
    const double square = squared(e);
    return square > limits::least_square && square < limits::most_square ? std::sqrt(square) : scaled_length();
  }

 private:
  static double squared(const double* x) noexcept {
    double sum = 0;
    for (unsigned k = 0; k < Dim; ++k) sum += x[k] * x[k];
    return sum;
  }

  double scaled_length() const noexcept {
    edge_vector unit = *this;
    const int exponent = scale_exponent(largest_magnitude(e, e + Dim));
    scale(unit.e, unit.e + Dim, exponent);
    double result = std::sqrt(squared(unit.e));
    scale(&result, &result + 1, -exponent);
    return result;
  }
};

/// e' M e.
/// @{
inline double squared_length(const symmetric_fixed<double, 2>& M, const double* e) noexcept {
  return M[0] * e[0] * e[0] + 2 * M[1] * e[0] * e[1] + M[2] * e[1] * e[1];
}

inline double squared_length(const symmetric_fixed<double, 3>& M, const double* e) noexcept {
  return M[0] * e[0] * e[0] + 2 * M[1] * e[0] * e[1] + M[2] * e[1] * e[1] + 2 * M[3] * e[0] * e[2] +
         2 * M[4] * e[1] * e[2] + M[5] * e[2] * e[2];
}
/// @}

}  // namespace qel::gridwork::detail

#endif
