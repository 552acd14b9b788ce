/// @file
/// Adjacency and boundaries of element meshes: neighbours, boundaries, node graph, edges.
///
/// Letters: e elements (columns of a connectivity), B boundaries of an element (nbr_boundaries() of its type), N nodes
/// (largest index in use plus one). A *boundary slot* is boundary k of element e; its code is e * B + k. Mixed types
/// have B = 4 (faces) and B = 6 (solids); a mixed matrix with the row count of a member counts as that member.
///
/// The linear types are accepted: ELT_EDGE2, ELT_FACE_MIX, ELT_TRIA3, ELT_QUAD4, ELT_SOLID_MIX, ELT_TETRA4,
/// ELT_PYRAMID5, ELT_WEDGE6, ELT_HEXA8. Local boundaries, in the order of their nodes:
///
/// | type | boundaries 0, 1, 2 ... |
/// |---|---|
/// | ELT_EDGE2 | (1) (0): the end opposite node k |
/// | ELT_TRIA3 | (1 2) (2 0) (0 1): the edge opposite node k |
/// | ELT_QUAD4 | (0 1) (1 2) (2 3) (3 0) |
/// | ELT_TETRA4 | (1 2 3) (2 0 3) (1 3 0) (2 1 0): the face opposite node k |
/// | ELT_PYRAMID5 | (0 4 1) (1 4 2) (2 4 3) (3 4 0) (0 1 2 3) |
/// | ELT_WEDGE6 | (0 1 2) (3 5 4) (2 1 4 5) (0 2 5 3) (1 0 3 4) |
/// | ELT_HEXA8 | (0 3 7 4) (1 5 6 2) (0 4 5 1) (3 2 6 7) (0 1 2 3) (4 7 6 5) |
///
/// The faces of a tetrahedron point outwards when nodes 0, 1, 2 turn counter-clockwise seen from node 3, which is the
/// usual order but has a negative shape quality here (quality.h). The faces of every solid of positive shape quality
/// point inwards, so those of a hexahedron whose bottom 0-1-2-3 is counter-clockwise seen from the top.
///
/// Two boundaries are the same when they hold the same nodes in the same cyclic order, in either direction.
#ifndef QEL_GRIDWORK_TOPOLOGY_H
#define QEL_GRIDWORK_TOPOLOGY_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

/// Finds the element across each boundary of each element.
///
/// @param connectivity       nodes x e; node indices may be any 32-bit numbers
/// @param type               type of all columns
/// @param pair_non_manifold  what becomes of a boundary that three or more slots share. false: none of them gets a
///                           neighbour. true: the first slot gets the element of the last one, each other slot that of
///                           the first
/// @param neighbors          overwritten: B x e; entry (k, e) is the element across boundary k of element e, or `~0U`
///                           where there is none or the element has no such boundary
/// @return 0; -1 for a wrong row count; -2 for a type that is not accepted; -199, also when a slot code does not fit 32
///         bits (`neighbors` has its size and holds `~0U`). `neighbors` is empty on -1 and -2
///
/// Cost: expected linear in e * B; work space 1.2 times the bytes of `neighbors`, at worst 3 times and 200 KiB.
QEL_GRIDWORK_API int get_neighbors(const dense2D<unsigned>& connectivity, element_type type, bool pair_non_manifold,
                                   dense2D<unsigned>& neighbors);

/// Appends every boundary of every element, inner ones from both sides.
///
/// @param connectivity  nodes x e
/// @param type          type of all columns
/// @param boundaries    appended to: boundary nodes x boundaries, in the order of elements and of their boundaries; 1
///                      row for edges, 2 for faces, 3 for ELT_TETRA4, 4 for other solids (`~0U` in row 3 of a triangle)
/// @return 0; -1 for a wrong row count; -2 for a type that is not accepted, or when `boundaries` is not empty and has
///         another row count; -199. `boundaries` is unchanged on every negative result
///
/// Cost: linear.
QEL_GRIDWORK_API int get_element_boundaries(const dense2D<unsigned>& connectivity, element_type type,
                                            dense2D<unsigned>& boundaries);

/// Appends the free boundaries of a mesh: those without a neighbour.
///
/// @param connectivity  nodes x e
/// @param neighbors     B x e, from get_neighbors()
/// @param type          type of all columns
/// @param boundaries    appended to, as by get_element_boundaries(); each keeps the direction that its element gives it
/// @return 0; -1 for a wrong row count; -2 for `neighbors` of another size or with an entry that is neither `~0U` nor
///         below e; -3 for a type that is not accepted; -4 when `boundaries` is not empty and has another row count;
///         -199. `boundaries` is unchanged on every negative result
///
/// Cost: linear; amortised over calls that append to one matrix.
QEL_GRIDWORK_API int get_mesh_boundaries(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors,
                                         element_type type, dense2D<unsigned>& boundaries);

/// Appends the slot codes of the boundaries without a neighbour.
///
/// In a mixed matrix, slots that an element does not have count as well; skip those with code % nbr_bound not below the
/// nbr_boundaries() of the element's own type.
///
/// @param connectivity  nodes x e
/// @param neighbors     B x e, from get_neighbors()
/// @param type          type of all columns
/// @param slots         appended to: codes, in increasing order
/// @param nbr_bound     overwritten: B; 0 for an empty connectivity and on a failed check of it
/// @return 0; -1 for a wrong row count; -2 for a type that is not accepted (`nbr_bound` is set) or `neighbors` of
///         another size; -199, also when a code does not fit 32 bits. `slots` is unchanged on every negative result
///
/// Cost: linear.
QEL_GRIDWORK_API int get_mesh_bounding_elements(const dense2D<unsigned>& connectivity,
                                                const dense2D<unsigned>& neighbors, element_type type,
                                                dense1D<unsigned>& slots, unsigned& nbr_bound);

/// Finds, for each given boundary, the element boundary that coincides with it.
///
/// Only elements that hold the first node of the boundary and that can be reached from its ancestor across boundaries
/// that hold it are looked at, in breadth-first order. The first one with the same direction wins, else the last one
/// with the opposite direction.
///
/// @param boundaries    boundary nodes x b, `~0U` in row 3 of a triangle among quadrangles
/// @param connectivity  nodes x e
/// @param neighbors     B x e, from get_neighbors()
/// @param ancestors     one element for each node, from get_ancestors(); `~0U` or missing: none
/// @param type          type of all columns of `connectivity`
/// @param slots         overwritten: b slot codes, `~0U` where nothing coincides
/// @param nbr_bound     overwritten: B; 0 without boundaries and on a failed check
/// @return 0; -1 for a wrong row count of `boundaries`; -2 for one of `connectivity`; -3 for `neighbors` of another
///         size or with an invalid entry; -4 for an ancestor that is neither `~0U` nor below e; -5 for a type that is
///         not accepted; -199, also when a code does not fit 32 bits. On a negative result `slots` is empty
///
/// Cost: linear in the input and in the elements round the first node of each boundary.
QEL_GRIDWORK_API int get_elements_on_boundaries(const dense2D<unsigned>& boundaries,
                                                const dense2D<unsigned>& connectivity,
                                                const dense2D<unsigned>& neighbors, const dense1D<unsigned>& ancestors,
                                                element_type type, dense1D<unsigned>& slots, unsigned& nbr_bound);

/// Finds for each node the last element that holds it. For every element type; entries `~0U` are skipped.
///
/// @param connectivity  nodes x e; when it is empty, nothing is done
/// @param ancestors     an empty one becomes N entries, `~0U` for nodes in no element. One that is not empty keeps its
///                      size and the entries of nodes that no element holds; nodes beyond its size are skipped
/// @return 0, or -199
///
/// Cost: linear.
QEL_GRIDWORK_API int get_ancestors(const dense2D<unsigned>& connectivity, dense1D<unsigned>& ancestors);

/// Lists for each node the elements that hold it, in compressed rows. For every element type.
///
/// @param connectivity  nodes x e; entries `~0U` are skipped
/// @param offsets       overwritten: N + 1 entries; the elements of node n are `elements[offsets[n]]` to
///                      `elements[offsets[n + 1] - 1]`. The one entry 0 when there is no node
/// @param elements      overwritten: in increasing order for each node; an element that holds a node twice is listed
///                      twice
/// @return 0, or -199 (also for 2^32 entries or more) with both outputs empty
///
/// Cost: linear.
QEL_GRIDWORK_API int get_connected_elements(const dense2D<unsigned>& connectivity, dense1D<unsigned>& offsets,
                                            dense1D<unsigned>& elements);

/// Lists for each node the other nodes of its elements, in compressed rows, as graph partitioners take them.
///
/// @param connectivity  nodes x e; entries `~0U` are skipped
/// @param offsets       overwritten: N + 1 entries, as by get_connected_elements()
/// @param adjacency     overwritten: each neighbour of a node once, in the order of its elements and of their rows; a
///                      node is not its own neighbour
/// @return 0, or -199 (also for 2^32 entries or more) with both outputs empty
///
/// Cost: linear in the sum over the nodes of the entries of their elements.
QEL_GRIDWORK_API int get_node_graph(const dense2D<unsigned>& connectivity, dense1D<unsigned>& offsets,
                                    dense1D<unsigned>& adjacency);

/// Appends the edges of a mesh, each once: pairs (lower node, higher node) in lexicographic order.
///
/// Edges join vertices; the other nodes of quadratic elements take no part. ELT_PYRAMID13, ELT_WEDGE15, ELT_HEXA20,
/// ELT_EDGE_MIX, ELT_NODE and ELT_UNKNOWN have no edges here.
///
/// @param connectivity  nodes x e
/// @param type          type of all columns
/// @param edges         appended to: 2 x edges; edges that it holds already are not looked at
/// @return 0; -1 for a wrong row count; -3 when `edges` is not empty and has not 2 rows; -199. An empty connectivity
///         gives 0 before any check. `edges` is unchanged on every negative result
///
/// Cost: expected linear.
QEL_GRIDWORK_API int copy_edges(const dense2D<unsigned>& connectivity, element_type type, dense2D<unsigned>& edges);

/// Appends the edges of the matrices [first, last), each once in all.
///
/// @param first,last  array of connectivity matrices
/// @param codes       their element types, one for each matrix
/// @param edges       appended to: 2 x edges
/// @return 0; -1 for a matrix that does not fit its type; -2 when `last` lies before `first`; -3 when `codes` has
///         another number of entries; -4 when `edges` is not empty and has not 2 rows; -199. `edges` is unchanged on
///         every negative result
///
/// Cost: expected linear.
QEL_GRIDWORK_API int copy_edges(const dense2D<unsigned>* first, const dense2D<unsigned>* last,
                                const dense1D<int>& codes, dense2D<unsigned>& edges);

}  // namespace gridwork
}  // namespace qel

#endif
