/// @file
/// Metric tensors, the size prescriptions of a mesh: validity, eigen-pairs, bounds, intersection and union, conversions
/// and repair.
///
/// An isotropic metric is a size h > 0, in the units of `coords`. An anisotropic one is a symmetric positive definite
/// tensor M: the size in a unit direction u is 1 / sqrt(u' M u), and a size h in all directions is M = I / h^2.
/// Matrices of tensors have one packed tensor per column, 3 rows in 2-D (a11, a12, a22), 6 rows in 3-D (a11, a12, a22,
/// a13, a23, a33). Frames are 3 x 2 matrices whose columns span a plane in space; a matrix of them has 6 rows, one
/// frame per column, column by column.
///
/// Outputs that are fixed-size objects may be the same object as an input. Costs are linear in the columns, constant
/// for one tensor. The geometry of metrics: P. L. George, H. Borouchaki, Delaunay Triangulation and Meshing, Hermes
/// 1998, chapter 10; simultaneous reduction: F. Alauzet, Size gradation control of anisotropic meshes, Finite Elements
/// in Analysis and Design 46, 2010.
#ifndef QEL_GRIDWORK_METRICS_H
#define QEL_GRIDWORK_METRICS_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/fixed.h"

namespace qel {
namespace gridwork {

/// True when the smallest eigenvalue of the tensor, as computed, is greater than 0; false when an entry is not finite.
/// @{
QEL_GRIDWORK_API bool is_valid_metric(const symmetric_fixed<double, 2>& M);
QEL_GRIDWORK_API bool is_valid_metric(const symmetric_fixed<double, 3>& M);
/// @}

/// Index of the first invalid size; the size of the array when there is none. A size is valid when 0 < h < DBL_MAX.
QEL_GRIDWORK_API unsigned first_invalid_metric(const dense1D<double>& sizes);

/// First column that is no valid tensor; the column count when there is none; 0 for a row count other than 3 and 6.
QEL_GRIDWORK_API unsigned first_invalid_metric(const dense2D<double>& tensors);

/// Position in `ids` of the first entry that names no metric, or an invalid one; the size of `ids` when there is none.
///
/// Tensors of a row count other than 3 and 6 are all invalid.
/// @{
QEL_GRIDWORK_API unsigned first_invalid_metric(const dense1D<unsigned>& ids, const dense1D<double>& sizes);
QEL_GRIDWORK_API unsigned first_invalid_metric(const dense1D<unsigned>& ids, const dense2D<double>& tensors);
/// @}

/// True when first_invalid_metric() of the same arguments finds none.
/// @{
QEL_GRIDWORK_API bool are_valid_metrics(const dense1D<double>& sizes);
QEL_GRIDWORK_API bool are_valid_metrics(const dense2D<double>& tensors);
QEL_GRIDWORK_API bool are_valid_metrics(const dense1D<unsigned>& ids, const dense1D<double>& sizes);
QEL_GRIDWORK_API bool are_valid_metrics(const dense1D<unsigned>& ids, const dense2D<double>& tensors);
/// @}

/// Appends to `ids` the columns that are valid tensors, in order; nothing for a row count other than 3 and 6.
///
/// When `ids` cannot grow, the columns that do not fit are left out.
QEL_GRIDWORK_API void valid_metrics(const dense2D<double>& tensors, dense1D<unsigned>& ids);

/// Eigenvalues w (ascending) and orthonormal eigenvectors of M (column j of V belongs to w[j]).
///
/// 2-D in closed form, 3-D as lapack::dspev().
/// @return false when an eigenvalue is not finite; w and V are then of no use
/// @{
QEL_GRIDWORK_API bool eigen_pairs(const symmetric_fixed<double, 2>& M, vector_fixed<double, 2>& w,
                                  matrix_fixed<double, 2, 2>& V);
QEL_GRIDWORK_API bool eigen_pairs(const symmetric_fixed<double, 3>& M, vector_fixed<double, 3>& w,
                                  matrix_fixed<double, 3, 3>& V);
/// @}

/// Generalized eigenvalues w (ascending) and eigenvectors of unit length, M2 v = w M1 v. M2 need not be definite.
///
/// The vectors are orthogonal in the metric M1 and in M2. In 3-D the problem is reduced by M1 = L L'; errors grow with
/// the condition of M1. In 2-D a negative definite M1 is accepted too: the values then descend.
/// @return false when M1 is found not to be positive definite, or when an eigenvalue is not finite; w and V are then of
///         no use
/// @{
QEL_GRIDWORK_API bool eigen_pairs(const symmetric_fixed<double, 2>& M1, const symmetric_fixed<double, 2>& M2,
                                  vector_fixed<double, 2>& w, matrix_fixed<double, 2, 2>& V);
QEL_GRIDWORK_API bool eigen_pairs(const symmetric_fixed<double, 3>& M1, const symmetric_fixed<double, 3>& M2,
                                  vector_fixed<double, 3>& w, matrix_fixed<double, 3, 3>& V);
/// @}

/// Bounds the sizes of a tensor: its eigenvalues are brought into [1 / hmax^2, 1 / hmin^2], its axes stay.
///
/// @param M     changed in place
/// @param hmin  smallest size; 0 or less: no bound, which lets eigenvalues be as large as DBL_MAX
/// @param hmax  largest size; 0 or less, or DBL_MAX: no bound, which leaves no eigenvalue below 0. Where hmin > hmax > 0,
///              all eigenvalues become 1 / hmax^2
/// @return 1 when M was changed, 0 when not (also, with M as it is, when hmin is not greater than 0 and hmax is
///         DBL_MAX, whatever M holds); -2, -3 when hmin, hmax is not finite
///
/// A tensor that has no finite eigenvalues becomes the isotropic one of the largest eigenvalue allowed: that of hmin.
/// A changed tensor is put together again with rounding errors: its sizes may be out of bounds by these, and a second
/// call then changes its last digits and returns 1 once more. Bounds below 1e-154 have no finite eigenvalue, and those
/// above 1e154 have the eigenvalue 0.
/// @{
QEL_GRIDWORK_API int bound_metric(symmetric_fixed<double, 2>& M, double hmin, double hmax);
QEL_GRIDWORK_API int bound_metric(symmetric_fixed<double, 3>& M, double hmin, double hmax);
/// @}

/// Bounds sizes: one below hmin, or NaN, becomes hmin; any other one above hmax becomes hmax.
///
/// Both bounds are taken as they stand, not as bound_metric() takes them. With hmin = 0, negative sizes and NaNs become
/// 0; with hmax = 0, sizes greater than 0 become 0 as well; with hmax = DBL_MAX, infinite sizes become DBL_MAX. Where
/// hmin > hmax, sizes below hmin become hmin and all others hmax.
///
/// @param sizes  changed in place
/// @param hmin   smallest size
/// @param hmax   largest size
/// @return the number of sizes changed, 0 without a bound (hmin not greater than 0, hmax = DBL_MAX: not even NaNs are
///         replaced) and without sizes; -2, -3 when hmin, hmax is not finite
QEL_GRIDWORK_API int bound_metrics(dense1D<double>& sizes, double hmin, double hmax);

/// As above, and overwrites `ids` with the entries that were changed, in order; it is empty on a negative result.
/// @return as above; -199, with `sizes` unchanged, when memory for `ids` ran out
QEL_GRIDWORK_API int bound_metrics(dense1D<double>& sizes, double hmin, double hmax, dense1D<unsigned>& ids);

/// Bounds every column as bound_metric() does, with the bounds as they are understood there.
/// @return the number of columns changed, 0 without a bound (hmin not greater than 0, hmax = DBL_MAX) and without
///         columns; -1 when `tensors` has neither 3 nor 6 rows; -2, -3 when hmin, hmax is not finite; -199, with
///         `tensors` unchanged, when memory for `ids` ran out
/// @{
QEL_GRIDWORK_API int bound_metrics(dense2D<double>& tensors, double hmin, double hmax);
QEL_GRIDWORK_API int bound_metrics(dense2D<double>& tensors, double hmin, double hmax, dense1D<unsigned>& ids);
/// @}

/// Intersection of two metrics: in every direction the smaller of the two sizes, or less.
///
/// In the basis of the generalized eigenvectors both tensors are diagonal, and M takes the larger entries. The relative
/// error of its sizes is of the order of 1e-16 times the condition of the tensors, whatever their order: 1e-8 where
/// sizes differ by 1e4, 1e-6 where they differ by 1e5.
/// @return false, with M = M1, when one of the tensors is found not to be positive definite, or the result would not be
/// @{
QEL_GRIDWORK_API bool minimum_metric(const symmetric_fixed<double, 2>& M1, const symmetric_fixed<double, 2>& M2,
                                     symmetric_fixed<double, 2>& M);
QEL_GRIDWORK_API bool minimum_metric(const symmetric_fixed<double, 3>& M1, const symmetric_fixed<double, 3>& M2,
                                     symmetric_fixed<double, 3>& M);
/// @}

/// Union of two metrics: in every direction the larger of the two sizes, or more. As minimum_metric() otherwise.
/// @{
QEL_GRIDWORK_API bool maximum_metric(const symmetric_fixed<double, 2>& M1, const symmetric_fixed<double, 2>& M2,
                                     symmetric_fixed<double, 2>& M);
QEL_GRIDWORK_API bool maximum_metric(const symmetric_fixed<double, 3>& M1, const symmetric_fixed<double, 3>& M2,
                                     symmetric_fixed<double, 3>& M);
/// @}

/// M = I / h^2, the metric of the size h; 0 unless h > 0. Sizes above 1e154, infinite ones too, give 0 as well, and
/// those below 1e-154 infinite entries: neither is a valid metric.
/// @{
QEL_GRIDWORK_API void metric_iso_to_aniso(double h, symmetric_fixed<double, 2>& M);
QEL_GRIDWORK_API void metric_iso_to_aniso(double h, symmetric_fixed<double, 3>& M);
/// @}

/// M = F' F / h^2, the metric of the size h in the plane of the frame F; 0 unless h > 0.
QEL_GRIDWORK_API void metric_iso_to_aniso2d(double h, const matrix_fixed<double, 3, 2>& F,
                                            symmetric_fixed<double, 2>& M);

/// M2 = F' M3 F, the metric M3 in the plane of the frame F.
QEL_GRIDWORK_API void metric_aniso3d_to_aniso2d(const symmetric_fixed<double, 3>& M3,
                                                const matrix_fixed<double, 3, 2>& F, symmetric_fixed<double, 2>& M2);

/// Writes the tensor of every size greater than 0 into its column; columns of other sizes stay as they are.
///
/// @param sizes    n sizes
/// @param tensors  3 rows (2-D) or 6 rows (3-D), at least n columns; not resized
/// @return 0, also when `sizes` and `tensors` are empty; -2 when `tensors` has another shape
/// @{
QEL_GRIDWORK_API int metrics_iso_to_aniso2d(const dense1D<double>& sizes, dense2D<double>& tensors);
QEL_GRIDWORK_API int metrics_iso_to_aniso3d(const dense1D<double>& sizes, dense2D<double>& tensors);
/// @}

/// As above, each tensor in the plane of its frame, as metric_iso_to_aniso2d() has it.
///
/// @param sizes    n sizes
/// @param frames   6 rows, at least n columns
/// @param tensors  3 rows, at least n columns; not resized
/// @return 0, also when `sizes` and `tensors` are empty; -2 when `frames` or `tensors` has another shape
QEL_GRIDWORK_API int metrics_iso_to_aniso2d(const dense1D<double>& sizes, const dense2D<double>& frames,
                                            dense2D<double>& tensors);

/// Writes the tensor of every column of `tensors3d` in the plane of its frame.
///
/// @param tensors3d  6 x n
/// @param frames     6 rows, at least n columns
/// @param tensors2d  3 rows, at least n columns; not resized
/// @return 0, also when both tensor matrices are empty; -1 when `tensors3d` has not 6 rows; -2 when `frames` or
///         `tensors2d` has another shape
QEL_GRIDWORK_API int metrics_aniso3d_to_aniso2d(const dense2D<double>& tensors3d, const dense2D<double>& frames,
                                                dense2D<double>& tensors2d);

/// Replaces sizes that are 0 or less by their defaults, where these are greater than 0. NaNs and infinite sizes stay.
///
/// Entries beyond the shorter of the two arrays are not looked at.
/// @return the number of sizes replaced
QEL_GRIDWORK_API int overwrite_invalid_metrics(dense1D<double>& sizes, const dense1D<double>& defaults);

/// Replaces invalid tensors by their defaults, where these are valid.
///
/// @param tensors   3 or 6 rows, changed in place
/// @param defaults  tensors of the same row count, one per column
/// @return the number of columns replaced, 0 for empty `tensors`; -1 when `tensors` has neither 3 nor 6 rows; -2 when
///         `defaults` has another row count. Columns beyond the defaults are not looked at.
QEL_GRIDWORK_API int overwrite_invalid_metrics(dense2D<double>& tensors, const dense2D<double>& defaults);

/// As above, with the isotropic tensors of `default_sizes`, one per column, as defaults.
QEL_GRIDWORK_API int overwrite_invalid_metrics(dense2D<double>& tensors, const dense1D<double>& default_sizes);

}  // namespace gridwork
}  // namespace qel

#endif
