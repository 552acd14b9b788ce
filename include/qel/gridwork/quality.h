/// @file
/// Quality of elements (shape), their Jacobians, and quality of edges (length against prescribed size).
///
/// Shape qualities are clamped to [-1, 1], do not change under translation, rotation and scaling, and are 1 for the
/// ideal shape, near 0 for flat and needle elements, exactly 0 where the denominator of the formula vanishes or a
/// coordinate is not finite.
///
/// | shape       | quality                                                                                  | ideal           |
/// |-------------|------------------------------------------------------------------------------------------|-----------------|
/// | edge        | 1                                                                                        | any             |
/// | triangle    | 2 sqrt(3) x inradius / longest edge; signed in 2-D, not negative in 3-D                   | equilateral     |
/// | quadrangle  | 4 sqrt(2) x smallest corner cross product / (longest edge or diagonal x perimeter)        | square          |
/// | tetrahedron | 2 sqrt(6) x inradius / longest edge, signed                                              | regular         |
/// | pyramid     | 18 sqrt(3) min J / S^(3/2), J at the 4 corners of the base, S over 8 edges; x flatness    | height / side = |
/// |             | of the base                                                                              | sqrt(3) / 2     |
/// | wedge       | 18 sqrt(3) min J / S^(3/2), 6 corners, 9 edges; x flatness of the quadrangles             | 9 equal edges   |
/// | hexahedron  | 24 sqrt(3) min J / S^(3/2), 8 corners, 12 edges; x flatness of the faces                  | cube            |
///
/// J is the triple product of the edge vectors that leave a corner, S the sum of the squared edge lengths. The flatness
/// of a quadrangle is the smallest cosine between the normal at a corner and that of the diagonals, at least 0; in 3-D
/// the quadrangle's corner cross products are projected on the latter normal. Solids on 2-row coordinates are flat (z =
/// 0).
///
/// Close to 0 the qualities of tetrahedra decide. A pyramid whose value is between 1e-12 and 24 sqrt(3) 1e-12 takes in
/// its place the smallest quality of the four tetrahedra of three base nodes in a row and the apex, before flatness
/// counts. A wedge or hexahedron of a value above 1e-12 with a corner and its three neighbours of a quality below 1e-12
/// takes that one. A tetrahedron below 1e-10, or with a needle for a face, takes the value of least magnitude over the
/// 12 orders of its nodes that do not change its sign; 0 when they disagree about the sign.
///
/// Orientation. Plane faces are positive when they turn counter-clockwise. Pyramids, wedges and hexahedra are positive
/// when the base 0-1-2(-3) turns counter-clockwise seen from the top. A tetrahedron is positive when 0-1-2 turns
/// *clockwise* seen from node 3:
///
///         3
///        /|\            the mirror image of the usual order: meshes made elsewhere are often all negative here,
///       / | \           and swapping two nodes of each tetrahedron turns the sign
///      /  1  \.
///     / .   . \         (node 1 lies behind the face 0-2-3)
///    0 ------- 2
///
/// Sources: V. N. Parthasarathy, C. M. Graichen, A. F. Hathaway, A comparison of tetrahedron quality measures, Finite
/// Elements in Analysis and Design 15, 1993; A. Liu, B. Joe, Relationship between tetrahedron shape measures, BIT 34,
/// 1994; P. M. Knupp, Algebraic mesh quality metrics, SIAM J. Sci. Comput. 23, 2001; W. Kahan, Miscalculating area and
/// angles of a needle-like triangle, 2014. Names in common use for related measures: C. J. Stimpson and others, The
/// Verdict geometric quality library, Sandia report SAND2007-1751.
#ifndef QEL_GRIDWORK_QUALITY_H
#define QEL_GRIDWORK_QUALITY_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"
#include "qel/histogram.h"

namespace qel {
namespace gridwork {

using misc::histogram;

/// Shape quality of every element.
///
/// @param coords        2 or 3 x n
/// @param connectivity  one column per element
/// @param type          ELT_EDGE2, ELT_TRIA3, ELT_QUAD4, ELT_TETRA4, ELT_PYRAMID5, ELT_WEDGE6, ELT_HEXA8, ELT_FACE_MIX
///                      or ELT_SOLID_MIX (also with fewer rows)
/// @param Q             overwritten: one quality per element; empty on a negative result
/// @return 0, also without elements
///         -1 when `coords` has neither 2 nor 3 rows
///         -2 when `connectivity` does not fit `type` and the n nodes
///         -3 for another element type
///         -199 when memory ran out
///
/// Cost: linear in the elements.
QEL_GRIDWORK_API int shape_qualities(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                     element_type type, dense1D<double>& Q);

/// The worst shape quality and the first element that has it.
///
/// @param coords        2 or 3 x n
/// @param connectivity  one column per element
/// @param type          as for shape_qualities()
/// @param qmin          overwritten: the smallest quality; 1 on a negative result
/// @param jmin          overwritten: its element; `~0U` when no element has a quality below 1, and on a negative result
/// @return as shape_qualities(), -199 excepted
///
/// Cost: linear in the elements; takes no memory.
QEL_GRIDWORK_API int min_quality(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                 element_type type, double& qmin, unsigned& jmin);

/// Smallest corner Jacobian of every element, not normalised: with the units of a length, an area or a volume.
///
/// Edge: its length. Triangle: twice its area, signed in 2-D. Quadrangle: the smallest cross product of the two edges
/// at a corner; in 3-D, of its part along the normal of the diagonals. Tetrahedron: six times its volume. Pyramid (4
/// corners of the base), wedge, hexahedron: the smallest triple product J. Signs as in the shape qualities; 0 where a
/// coordinate is not finite.
///
/// @param coords        2 or 3 x n
/// @param connectivity  one column per element
/// @param type          as for shape_qualities()
/// @param J             overwritten: one value per element; empty on a negative result
/// @return as shape_qualities()
///
/// Cost: linear in the elements.
QEL_GRIDWORK_API int jacobians(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                               dense1D<double>& J);

/// Length of an edge in relation to the sizes at its ends: 1 is as prescribed, less is short, more is long.
///
/// q = L / Lref, where Lref is the logarithmic mean (h2 - h1) / log(h2 / h1): the quality is the length of the edge in
/// a size field that varies linearly from h1 to h2. For sizes within 10 % of each other Lref is a series that is off by
/// less than 2e-7. q is 0 where a size is infinite, or the ratio of the sizes is; infinite or NaN as L is.
///
/// @param L   length of the edge, in the units of the sizes
/// @param h1  size at one end, greater than 0
/// @param h2  size at the other end, greater than 0
/// @param q   overwritten on success
/// @return 0; -2, -3 when h1, h2 is not greater than 0
///
/// Cost: constant.
QEL_GRIDWORK_API int edge_quality(double L, double h1, double h2, double& q);

/// Feeds the quality of every edge of the meshes [first, last), each edge once, to `H.process`.
///
/// Edges are those that copy_edges() lists, in that order: by lower node, then by higher node. An edge with an infinite
/// coordinate at one end is infinitely long; one with infinities that cancel, or a NaN, has the quality NaN, which a
/// `histogram` counts apart.
///
/// @param coords          2 or 3 x n
/// @param first,last      connectivities, one after the other
/// @param types           one element_type per matrix
/// @param sizes           the size at each node, greater than 0
/// @param H               fed with one value per sound edge
/// @param excluded_edges  2-row matrix of edges that are left out, in any order, in either direction; may be empty
/// @return the number of edges that are not excluded (0 for an empty range), or
///         -1 when `coords` has neither 2 nor 3 rows
///         -4 when `types` has not one entry per matrix
///         -2 when a matrix does not fit its type and the n nodes
///         -7 when `excluded_edges` is no ELT_EDGE2 connectivity on these nodes
///         -5 when an edge was skipped, because an end is no node, or has no size greater than 0 or no positive
///            definite metric; all other edges have been fed. An infinite size is greater than 0
///         -199 when memory ran out before anything was fed
///
/// Cost: that of copy_edges(), plus the edges.
QEL_GRIDWORK_API int edge_qualities(const dense2D<double>& coords, const dense2D<unsigned>* first,
                                    const dense2D<unsigned>* last, const dense1D<int>& types,
                                    const dense1D<double>& sizes, histogram& H,
                                    const dense2D<unsigned>& excluded_edges);

/// The same for anisotropic sizes: `metrics` has the tensor at each node, 3 rows in 2-D, 6 rows in 3-D (see metrics.h).
///
/// The quality of an edge is la lb / Lref(la, lb), where la and lb are its lengths in the metrics of its ends, and 0
/// where one of them vanishes or is not finite. For tensors I / h^2 that is the isotropic quality.
QEL_GRIDWORK_API int edge_qualities(const dense2D<double>& coords, const dense2D<unsigned>* first,
                                    const dense2D<unsigned>* last, const dense1D<int>& types,
                                    const dense2D<double>& metrics, histogram& H,
                                    const dense2D<unsigned>& excluded_edges);

/// The same for one mesh.
/// @return as above, but -4 for a skipped edge and -6 for invalid `excluded_edges`
/// @{
QEL_GRIDWORK_API int edge_qualities(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                    element_type type, const dense1D<double>& sizes, histogram& H,
                                    const dense2D<unsigned>& excluded_edges);
QEL_GRIDWORK_API int edge_qualities(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                                    element_type type, const dense2D<double>& metrics, histogram& H,
                                    const dense2D<unsigned>& excluded_edges);
/// @}

}  // namespace gridwork
}  // namespace qel

#endif
