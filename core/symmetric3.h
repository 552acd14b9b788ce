// Eigenvalues and eigenvectors of a symmetric 3 x 3 matrix.
#ifndef QEL_GRIDWORK_CORE_SYMMETRIC3_H
#define QEL_GRIDWORK_CORE_SYMMETRIC3_H

namespace qel::gridwork::detail {

/// Eigenvalues in ascending order of the matrix (a11, a12, a22, a13, a23, a33), to an accuracy of its norm; an axis
/// without coupling keeps its entry exactly. False, with NaNs in w, when an entry is not finite.
[[nodiscard]] bool eigenvalues3(const double* packed, double* w) noexcept;

/// The same eigenvalues, and orthonormal vectors in the columns of v (9 entries, column by column): the identity on
/// failure.
[[nodiscard]] bool eigen_pairs3(const double* packed, double* w, double* v) noexcept;

}  // namespace qel::gridwork::detail

#endif
