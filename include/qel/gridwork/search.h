/// @file
/// Search over nodes (node_detector), merging of near nodes, removal of degenerate elements and of unused nodes.
#ifndef QEL_GRIDWORK_SEARCH_H
#define QEL_GRIDWORK_SEARCH_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/fixed.h"

namespace qel {
namespace gridwork {

namespace detail {
template <unsigned Dim>
class node_tree;
}

/// Spatial search over a set of nodes: closest node to a point or to a node, nodes in a box.
///
/// The detector is a k-d tree: each node splits on one coordinate, cycling x, y(, z); smaller coordinates lie to the
/// left, greater or equal ones to the right. Nodes are inserted in a fixed pseudo-random order (a Mersenne Twister
/// MT19937 seeded with 1 at every call: for i = 1, 2, ... swap entries i and r mod (i + 1)), so the same input always
/// gives the same tree, the same ties and the same order of results.
///
/// The detector refers to the caller's `coords` object, which must stay alive and in place as long as the detector is
/// used. Columns may be appended to it and inserted later. When a node of the tree is moved, results are those of one
/// of the two positions, until the next reinit().
///
/// A 2-D query on a 3-D tree uses z = 0 (a box: only nodes with z exactly 0); a 3-D query on a 2-D tree ignores z.
/// Queries may run concurrently; insert(), reinit(), clear() and assignment need exclusive access. A node with a NaN
/// coordinate follows the comparisons: it is never found itself, and may hide nodes that were inserted below it.
/// Queries on a tree many times deeper than a balanced one may throw std::bad_alloc.
class node_detector {
 public:
  /// A detector without a tree.
  node_detector() noexcept = default;

  /// As reinit() with the same arguments; when that fails, size() is 0.
  /// @{
  QEL_GRIDWORK_API explicit node_detector(const dense2D<double>& coords);
  QEL_GRIDWORK_API node_detector(const dense2D<double>& coords, const dense1D<unsigned>& IDs);
  QEL_GRIDWORK_API node_detector(const dense2D<double>& coords, const dense2D<unsigned>& connectivity);
  QEL_GRIDWORK_API node_detector(const dense2D<double>& coords, const dense2D<unsigned>* first,
                                 const dense2D<unsigned>* last);
  /// @}

  /// Coordinates that are gone when the constructor returns are no use to a detector; reinit() refuses them, too.
  /// @{
  explicit node_detector(const dense2D<double>&& coords) = delete;
  node_detector(const dense2D<double>&& coords, const dense1D<unsigned>& IDs) = delete;
  node_detector(const dense2D<double>&& coords, const dense2D<unsigned>& connectivity) = delete;
  node_detector(const dense2D<double>&& coords, const dense2D<unsigned>* first, const dense2D<unsigned>* last) = delete;
  /// @}

  /// A deep copy of the tree that refers to the same coordinates; without a tree when memory ran out. Linear.
  /// @{
  QEL_GRIDWORK_API node_detector(const node_detector& other);
  QEL_GRIDWORK_API node_detector& operator=(const node_detector& other);
  /// @}

  /// Releases the tree.
  QEL_GRIDWORK_API ~node_detector();

  /// Releases the tree.
  QEL_GRIDWORK_API void clear();

  /// Builds the tree over all nodes of `coords` (2 or 3 rows). Clears the detector before anything else.
  /// @return 0; -1 for another row count; -199 (both leave the detector without a tree)
  ///
  /// Cost: expected n log n.
  QEL_GRIDWORK_API int reinit(const dense2D<double>& coords);

  /// Builds the tree over the listed nodes; entries `~0U` are skipped, a node listed twice is held twice.
  /// @return 0; -1 when `coords` has neither 2 nor 3 rows; -2 when an entry is neither `~0U` nor a column of `coords`
  ///         (both leave the detector as it was); -199 (no tree)
  QEL_GRIDWORK_API int reinit(const dense2D<double>& coords, const dense1D<unsigned>& IDs);

  /// Builds the tree over the distinct nodes of a connectivity. Results as for a list, but -199 leaves the detector as
  /// it was when the nodes could not be collected.
  QEL_GRIDWORK_API int reinit(const dense2D<double>& coords, const dense2D<unsigned>& connectivity);

  /// Builds the tree over the distinct nodes of the matrices [first, last).
  /// @return as for a connectivity; before all else -3 when `last` lies before `first` (detector as it was)
  ///
  /// Cost: expected n log n in the entries, as for a list and for a connectivity.
  QEL_GRIDWORK_API int reinit(const dense2D<double>& coords, const dense2D<unsigned>* first,
                              const dense2D<unsigned>* last);

  /// @cond internal
  int reinit(const dense2D<double>&& coords) = delete;
  int reinit(const dense2D<double>&& coords, const dense1D<unsigned>& IDs) = delete;
  int reinit(const dense2D<double>&& coords, const dense2D<unsigned>& connectivity) = delete;
  int reinit(const dense2D<double>&& coords, const dense2D<unsigned>* first, const dense2D<unsigned>* last) = delete;
  /// @endcond

  /// Adds nodes to the tree, in the shuffled order of the list; entries that are no column of `coords` are skipped.
  ///
  /// There is no test for nodes that are in the tree already: they are held again.
  /// @return the number of nodes added; 0 without a tree, or, with the tree unchanged, when memory runs out
  ///
  /// Cost: expected log n for a node; a list that is long in relation to the tree is built in bulk.
  QEL_GRIDWORK_API unsigned insert(const dense1D<unsigned>& IDs);

  /// Adds the distinct nodes of a connectivity. Result and cost as for a list.
  QEL_GRIDWORK_API unsigned insert(const dense2D<unsigned>& connectivity);

  /// The node closest to `P`, up to the rounding of coordinates and distances; `~0U` when there is none whose
  /// squared distance is finite.
  ///
  /// Of equally close nodes the one that the tree meets first: on the way that an insertion of `P` would take, then in
  /// the order node, right subtree, left subtree. Cost: expected log n.
  /// @{
  QEL_GRIDWORK_API unsigned find_closest(const vector_fixed<double, 2>& P) const;
  QEL_GRIDWORK_API unsigned find_closest(const vector_fixed<double, 3>& P) const;
  /// @}

  /// The node closest to the position of `node`, other than `node`, which need not be in the tree; `~0U` when there is
  /// none or `node` is no column of `coords`. Ties and cost as for a point.
  QEL_GRIDWORK_API unsigned find_closest(unsigned node) const;

  /// Appends to `IDs` the nodes inside the closed box from `Pmin` to `Pmax`, in the tree's pre-order (node, left
  /// subtree, right subtree). Expected cost: log n plus a number in proportion to the nodes near the box.
  ///
  /// When `IDs` cannot grow, it takes as many nodes as fit, the first ones; points given in braces need their type.
  /// @{
  QEL_GRIDWORK_API void find_in_box(const vector_fixed<double, 2>& Pmin, const vector_fixed<double, 2>& Pmax,
                                    dense1D<unsigned>& IDs) const;
  QEL_GRIDWORK_API void find_in_box(const vector_fixed<double, 3>& Pmin, const vector_fixed<double, 3>& Pmax,
                                    dense1D<unsigned>& IDs) const;
  /// @}

  /// Number of nodes in the tree, one for each insertion. Constant.
  QEL_GRIDWORK_API unsigned size() const;

 private:
  detail::node_tree<2>* planar_ = nullptr;
  detail::node_tree<3>* spatial_ = nullptr;
};

/// Merges all nodes that lie within `tol` of one another and gives every merged node its survivor's position.
///
/// All merge functions share these rules. Distances are Euclidean, in the units of `coords`, and inclusive: with tol =
/// 0 coincident nodes merge, a node at distance `tol` merges. Nodes with a NaN coordinate never merge, nodes with an
/// infinite one only where `tol` is so large that its square overflows. `coords` keeps its column count: nodes that no
/// element uses any more are removed by simplify(). A `new_IDs` that is a view of a caller's memory is filled there
/// when that has room for n entries.
///
/// A proximity merge maps each node to the near node that comes first in the order of the node list, then follows
/// those maps as long as they lead to an earlier node; so of a group of mutually close nodes the first one survives.
/// Along such a chain a node may end farther than `tol` from where it was.
///
/// | merge of | arguments behind `coords` |
/// | --- | --- |
/// | all nodes, which are moved | `[new_IDs,] tol` |
/// | the nodes of one list | `IDs, new_IDs, tol` |
/// | the nodes of one list onto those of another | `IDs1, IDs2, new_IDs, tol` |
/// | the nodes of a range of matrices, of one or of two | `first, last` or one or two matrices, `[new_IDs,] tol, mode` |
///
/// @param coords   2 or 3 x n; merged nodes are overwritten. When there are any, the matrix ends with a block of its
///                 own: neither other views nor a caller's memory are disturbed
/// @param new_IDs  overwritten: n entries, the survivor of each node, itself when it is not merged. Empty when there is
///                 nothing to do, and on error
/// @param tol      distance, not negative
/// @return the number of merged nodes; -1 for a row count other than 2 or 3; -3 for a negative or NaN `tol`; -199
///         (nothing modified)
///
/// Cost: expected linear in the nodes plus the number of close pairs.
QEL_GRIDWORK_API int merge(dense2D<double>& coords, dense1D<unsigned>& new_IDs, double tol);

/// As above, without the map.
QEL_GRIDWORK_API int merge(dense2D<double>& coords, double tol);

/// Proximity merge of the nodes of `IDs1` onto the nodes of `IDs2`; only the map is made.
///
/// Earlier in `IDs2` survives. A node that is not in `IDs2` may be merged, but receives no other. Entries `~0U` are
/// skipped. Where the lists overlap, the map need not be its own square: three coincident nodes, {0, 1} onto {1, 2}, give
/// the map 1 2 2.
///
/// @param coords   2 or 3 x n
/// @param IDs1     nodes that may be merged
/// @param IDs2     nodes that they are merged onto
/// @param new_IDs  as above; empty when one of the lists is empty
/// @param tol      distance, not negative
/// @return the number of merged nodes; -1 for a row count other than 2 or 3; -2, -3 for an entry of `IDs1`, `IDs2` that
///         is neither `~0U` nor a column of `coords`; -4 for a negative or NaN `tol`; -199
///
/// Cost: expected linear in the lists and `coords` plus the number of close pairs.
QEL_GRIDWORK_API int merge(const dense2D<double>& coords, const dense1D<unsigned>& IDs1, const dense1D<unsigned>& IDs2,
                           dense1D<unsigned>& new_IDs, double tol);

/// Proximity merge of the nodes of one list. Results and cost as for two lists (an invalid entry gives -2).
QEL_GRIDWORK_API int merge(const dense2D<double>& coords, const dense1D<unsigned>& IDs, dense1D<unsigned>& new_IDs,
                           double tol);

/// Merges nodes that the connectivity matrices [first, last) use, and renumbers the matrices in place.
///
/// @param coords      2 or 3 x n
/// @param first,last  array of matrices; entries `~0U` are skipped and stay
/// @param new_IDs     as above; empty when there is no node or no matrix
/// @param tol         distance, not negative
/// @param mode        0: proximity merge of all nodes, in order of first appearance. 1: element-wise merge, which
///                    merges only nodes of one same element: closest pairs first (then those of the lowest node), each
///                    node at most once, the lower index survives. 2: element-wise passes until one merges nothing
/// @return the number of merged nodes; -1 for a row count other than 2 or 3; -3 when `last` lies before `first`; -5 for
///         a negative or NaN `tol`; -6 for another `mode`; -2 for an entry that is neither `~0U` nor a column of
///         `coords`;
///         -199. On every negative result the matrices are unchanged, except that element-wise passes which
///         were completed before memory ran out stay.
///
/// Cost: expected linear in entries and nodes plus the number of close pairs (mode 2: for each pass).
QEL_GRIDWORK_API int merge(const dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last,
                           dense1D<unsigned>& new_IDs, double tol, unsigned mode);

/// As above, without the map.
QEL_GRIDWORK_API int merge(const dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last, double tol,
                           unsigned mode);

/// As above, for one matrix.
/// @{
QEL_GRIDWORK_API int merge(const dense2D<double>& coords, dense2D<unsigned>& connectivity, dense1D<unsigned>& new_IDs,
                           double tol, unsigned mode);
QEL_GRIDWORK_API int merge(const dense2D<double>& coords, dense2D<unsigned>& connectivity, double tol, unsigned mode);
/// @}

/// As above, for two matrices.
/// @{
QEL_GRIDWORK_API int merge(const dense2D<double>& coords, dense2D<unsigned>& connectivity1,
                           dense2D<unsigned>& connectivity2, dense1D<unsigned>& new_IDs, double tol, unsigned mode);
QEL_GRIDWORK_API int merge(const dense2D<double>& coords, dense2D<unsigned>& connectivity1,
                           dense2D<unsigned>& connectivity2, double tol, unsigned mode);
/// @}

/// Removes the elements that hold a node twice; the others move up in their order.
///
/// @param connectivity  rows x e, any row count; overwritten in place
/// @param new_elements  overwritten, e entries: `old(:, j) == new(:, new_elements[j])`, or `~0U` for a removed element
/// @param strict        true: a repeated `~0U` counts too, so that elements of a mixed matrix with two or more unused
///                      rows are removed
/// @return the number of removed elements, or -199 (connectivity unchanged)
///
/// Cost: linear in the entries.
QEL_GRIDWORK_API int remove_degenerated(dense2D<unsigned>& connectivity, dense1D<unsigned>& new_elements, bool strict);

/// As above, without the map.
QEL_GRIDWORK_API int remove_degenerated(dense2D<unsigned>& connectivity, bool strict);

/// Removes the nodes that no matrix of [first, last) uses; the others move up in their order, the matrices are
/// renumbered.
///
/// @param coords      any row count x n; overwritten in place
/// @param first,last  array of matrices, renumbered in place; entries `~0U` stay. They must not overlap: what two of
///                    them show would be renumbered twice
/// @param new_IDs     overwritten, n entries: `old(:, i) == new(:, new_IDs[i])`, or `~0U` for a removed node. Empty
///                    when there is nothing to do, and on error
/// @param first_node  nodes before this one are kept in any case
/// @return the number of removed nodes; 0 for an empty range; -3 when `last` lies before `first`; -2 when a matrix has
///         an entry that is neither `~0U` nor a column of `coords`; 0 for empty `coords` or first_node >= n; -199.
///         Nothing is modified on a negative result.
///
/// Cost: linear.
QEL_GRIDWORK_API int simplify(dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last,
                              dense1D<unsigned>& new_IDs, unsigned first_node);

/// As above, for one matrix, with and without the map.
/// @{
QEL_GRIDWORK_API int simplify(dense2D<double>& coords, dense2D<unsigned>& connectivity, dense1D<unsigned>& new_IDs,
                              unsigned first_node);
QEL_GRIDWORK_API int simplify(dense2D<double>& coords, dense2D<unsigned>& connectivity, unsigned first_node);
/// @}

/// As above, for two matrices, which may be one and the same, without the map.
QEL_GRIDWORK_API int simplify(dense2D<double>& coords, dense2D<unsigned>& connectivity1,
                              dense2D<unsigned>& connectivity2, unsigned first_node);

}  // namespace gridwork
}  // namespace qel

#endif
