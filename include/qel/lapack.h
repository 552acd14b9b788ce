/// @file
/// The symmetric eigenvalue solver, with the contract of LAPACK's routine of the same name.
#ifndef QEL_LAPACK_H
#define QEL_LAPACK_H

#include "qel/export.h"

namespace qel {
namespace lapack {

/// Eigenvalues and, if asked for, eigenvectors of a real symmetric matrix in packed storage.
///
/// Every eigenvalue is within a few units in the last place of the matrix's norm, and the eigenvectors are orthonormal
/// to the same accuracy; the signs of the vectors are not determined. Entries of any magnitude are allowed.
///
/// @param jobz  'N': eigenvalues only; 'V': eigenvectors too. Either letter case, also of `uplo`
/// @param uplo  'U': `ap` holds the upper triangle, column by column; 'L': the lower one
/// @param n     order of the matrix
/// @param ap    n (n + 1) / 2 entries; may be overwritten
/// @param w     overwritten: n eigenvalues, ascending
/// @param z     overwritten for 'V': n x n with leading dimension `ldz`, column j belongs to w[j]; not looked at for
///              'N'
/// @param ldz   at least 1; at least n for 'V'
/// @param work  scratch of 3 n entries (not looked at for n = 3)
/// @param info  overwritten: 0; -k when the k-th argument is invalid (-1, -2, -3, -7; nothing else is touched); k > 0
///              when k off-diagonal entries of the tridiagonal form did not converge. A matrix of order 2 or more that
///              holds a NaN or an infinity gives n - 1, with NaN eigenvalues and the identity as vectors.
/// @return info
///
/// Cost: n^3. The case n = 3 is computed apart: the axis of the best separated eigenvalue in closed form, then Jacobi
/// rotations in its frame (C. G. J. Jacobi, Crelle 30, 1846; D. Eberly, A robust eigensolver for 3 x 3 symmetric
/// matrices, 2014). Other orders: reduction to tridiagonal form by reflections, then implicit QL steps (A. Dubrulle, R.
/// S. Martin, J. H. Wilkinson, Numerische Mathematik 12, 1968).
QEL_GRIDWORK_API int dspev(char jobz, char uplo, long n, double* ap, double* w, double* z, long ldz, double* work,
                           long& info);

}  // namespace lapack
}  // namespace qel

#endif
