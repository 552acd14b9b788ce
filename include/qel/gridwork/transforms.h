/// @file
/// Geometric transforms: nodes moved, turned and scaled in place, bounding boxes, repeated and mirrored copies of a
/// part, meshes clipped at a line or plane.
///
/// Points in braces need their type: `translate(coords, vector_fixed<double, 2>{1, 0})`; `{1, 0}` could be the start of
/// a point in space, too.
///
/// `coords` has one column per node. The 2-D forms (d = 2) work on its first two rows, the 3-D forms (d = 3) on its
/// first three; further rows stay as they are. Angles are in radians.
#ifndef QEL_GRIDWORK_TRANSFORMS_H
#define QEL_GRIDWORK_TRANSFORMS_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/fixed.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

/// Moves nodes: p <- p + shift.
///
/// All forms of translate(), rotate() and zoom() share these rules.
/// - Nodes: all of them; or those of the list `ids`, in order, a node as often as it is listed; or the distinct nodes
///   of `connectivity`, of which entries `~0U` are skipped. In lists and connectivities of translate() and rotate(),
///   entries that are no column of `coords` are skipped as well; those of zoom() are not tested.
/// - Nothing is done, and 0 returned, for empty `coords`, for an empty list (or a connectivity without nodes), for a
///   transform that moves nothing (in that test a NaN counts as the value that moves nothing), and when memory runs
///   out.
/// - When `coords` has fewer than d rows it gets d, the new entries 0: a plane mesh becomes one in the plane z = 0. It
///   then has a block of its own; otherwise nodes move in place, in every view of the block.
///
/// @param coords  any row count x n; overwritten
/// @param shift   in the units of `coords`; does nothing when every component is 0 or NaN
/// @return all nodes: the number of columns. List: the number of entries that are columns of `coords`. Connectivity:
///         the number of distinct nodes moved. 0 when nothing is done
///
/// Cost: linear in the nodes, entries of the list or entries of the connectivity (there: expected).
/// @{
QEL_GRIDWORK_API int translate(dense2D<double>& coords, const vector_fixed<double, 2>& shift);
QEL_GRIDWORK_API int translate(dense2D<double>& coords, const vector_fixed<double, 3>& shift);
/// @}

/// As above, for the nodes of the list `ids`.
/// @{
QEL_GRIDWORK_API int translate(dense2D<double>& coords, const vector_fixed<double, 2>& shift,
                               const dense1D<unsigned>& ids);
QEL_GRIDWORK_API int translate(dense2D<double>& coords, const vector_fixed<double, 3>& shift,
                               const dense1D<unsigned>& ids);
/// @}

/// As above, for the distinct nodes of `connectivity`.
/// @{
QEL_GRIDWORK_API int translate(dense2D<double>& coords, const vector_fixed<double, 2>& shift,
                               const dense2D<unsigned>& connectivity);
QEL_GRIDWORK_API int translate(dense2D<double>& coords, const vector_fixed<double, 3>& shift,
                               const dense2D<unsigned>& connectivity);
/// @}

/// Turns nodes in the plane about `center`, counter-clockwise for a positive angle.
///
/// @param coords  any row count x n; overwritten, as by translate()
/// @param center  stays where it is
/// @param angle   in radians; does nothing when it is 0 or NaN
/// @return as translate()
///
/// Cost: as translate().
QEL_GRIDWORK_API int rotate(dense2D<double>& coords, const vector_fixed<double, 2>& center, double angle);

/// As above, for the nodes of the list `ids`.
QEL_GRIDWORK_API int rotate(dense2D<double>& coords, const vector_fixed<double, 2>& center, double angle,
                            const dense1D<unsigned>& ids);

/// As above, for the distinct nodes of `connectivity`.
QEL_GRIDWORK_API int rotate(dense2D<double>& coords, const vector_fixed<double, 2>& center, double angle,
                            const dense2D<unsigned>& connectivity);

/// Turns nodes in space about the axis through `center` along `rotation`, right-handed: p <- center + R (p - center).
///
/// R comes from Rodrigues' formula; the absolute error of its entries is below 3e-16 (1 + angle).
///
/// @param coords    any row count x n; overwritten, as by translate()
/// @param center    stays where it is
/// @param rotation  rotation vector: its direction is the axis, its length (below 1e154) the angle in radians; does
///                  nothing when every component is 0 or NaN
/// @return as translate()
///
/// Cost: as translate().
QEL_GRIDWORK_API int rotate(dense2D<double>& coords, const vector_fixed<double, 3>& center,
                            const vector_fixed<double, 3>& rotation);

/// As above, for the nodes of the list `ids`.
QEL_GRIDWORK_API int rotate(dense2D<double>& coords, const vector_fixed<double, 3>& center,
                            const vector_fixed<double, 3>& rotation, const dense1D<unsigned>& ids);

/// As above, for the distinct nodes of `connectivity`.
QEL_GRIDWORK_API int rotate(dense2D<double>& coords, const vector_fixed<double, 3>& center,
                            const vector_fixed<double, 3>& rotation, const dense2D<unsigned>& connectivity);

/// Scales nodes about `center`: p <- p + (factor - 1)(p - center).
///
/// @param coords  any row count x n; overwritten, as by translate()
/// @param center  stays where it is
/// @param factor  negative: mirrors through the center; 0: moves the nodes onto it; 1 or NaN: does nothing
/// @return the number of columns; 0 when nothing is done
///
/// Cost: as translate().
/// @{
QEL_GRIDWORK_API int zoom(dense2D<double>& coords, const vector_fixed<double, 2>& center, double factor);
QEL_GRIDWORK_API int zoom(dense2D<double>& coords, const vector_fixed<double, 3>& center, double factor);
/// @}

/// As above, for the nodes of the list `ids`; returns 0.
///
/// The entries must be columns of `coords`: they are not tested, and any other one makes the function read and write
/// outside of the matrix.
/// @{
QEL_GRIDWORK_API int zoom(dense2D<double>& coords, const vector_fixed<double, 2>& center, double factor,
                          const dense1D<unsigned>& ids);
QEL_GRIDWORK_API int zoom(dense2D<double>& coords, const vector_fixed<double, 3>& center, double factor,
                          const dense1D<unsigned>& ids);
/// @}

/// As above, for the distinct nodes of `connectivity`; returns 0. Entries must be `~0U` or columns of `coords`: they
/// are not tested.
/// @{
QEL_GRIDWORK_API int zoom(dense2D<double>& coords, const vector_fixed<double, 2>& center, double factor,
                          const dense2D<unsigned>& connectivity);
QEL_GRIDWORK_API int zoom(dense2D<double>& coords, const vector_fixed<double, 3>& center, double factor,
                          const dense2D<unsigned>& connectivity);
/// @}

/// Enlarges an axis-aligned box until it holds all nodes.
///
/// The box is never reset: start it with +infinity and -infinity, and call again to add further nodes. Nodes are taken
/// in order, connectivities in order of first appearance; the comparisons are exact. A NaN coordinate enters `box_min`,
/// where the next node replaces it; it never enters `box_max`.
///
/// @param coords           d x n
/// @param box_min,box_max  the corners of the box; enlarged
/// @return 0; -1 when `coords` has not exactly d rows (box unchanged)
///
/// Cost: linear in the nodes.
/// @{
QEL_GRIDWORK_API int inc_bounding_box(const dense2D<double>& coords, vector_fixed<double, 2>& box_min,
                                      vector_fixed<double, 2>& box_max);
QEL_GRIDWORK_API int inc_bounding_box(const dense2D<double>& coords, vector_fixed<double, 3>& box_min,
                                      vector_fixed<double, 3>& box_max);
/// @}

/// As above, for the nodes of the list `ids`; entries `~0U` are skipped.
/// @return 0, also, before any other check, for an empty list
///         -1 when `coords` has not exactly d rows (box unchanged)
///         -2 when an entry is neither `~0U` nor a column of `coords` (box unchanged)
///
/// Cost: linear in the entries.
/// @{
QEL_GRIDWORK_API int inc_bounding_box(const dense2D<double>& coords, const dense1D<unsigned>& ids,
                                      vector_fixed<double, 2>& box_min, vector_fixed<double, 2>& box_max);
QEL_GRIDWORK_API int inc_bounding_box(const dense2D<double>& coords, const dense1D<unsigned>& ids,
                                      vector_fixed<double, 3>& box_min, vector_fixed<double, 3>& box_max);
/// @}

/// As above, for the distinct nodes of `connectivity`; entries `~0U` are skipped.
/// @return as for a list, without nodes 0; -199 when the nodes cannot be collected (box unchanged)
///
/// Cost: expected linear in the entries.
/// @{
QEL_GRIDWORK_API int inc_bounding_box(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                      vector_fixed<double, 2>& box_min, vector_fixed<double, 2>& box_max);
QEL_GRIDWORK_API int inc_bounding_box(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                      vector_fixed<double, 3>& box_min, vector_fixed<double, 3>& box_max);
/// @}

/// Copies a part: its nodes to new columns of `coords`, its elements to `out`.
///
/// With m the old column count, the copy of the k-th distinct node, in order of first appearance, is column m + k. The
/// copy functions leave the source's nodes and elements as they are, and no other view of the block of `coords` or of
/// `out` is disturbed. `out` may be the same object as `connectivity`, or share its block.
///
/// @param coords        any row count x m; columns are appended
/// @param out           overwritten: rows x e, the elements of the copy, in a block of its own; entries `~0U` stay
/// @param connectivity  rows x e, the elements to copy; entries must be columns of `coords`, or `~0U`: they are not
///                      tested
/// @return 0; -199 when memory, or the 32-bit indices for the new nodes, ran out (nothing changed)
///
/// Cost: expected linear in the entries and in the largest index among them, amortised; `coords` is moved as a whole
/// when its block has no room, or is shared with another view.
QEL_GRIDWORK_API int copy_mesh(dense2D<double>& coords, dense2D<unsigned>& out, const dense2D<unsigned>& connectivity);

/// Makes n copies of a part, each a step further than the one before: a circular or helical array.
///
/// Copy k (k = 1 to n) is the source, turned about `center` by k times the step as by rotate(), then moved by k times
/// `shift` as by translate(); so steps that do nothing there do nothing here, and where one does something `coords`
/// gets d rows. The result is, bit for bit, that of n single copies. Unlike the single form, this one *appends* to
/// `out`.
///
/// @param coords        any row count x m; u columns are appended for each copy, where u is the number of distinct
///                      nodes
/// @param out           appended to: the elements of copy 1, 2, ... behind those that are there, e columns each. It
///                      gets the larger of the two row counts; the entries that a column lacks are `~0U`
/// @param shift         the step of the translation, in the units of `coords`
/// @param center        a point that the rotation leaves in place
/// @param angle         the step of the rotation in the plane, in radians
/// @param n             number of copies
/// @param connectivity  rows x e, the elements to copy; entries must be columns of `coords`, or `~0U`: they are not
///                      tested. As it is at the call, also when it is the same object as `out`
/// @return 0 (empty `coords` or n = 0: `out` untouched)
///         -199 when memory, or the 32-bit indices for the new nodes, ran out. All memory is taken beforehand: shapes
///         and values are as they were, but `coords` may have left a block that it shared
///
/// Cost: linear in what is appended, plus what the single form costs; both matrices grow once.
QEL_GRIDWORK_API int copy_mesh(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 2>& shift,
                               const vector_fixed<double, 2>& center, double angle, unsigned n,
                               const dense2D<unsigned>& connectivity);

/// As above, in space: `rotation` is the rotation vector of one step, as rotate() takes it.
QEL_GRIDWORK_API int copy_mesh(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 3>& shift,
                               const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                               unsigned n, const dense2D<unsigned>& connectivity);

/// Makes one copy of a part, mirrored in a line (2-D) or a plane (3-D): p <- p - 2 ((p - point) . n / |n|^2) n.
///
/// Elements keep the order of their nodes, so a mirrored element has the opposite orientation: a solid's Jacobian
/// changes its sign, a face its side.
///
/// @param coords        any row count x m; columns are appended, and d rows are made of fewer, the new entries 0
/// @param out           overwritten, as by the single form of copy_mesh()
/// @param point         a point of the line or plane
/// @param normal        its normal, finite, of any length whose square is not 0 in doubles (about 1e-162 and more)
/// @param connectivity  as for copy_mesh()
/// @return 0 (empty `coords`: `out` untouched); -4 when the squared length of `normal` is 0; -199 as copy_mesh().
///         Nothing changes on a negative result.
///
/// Cost: as the single form of copy_mesh().
/// @{
QEL_GRIDWORK_API int copy_sym_mesh(dense2D<double>& coords, dense2D<unsigned>& out,
                                   const vector_fixed<double, 2>& point, const vector_fixed<double, 2>& normal,
                                   const dense2D<unsigned>& connectivity);
QEL_GRIDWORK_API int copy_sym_mesh(dense2D<double>& coords, dense2D<unsigned>& out,
                                   const vector_fixed<double, 3>& point, const vector_fixed<double, 3>& normal,
                                   const dense2D<unsigned>& connectivity);
/// @}

/// Keeps the elements on the side of a line (d = 2) or plane (d = 3) that `normal` points to, as they are.
///
/// Both forms of clip() share these rules.
/// - Let s be `normal` times the power of two that brings its largest entry into [1, 2), and D(p) = s . (p - `point`),
///   summed in the order of rows. A node is *on the plane* when |D| <= `tol` |s|; else it is *before* it (D > 0) or
///   *behind* it. Nodes do not move.
/// - Where D is not finite, the elements of the node are dropped.
/// - `out` may be the same object as `connectivity`, or share its block.
/// - An empty connectivity gives 0 and empty outputs before any check. Nothing changes on a negative result.
///
/// Mode 0 keeps elements without a node behind; mode 1 also crossed ones, which have nodes before and behind; mode 2
/// crossed ones only. Mode 0, and mode 1 with the opposite normal, share only the elements in the plane.
///
/// @param coords        d rows or more x n
/// @param out           overwritten: `out(:, j) == connectivity(:, elements[j])`
/// @param point         a point of the line or plane, in the units of `coords`
/// @param normal        its normal, of any length
/// @param connectivity  rows x e, of any element type; entries `~0U` are skipped, a column of nothing else is dropped
/// @param mode          0, 1 or 2
/// @param tol           how far from the plane nodes may lie that are on it, in the units of `coords`
/// @param elements      overwritten: the source of each column of `out`, increasing
/// @return the number of columns left out
///         -1 `coords` has fewer than d rows
///         -3 `point` is not finite
///         -4 `normal` is zero or not finite
///         -5 an entry is neither `~0U` nor a column of `coords`
///         -6 `mode` is above 2
///         -7 `tol` is negative or NaN
///         -199 memory ran out, or a count does not fit
///
/// Cost: linear in the nodes of `coords` and the entries of `connectivity`.
/// @{
QEL_GRIDWORK_API int clip(const dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 2>& point,
                          const vector_fixed<double, 2>& normal, const dense2D<unsigned>& connectivity, unsigned mode,
                          double tol, dense1D<unsigned>& elements);
QEL_GRIDWORK_API int clip(const dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 3>& point,
                          const vector_fixed<double, 3>& normal, const dense2D<unsigned>& connectivity, unsigned mode,
                          double tol, dense1D<unsigned>& elements);
/// @}

/// Cuts a mesh at a line or plane and keeps the part on the side that `normal` points to.
///
/// An element without a node behind is kept whole (also one with all nodes on the plane, for either normal); else one
/// without a node before is dropped; else it is cut, and its pieces come in its place. (Drawn with what is before the
/// plane on top; digits are nodes, letters new ones.)
///
///     0 --------- 1          3 ------- 2                 3
///      \       .'/           |         |                /|\.
///       \   .'  /            |         |               / | \     before
///     - -a'----b- - -    - - d ------- b - - -    - - a--|--c - - - - - -
///         \   /              |         |             / \ | / \   behind
///          \ /               0 ------- 1            /   \b/   \.
///           2                                      0 --- | --- 2
///                                                   `.   |   .'
///     (0, 1, a), (a, 1, b)   (b, 2, 3, d)              `.|.'
///                                                        1
///                                                   (a, b, c, 3)
///
/// - New nodes: one for each edge (a, b), a < b, of cut elements with one end before the plane and one behind, at
///   x(a) + t (x(b) - x(a)), t = D(a) / (D(a) - D(b)), in *every* row of `coords`: rows beyond d may hold fields. They
///   come in lexicographic order of their edges.
/// - Edges, triangles and tetrahedra are split at their lowest crossing edge, in the same order, until none crosses. In
///   each half the new node takes the place of the lost end, wherever that stands; the half with the lower end comes
///   first. So places and orientation stay, faces are split alike from both sides, at most three tetrahedra come of one,
///   and boundary triangles that are clipped by themselves are the faces of the result, but for those in the cut.
/// - Columns of ELT_QUAD4 and ELT_FACE_MIX (of 4 rows) are cut as polygons, triangles too: an outline that meets the
///   plane in two places, which are nodes on it and crossing edges, is cut in two, walked from its first node on. A
///   quadrangle that loses one corner q, behind which a, b, c follow, leaves (a, b, c) and
///   (a, c, node of cq, node of qa). One that meets the plane in more places, being warped or not convex, is first split
///   into (l, l + 1, l + 2) and (l, l + 2, l + 3), l being its lowest node:
///
///        c ------- b            3 ------- 2
///        |       / |            |       / |
///        |     /   |            |     /   |
///        m   /     |            |   /     |
///         \/       |            | /       |
///     q  .  n ---- a            0 ------- 1
///
///     q is lost                 0 is the lowest
///
/// - All this is the same for the opposite normal and for any order of elements, and an edge has the same bits in every
///   matrix: merge() with tolerance 0 joins tetrahedra, their boundary triangles and ridges that were clipped one after
///   the other.
///
/// Lengths, area vectors and volumes of both halves add up, but for elements in the plane, which both have. With `tol` 0
/// a node very near the plane gives slivers, and a second clip may cut again: give some 1e-9 of the mesh's size. Nodes
/// that no element uses any more stay; simplify() removes them. The cut surface: those free boundaries of `out` whose
/// nodes are all new or on the plane.
///
/// @param coords        d rows or more x n; c columns are appended. No other view of its block is disturbed
/// @param out           overwritten: the row count of `connectivity`. Of ELT_QUAD4 come triangles, too, with `~0U` in row
///                      3: to be read as ELT_FACE_MIX
/// @param point,normal  as above
/// @param connectivity  the elements
/// @param type          ELT_EDGE2, ELT_TRIA3, ELT_QUAD4, ELT_FACE_MIX or ELT_TETRA4
/// @param tol           as above
/// @param elements      overwritten: the source of each column of `out`, increasing
/// @param edges         overwritten: 2 x c, column k the edge of node n + k, the lower end first
/// @param weights       overwritten: c, the numbers t
/// @return c, the number of new nodes
///         -1, -3, -4, -7 as above
///         -5 check_IDs() with `type` refuses the connectivity
///         -6 the type is not accepted
///         -199 memory, or the 32-bit indices for the new nodes, ran out
///
/// Cost: linear in the nodes of `coords` and the entries of `connectivity` (expected), plus c log c.
/// @{
QEL_GRIDWORK_API int clip(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 2>& point,
                          const vector_fixed<double, 2>& normal, const dense2D<unsigned>& connectivity,
                          element_type type, double tol, dense1D<unsigned>& elements, dense2D<unsigned>& edges,
                          dense1D<double>& weights);
QEL_GRIDWORK_API int clip(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 3>& point,
                          const vector_fixed<double, 3>& normal, const dense2D<unsigned>& connectivity,
                          element_type type, double tol, dense1D<unsigned>& elements, dense2D<unsigned>& edges,
                          dense1D<double>& weights);
/// @}

}  // namespace gridwork
}  // namespace qel

#endif
