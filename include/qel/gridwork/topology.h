/// @file
/// Adjacency and boundaries of element meshes: neighbours, boundaries, sub-domains, node graph, edges.
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
/// Two boundaries are the same when they hold the same nodes in the same cyclic order, in either direction. Faces are
/// compared from their smallest node on. Where a degenerate face holds that twice, the first one counts, so that it may
/// differ from a face that lists the same nodes from another one on.
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
///         below e; -4 when `boundaries` is not empty and has another row count; -3 for a type that is not accepted;
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

/// Colours the connected parts of a mesh. Elements are connected by the boundaries that they share.
///
/// Colours count from 0 in the order of the first elements of the parts. Links of `neighbors` connect both ways, even where
/// they are not returned: a boundary of three or more elements joins them when `neighbors` comes from get_neighbors() with
/// `pair_non_manifold` true, and parts them when it was false.
///
/// @param neighbors  B x e, from get_neighbors()
/// @param colors     overwritten: e entries, the colour of each element; empty on a negative result
/// @return the number of parts; -1 for an entry of `neighbors` that is neither `~0U` nor below e; -199, also when the
///         number does not fit the result. An empty `neighbors` gives 0 and empty `colors`
///
/// Cost: linear in e * B, up to a logarithm. In practice linear.
QEL_GRIDWORK_API int get_subdomains(const dense2D<unsigned>& neighbors, dense1D<unsigned>& colors);

/// As above, with walls: boundaries that connect nothing.
///
/// A wall closes every slot that coincides with it, whichever of the slots, first node or direction names it. What is no
/// boundary of any element is no wall: `~0U`, a slot that its element in a mixed matrix does not have, any other nodes.
/// Walls by slots come from get_colors_boundaries() or get_elements_on_boundaries(), walls by nodes from a surface file.
///
/// @param connectivity  nodes x e; node indices may be any 32-bit numbers
/// @param neighbors     B x e, from get_neighbors()
/// @param type          type of all columns
/// @param walls         slot codes, or boundary nodes x walls with `~0U` in row 3 of a triangle among quadrangles; when
///                      empty, there are none
/// @param colors        overwritten: e entries, the colour of each element; empty on a negative result
/// @return the number of parts; -1 for a wrong row count; -2 for `neighbors` of another size or with an entry that is
///         neither `~0U` nor below e; -3 for a type that is not accepted; -4 for a slot that is neither `~0U` nor below
///         e * B, or a matrix of walls of another row count; -199, also when a slot code does not fit 32 bits or the
///         number does not fit the result. An empty connectivity gives 0 and empty `colors` before any check
///
/// Cost: linear in e * B, up to a logarithm, and expected linear in the walls.
/// @{
QEL_GRIDWORK_API int get_subdomains(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors,
                                    element_type type, const dense1D<unsigned>& walls, dense1D<unsigned>& colors);
QEL_GRIDWORK_API int get_subdomains(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors,
                                    element_type type, const dense2D<unsigned>& walls, dense1D<unsigned>& colors);
/// @}

/// Appends the boundaries between elements of different colours, and the two colours of each.
///
/// Both forms list the same, in the order of elements and of their boundaries: as slot codes, or as nodes.
///
/// | `mode` | lists |
/// |---|---|
/// | 0 | boundaries between two colours, once, from the side of the lower colour |
/// | 1 | the same, and the outer boundaries: those with nothing across |
/// | 2 | the whole boundary of every colour: those between two colours from both sides, and the outer ones |
///
/// An element of colour `~0U` counts as not there: it has no boundaries, and those of its neighbours towards it are outer
/// ones. A link that is not returned, as where three elements share a boundary, is listed in modes 0 and 1 from the side
/// that has it, whichever colour is lower: no slot that coincides leads back.
///
/// @param connectivity  nodes x e; node indices may be any 32-bit numbers
/// @param neighbors     B x e, from get_neighbors()
/// @param type          type of all columns
/// @param colors        one for each element, any numbers
/// @param mode          0, 1 or 2
/// @param slots         appended to: slot codes, in increasing order; only slots that their elements have
/// @param pairs         appended to: 2 x boundaries; the colour of the element, then the colour across, `~0U` for outside
/// @return 0; -1 for a wrong row count; -2 for `neighbors` of another size or with an entry that is neither `~0U` nor
///         below e; -3 for a type that is not accepted; -4 when `colors` has not e entries; -5 for a `mode` above 2; -6
///         when boundaries are appended to a matrix that is not empty and has another row count; -7 when `pairs` is not
///         empty and has not 2 rows; -199, also when a slot code does not fit 32 bits. The outputs are unchanged on every
///         negative result. An empty connectivity gives 0 before any check
///
/// Cost: linear.
QEL_GRIDWORK_API int get_colors_boundaries(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors,
                                           element_type type, const dense1D<unsigned>& colors, unsigned mode,
                                           dense1D<unsigned>& slots, dense2D<unsigned>& pairs);

/// As above, as nodes: `boundaries` (boundary nodes x boundaries) is appended to, with rows, padding and direction as by
/// get_element_boundaries().
QEL_GRIDWORK_API int get_colors_boundaries(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors,
                                           element_type type, const dense1D<unsigned>& colors, unsigned mode,
                                           dense2D<unsigned>& boundaries, dense2D<unsigned>& pairs);

/// Sorts slots into groups by the colours that they separate: each interface, seen from one side, becomes one run.
///
/// Slots belong to one group when the colour of their element and the colour across, `~0U` where there is nothing, are the
/// same. The groups come in lexicographic order of these two, the slots of a group in the order given. Entries `~0U`, which
/// get_elements_on_boundaries() leaves where nothing coincides, come last and belong to no group. A group has one
/// orientation: the other sides of its slots are another group.
///
/// @param neighbors  B x e, from get_neighbors()
/// @param colors     one for each element, any numbers
/// @param slots      sorted: slot codes or `~0U`
/// @param order      overwritten: where the slots came from, `new_slots[i] == old_slots[order[i]]`
/// @param pairs      overwritten: 2 x g; the two colours of each group
/// @param offsets    overwritten: g + 1 entries; the slots of group i are `slots[offsets[i]]` to
///                   `slots[offsets[i + 1] - 1]`
/// @return the number g of groups; -2 when `colors` has not e entries; -3 for a slot that is neither `~0U` nor below e * B;
///         -1 when the entry of `neighbors` at a slot is neither `~0U` nor below e (other entries are not read); -199.
///         Nothing changes on a negative result
///
/// Cost: expected linear in the slots, and g log g; whatever the size of the mesh.
QEL_GRIDWORK_API int sort_elfes(const dense2D<unsigned>& neighbors, const dense1D<unsigned>& colors,
                                dense1D<unsigned>& slots, dense1D<unsigned>& order, dense2D<unsigned>& pairs,
                                dense1D<unsigned>& offsets);

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
/// @param types       their element types, one for each matrix
/// @param edges       appended to: 2 x edges
/// @return 0; -2 when `last` lies before `first`; -3 when `types` has another number of entries; -4 when `edges` is not
///         empty and has not 2 rows; -1 for a matrix that does not fit its type; -199. `edges` is unchanged on every
///         negative result
///
/// Cost: expected linear.
QEL_GRIDWORK_API int copy_edges(const dense2D<unsigned>* first, const dense2D<unsigned>* last,
                                const dense1D<int>& types, dense2D<unsigned>& edges);

}  // namespace gridwork
}  // namespace qel

#endif
