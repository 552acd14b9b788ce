// Eigenvalues and eigenvectors of tensors of both dimensions.
#ifndef QEL_GRIDWORK_METRICS_SPECTRUM_H
#define QEL_GRIDWORK_METRICS_SPECTRUM_H

#include "core/symmetric3.h"
#include "metrics/tensors.h"

namespace qel::gridwork::detail {

/// Ascending eigenvalues; vectors in columns.
template <unsigned N>
struct spectrum {
  vector_fixed<double, N> values;
  matrix_fixed<double, N, N> vectors;
};

/// Eigenvalues in closed form. False when one of them is not finite.
[[nodiscard]] bool eigenvalues(const tensor<2>& M, vector_fixed<double, 2>& w) noexcept;

/// The eigenvectors have unit length, or, without normalisation, one that differs from 0. False, with the identity as
/// vectors, when an eigenvalue is not finite.
[[nodiscard]] bool decompose(const tensor<2>& M, spectrum<2>& result, bool normalised = true) noexcept;

[[nodiscard]] inline bool decompose(const tensor<3>& M, spectrum<3>& result) noexcept {
  return eigen_pairs3(M.data(), result.values.data(), result.vectors.data());
}

/// Solves M2 v = w M1 v; vectors of unit length. False when M1 is not positive definite or a value is not finite.
/// @{
[[nodiscard]] bool decompose(const tensor<2>& M1, const tensor<2>& M2, spectrum<2>& result) noexcept;
[[nodiscard]] bool decompose(const tensor<3>& M1, const tensor<3>& M2, spectrum<3>& result) noexcept;
/// @}

/// Vectors of unit length along which both tensors are diagonal, in columns, in any order. False when a tensor is found
/// not to be positive definite, or has an entry that is not finite.
/// @{
[[nodiscard]] bool find_common_axes(const tensor<2>& M1, const tensor<2>& M2,
                                    matrix_fixed<double, 2, 2>& axes) noexcept;
[[nodiscard]] bool find_common_axes(const tensor<3>& M1, const tensor<3>& M2,
                                    matrix_fixed<double, 3, 3>& axes) noexcept;
/// @}

}  // namespace qel::gridwork::detail

#endif
