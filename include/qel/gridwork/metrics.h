/// @file
/// Metric tensors, the size prescriptions of a mesh: validity, eigen-pairs, bounds, intersection and union, conversions
/// and repair; sizes and tensors along the edges of a mesh: generation, H-shock, gradation.
///
/// An isotropic metric is a size h > 0, in the units of `coords`. An anisotropic one is a symmetric positive definite
/// tensor M: the size in a unit direction u is 1 / sqrt(u' M u), and a size h in all directions is M = I / h^2.
/// Matrices of tensors have one packed tensor per column, 3 rows in 2-D (a11, a12, a22), 6 rows in 3-D (a11, a12, a22,
/// a13, a23, a33). Frames are 3 x 2 matrices whose columns span a plane in space; a matrix of them has 6 rows, one
/// frame per column, column by column.
///
/// Outputs that are fixed-size objects may be the same object as an input. Tensors and sizes are changed in place; an
/// input that shares memory with them is copied first (-199 when memory for that runs out). Costs are linear in the
/// columns, constant for one tensor. The geometry of metrics: P. L. George, H. Borouchaki, Delaunay Triangulation and
/// Meshing, Hermes 1998, chapter 10; simultaneous reduction: F. Alauzet, Size gradation control of anisotropic meshes,
/// Finite Elements in Analysis and Design 46, 2010.
#ifndef QEL_GRIDWORK_METRICS_H
#define QEL_GRIDWORK_METRICS_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/fixed.h"
#include "qel/gridwork/elements.h"
#include "qel/histogram.h"

namespace qel {
namespace gridwork {

using misc::histogram;

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
/// @return 0, also when `sizes` and `tensors` are empty; -2 when `tensors` has another shape; -199 with `tensors`
///         unchanged
/// @{
QEL_GRIDWORK_API int metrics_iso_to_aniso2d(const dense1D<double>& sizes, dense2D<double>& tensors);
QEL_GRIDWORK_API int metrics_iso_to_aniso3d(const dense1D<double>& sizes, dense2D<double>& tensors);
/// @}

/// As above, each tensor in the plane of its frame, as metric_iso_to_aniso2d() has it.
///
/// @param sizes    n sizes
/// @param frames   6 rows, at least n columns
/// @param tensors  3 rows, at least n columns; not resized
/// @return 0, also when `sizes` and `tensors` are empty; -2 when `frames` or `tensors` has another shape; -199 with
///         `tensors` unchanged
QEL_GRIDWORK_API int metrics_iso_to_aniso2d(const dense1D<double>& sizes, const dense2D<double>& frames,
                                            dense2D<double>& tensors);

/// Writes the tensor of every column of `tensors3d` in the plane of its frame.
///
/// @param tensors3d  6 x n
/// @param frames     6 rows, at least n columns
/// @param tensors2d  3 rows, at least n columns; not resized
/// @return 0, also when both tensor matrices are empty; -1 when `tensors3d` has not 6 rows; -2 when `frames` or
///         `tensors2d` has another shape; -199 with `tensors2d` unchanged
QEL_GRIDWORK_API int metrics_aniso3d_to_aniso2d(const dense2D<double>& tensors3d, const dense2D<double>& frames,
                                                dense2D<double>& tensors2d);

/// Replaces sizes that are 0 or less by their defaults, where these are greater than 0. NaNs and infinite sizes stay.
///
/// Entries beyond the shorter of the two arrays are not looked at.
/// @return the number of sizes replaced; -199 with `sizes` unchanged
QEL_GRIDWORK_API int overwrite_invalid_metrics(dense1D<double>& sizes, const dense1D<double>& defaults);

/// Replaces invalid tensors by their defaults, where these are valid.
///
/// @param tensors   3 or 6 rows, changed in place
/// @param defaults  tensors of the same row count, one per column
/// @return the number of columns replaced, 0 for empty `tensors`; -1 when `tensors` has neither 3 nor 6 rows; -2 when
///         `defaults` has another row count; -199 with `tensors` unchanged. Columns beyond the defaults are not looked
///         at.
QEL_GRIDWORK_API int overwrite_invalid_metrics(dense2D<double>& tensors, const dense2D<double>& defaults);

/// As above, with the isotropic tensors of `default_sizes`, one per column, as defaults.
QEL_GRIDWORK_API int overwrite_invalid_metrics(dense2D<double>& tensors, const dense1D<double>& default_sizes);

/// @name Sizes and tensors along the edges of a mesh
///
/// Edges are those of copy_edges(); those of several matrices: list them with copy_edges() and pass the list as
/// ELT_EDGE2. An edge is *sound* when both ends have a valid size (0 < h < DBL_MAX) or tensor (is_valid_metric(); 3 rows
/// for 2-row coordinates, 6 rows for 3) and its length is finite. Nodes without an edge, mid-side nodes and entries
/// beyond the nodes are not looked at.
///
/// Arguments of all functions:
/// - coords: 2 or 3 x n
/// - connectivity: one column per element
/// - type: of the elements
/// - sizes: the size at each node, in the units of `coords`; tensors: the tensor at each node, one per column
///
/// Result codes of all functions, in the order of the checks:
/// - -1 when `coords` has neither 2 nor 3 rows
/// - -2 when `connectivity` does not fit `type` and the n nodes, or `type` is no element_type
/// - -5 when the bound or the rule is invalid
/// - -199 when memory ran out; nothing is changed
/// - -4 when an edge is not sound; it was skipped, all else is done
///
/// Without edges (also: with a type that has none) they return 0, and 1 as the largest shock.
///
/// H-variation and H-shock: H. Borouchaki, F. Hecht, P. Frey, Mesh gradation control, International Journal for Numerical
/// Methods in Engineering 43, 1998. Growth of tensors: F. Alauzet, as above.
/// @{

/// Which of the lengths of a node's edges becomes its size.
enum size_rule : int {
  SIZE_MEAN = 0,      ///< their mean
  SIZE_SHORTEST = 1,  ///< the smallest
  SIZE_LONGEST = 2    ///< the largest
};

/// Sizes that the mesh has already: for each node the mean, the smallest or the largest length of its edges.
///
/// Lengths that are 0 or not finite do not count. The smallest and the largest do not depend on any order; a mean rounds
/// by the order of the edges, within (edges + 3) 2^-53, and never overflows.
///
/// @param coords        2 or 3 x n
/// @param connectivity  one column per element
/// @param type          of the elements
/// @param sizes         overwritten: n entries, 0 (no size) where no edge counts; empty on a negative result
/// @param rule          which length a node takes
/// @return the number of nodes with a size; -1, -2; -5 when `rule` is no size_rule; -199
///
/// Cost: that of copy_edges(), plus the edges.
QEL_GRIDWORK_API int metrics_gen_iso(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                     element_type type, dense1D<double>& sizes, size_rule rule = SIZE_MEAN);

/// H-shock of an edge of length L: exp(|h2 - h1| / L), the ratio of the sizes to the power 1 / edge_quality().
///
/// 1 for equal sizes, also where L = 0; may overflow to infinity.
/// @param L      length of the edge, in the units of the sizes, 0 or more
/// @param h1     size at one end
/// @param h2     size at the other end
/// @param shock  overwritten on success
/// @return 0; -1 when L is not 0 or more; -2, -3 when h1, h2 is no valid size
///
/// Cost: constant.
QEL_GRIDWORK_API int H_shock(double L, double h1, double h2, double& shock);

/// The largest H-shock of all sound edges.
///
/// Of tensors: exp(|1 / la - 1 / lb|), where la and lb are the lengths of the edge in the metrics of its ends. Where the
/// ends coincide it is 1 for equal tensors, else infinite.
///
/// @param coords        2 or 3 x n
/// @param connectivity  one column per element
/// @param type          of the elements
/// @param sizes         the size at each node
/// @param largest       overwritten; 1 without a sound edge, and on -1, -2, -199
/// @return the number of edges; -1, -2, -199, -4
///
/// Cost: that of copy_edges(), plus the nodes and the edges.
QEL_GRIDWORK_API int H_shock(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                             const dense1D<double>& sizes, double& largest);

/// As above, of tensors: 3 or 6 rows, one column per node.
QEL_GRIDWORK_API int H_shock(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                             const dense2D<double>& tensors, double& largest);

/// Feeds the H-shock of every sound edge to `H.process`, in the order of copy_edges().
///
/// @param coords        2 or 3 x n
/// @param connectivity  one column per element
/// @param type          of the elements
/// @param sizes         the size at each node
/// @param H             fed with one value per sound edge
/// @return the number of edges; -1, -2, -199 with nothing fed; -4
///
/// Cost: that of copy_edges(), plus the nodes and the edges.
QEL_GRIDWORK_API int H_shock(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                             const dense1D<double>& sizes, histogram& H);

/// As above, of tensors: 3 or 6 rows, one column per node.
QEL_GRIDWORK_API int H_shock(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                             const dense2D<double>& tensors, histogram& H);

/// Lowers sizes until h(B) <= h(A) + max_variation |AB| for every edge AB, in both directions: the largest sizes that are
/// nowhere above the given ones and keep the bound.
///
/// The result is unique: it does not depend on numbers or order, bit for bit. A second call changes nothing; larger sizes
/// or a larger bound never give a smaller result. h(p) is the least h(q) + max_variation x distance along edges from q to
/// p, within (edges + 4) 2^-53.
///
/// @param coords         2 or 3 x n
/// @param connectivity   one column per element
/// @param type           of the elements
/// @param sizes          the size at each node, changed in place
/// @param max_variation  difference of sizes per length, 0 or more
/// @return the number of nodes changed; -1, -2; -5 when `max_variation` is negative or not finite; -199; -4 (the rest is
///         bounded)
///
/// Cost: O(n + edges + c log c), c times that a size is lowered.
QEL_GRIDWORK_API int bound_metric_variations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                             element_type type, dense1D<double>& sizes, double max_variation);

/// As above, and overwrites `ids` with the nodes changed, increasing, also on -4; empty on any other negative result.
QEL_GRIDWORK_API int bound_metric_variations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                             element_type type, dense1D<double>& sizes, double max_variation,
                                             dense1D<unsigned>& ids);

/// The same bound as a factor: H_shock() <= max_gradation on every edge; max_variation = ln(max_gradation).
///
/// @param coords         2 or 3 x n
/// @param connectivity   one column per element
/// @param type           of the elements
/// @param sizes          the size at each node, changed in place
/// @param max_gradation  largest ratio of the lengths of adjacent edges, 1 or more
/// @return as bound_metric_variations(); -5 when `max_gradation` is below 1 or not finite
QEL_GRIDWORK_API int bound_metric_gradations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                             element_type type, dense1D<double>& sizes, double max_gradation);

/// As above, and overwrites `ids` with the nodes changed, increasing, also on -4; empty on any other negative result.
QEL_GRIDWORK_API int bound_metric_gradations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                             element_type type, dense1D<double>& sizes, double max_gradation,
                                             dense1D<unsigned>& ids);

/// The same for tensors: every principal size grows by at most max_variation x length along an edge.
///
/// The metric A allows at the other end of the edge e a metric S(A): the axes of A, with sizes larger by max_variation
/// |e|, so that its shape fades to a sphere. B, the metric there, is intersected (minimum_metric()) with S(A) where it
/// has larger sizes. Afterwards det(B n S(A)) <= (1 + 1e-6) det(B) for every edge, in both directions, so in no direction
/// has B a size more than 5e-7 (relative) above S(A). Up to that, |M_B^-1/2 - M_A^-1/2|_2 and the change of every
/// principal size are at most max_variation |e|.
///
/// Nowhere is a size larger than before; a second call changes nothing. Isotropic tensors become those of the bounded
/// sizes. Intersections may make sizes that are smaller than all given ones.
///
/// Order: all nodes wait; the one with the largest determinant (its log2 rounded to 2^-20; ties: lower x, y, z, then lower
/// number) bounds its neighbours and waits no more; neighbours that change wait again, until none waits. So results do
/// not depend on numbers, but for nodes in one place. Rounding: 2^-50 x (largest / smallest size of the node)^2.
///
/// @param coords         2 or 3 x n
/// @param connectivity   one column per element
/// @param type           of the elements
/// @param tensors        3 or 6 rows, one column per node, changed in place
/// @param max_variation  difference of sizes per length, 0 or more
/// @return the number of nodes changed; -1, -2; -5 when `max_variation` is negative or not finite; -199; -4 (the rest is
///         bounded)
///
/// Cost: O(n + edges + k (d + log n)), k turns (1 to 7 per node in lattices of triangles and tetrahedra, more where thin
/// metrics turn along a fine chain), d edges per node.
QEL_GRIDWORK_API int bound_metric_variations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                             element_type type, dense2D<double>& tensors, double max_variation);

/// As above, and overwrites `ids` with the nodes changed, increasing, also on -4; empty on any other negative result.
QEL_GRIDWORK_API int bound_metric_variations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                             element_type type, dense2D<double>& tensors, double max_variation,
                                             dense1D<unsigned>& ids);

/// The same for tensors as a factor: all sizes grow by 1 + r l, r = ln(max_gradation), l the length of the edge in A.
///
/// As bound_metric_variations(), but S(A) = A / (1 + r l)^2 keeps the shape of A, and what holds afterwards is
/// ln H_shock() <= r + 5e-7 (r + 1 / l). The result goes along with linear maps of the mesh and its metrics.
///
/// @param coords         2 or 3 x n
/// @param connectivity   one column per element
/// @param type           of the elements
/// @param tensors        3 or 6 rows, one column per node, changed in place
/// @param max_gradation  largest ratio of the lengths of adjacent edges, 1 or more
/// @return as bound_metric_variations(); -5 when `max_gradation` is below 1 or not finite
///
/// Cost: as bound_metric_variations(), with 1 to 5 turns per node in such lattices.
QEL_GRIDWORK_API int bound_metric_gradations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                             element_type type, dense2D<double>& tensors, double max_gradation);

/// As above, and overwrites `ids` with the nodes changed, increasing, also on -4; empty on any other negative result.
QEL_GRIDWORK_API int bound_metric_gradations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                             element_type type, dense2D<double>& tensors, double max_gradation,
                                             dense1D<unsigned>& ids);

/// @}

}  // namespace gridwork
}  // namespace qel

#endif
