/// @file
/// Meshes in parts, one on each rank of an MPI communicator: the optional component qel::gridwork_mpi.
///
/// Every result is that of the serial function on the whole mesh, whatever the number of ranks and whatever element lies
/// where. Nodes and elements have 64-bit numbers, their IDs, which are the indices that the serial library gives them; so
/// the order of IDs is the order of the serial mesh, and a tie goes to the lower ID. A part's matrices hold indices into the
/// part, in the order of IDs, so that all functions on single meshes may be called on a part as it is.
///
/// All functions that take a communicator are collective, and scalar arguments are the same on all ranks. All ranks return
/// the same code, that of the first check that fails anywhere:
/// - -199 when memory ran out on any rank, whatever else failed
/// - -200 when an MPI call failed; only where the communicator's error handler lets it return
/// - -1 when a part is none (see mesh_part), and as each function says
/// - -k when the k-th argument, a scalar, differs between ranks
///
/// On a negative code outputs are empty, and parts that a function changes are as they were, but for those it fills anew.
/// The communicator remains the caller's: it is neither kept nor duplicated nor freed, and no other one is used. MPI must be
/// initialised; one thread of a process at a time may call. Whatever is received is put in an order that does not depend on
/// its arrival.
///
/// Costs: e and n are the largest numbers of elements and nodes of a rank, s the nodes that it shares, P the ranks. Bytes are
/// those that a rank sends. Each exchange is a dense one: P counters a rank, meant for up to some 10^4 ranks.
#ifndef QEL_GRIDWORK_MPI_H
#define QEL_GRIDWORK_MPI_H

#include <mpi.h>

#include <cstdint>

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/fixed.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {
namespace mpi {

/// One rank's part of a mesh. Every element lies in one part, its nodes in all parts whose elements use them.
///
/// Both arrays of IDs strictly increase, indices are below n or `~0U`, all parts with nodes have one row count of
/// coordinates and all with elements one of connectivity; a part that does not keep this, anywhere, is refused with -1. Not
/// tested: a node has the same position in all parts, and each node is used. A part may be empty.
struct mesh_part {
  dense2D<double> coords;              ///< 2 or 3 x n: the nodes that its elements use
  dense1D<std::uint64_t> node_IDs;     ///< n, below 2^63
  dense2D<unsigned> connectivity;      ///< nodes x e, indices into this part's nodes
  dense1D<std::uint64_t> element_IDs;  ///< e, below 2^60
};

/// The other ranks that have a node, in compressed rows: for node i of a part `ranks[offsets[i]]` to
/// `ranks[offsets[i + 1] - 1]`, increasing.
struct node_sharing {
  dense1D<unsigned> offsets;  ///< n + 1
  dense1D<int> ranks;         ///< none for nodes that lie in this part alone
};

/// Reads a text or binary STL file, each rank a piece of it: qel::gridwork::STL_input() on all ranks.
///
/// Rank r has the triangles of its piece of the file that are left, in their order, so IDs grow with the ranks. The file must
/// be a regular one that all ranks see. No rank reads or keeps the whole, but where a text is so perverse that only one can
/// make out where its facets begin.
///
/// @param comm      communicator
/// @param filename  path, which may differ between ranks
/// @param part      overwritten: coordinates to the last bit, connectivity and order of the serial mesh
/// @return as STL_input(): 0, -1, -2 or -3; also -3 when the file is cut while it is read
///
/// Cost: linear in the piece of the file. Bytes: 40 for a position that other ranks are near to.
QEL_GRIDWORK_API int STL_input(MPI_Comm comm, const char* filename, mesh_part& part);

/// Writes the triangles of all parts as a binary STL file, in the order of their IDs: the bytes that the serial
/// STL_output() writes.
///
/// @param comm      communicator
/// @param filename  path; an existing file is overwritten
/// @param part      triangles (ELT_TRIA3)
/// @return 0
///         -1 when a part is none (nothing is written); when the file cannot be opened, or written in full
///         -2 when coordinates have neither 2 nor 3 rows (the file is created and left empty)
///         -3 when elements are no triangles, or more than 2^31 - 1 in all (the file is created and left empty)
///
/// Cost: linear; 64 bytes for a triangle whose place in the file is among those of another rank.
QEL_GRIDWORK_API int STL_output(MPI_Comm comm, const char* filename, const mesh_part& part);

/// Makes parts of meshes that each rank has for itself: the whole mesh is these one behind the other, rank after rank.
///
/// Nothing is merged. Nodes that no element uses have a number, but lie in no part.
///
/// @param comm          communicator
/// @param coords        2 or 3 x nodes of this rank
/// @param connectivity  nodes x elements of this rank
/// @param part          overwritten
/// @return 0; -1 when row counts differ between ranks, or an index is neither `~0U` nor below the nodes
///
/// Cost: linear; bytes: none.
QEL_GRIDWORK_API int make_part(MPI_Comm comm, const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                               mesh_part& part);

/// Merges all nodes that lie within `tol` of one another: qel::gridwork::merge(coords, new_IDs, tol) on the whole mesh,
/// whose map is applied to all elements.
///
/// A merged node has the ID and the position of its survivor; elements keep theirs. IDs of nodes then have gaps, which
/// simplify() closes.
///
/// @param comm    communicator
/// @param part    changed in place
/// @param tol     distance, not negative, whose square is a finite number
/// @param merged  overwritten: number of merged nodes of the whole mesh
/// @return 0; -1 also for a row count of coordinates other than 2 or 3; -3 for a negative or NaN `tol`, or one that differs;
///         -201 when the square of `tol` overflows. Nothing is changed on a negative result
///
/// Cost: expected linear in n plus the number of close pairs. Bytes: 12 for a cell of some eight positions where
/// nodes of several ranks may meet, 40 for a position in a cell that several do touch, twice that where a tolerance counts and
/// several nodes of the rank lie there; a byte or two for every node at such positions. A tolerance near the size of the mesh
/// brings all positions to one rank.
QEL_GRIDWORK_API int merge(MPI_Comm comm, mesh_part& part, double tol, std::uint64_t& merged);

/// Removes the elements that hold a node twice: qel::gridwork::remove_degenerated() on the whole mesh.
///
/// The others are numbered anew from 0, in their order. Nodes that no element uses any more leave the part.
///
/// @param comm     communicator
/// @param part     changed in place
/// @param strict   true: a repeated `~0U` counts too
/// @param removed  overwritten: number of removed elements of the whole mesh
/// @return 0; -3 when `strict` differs. Nothing is changed on a negative result
///
/// Cost: linear, up to a logarithm. Bytes: 16 for an element whose ID lies in the range of another rank.
QEL_GRIDWORK_API int remove_degenerated(MPI_Comm comm, mesh_part& part, bool strict, std::uint64_t& removed);

/// Numbers the nodes that elements use anew from 0, in their order: qel::gridwork::simplify() on the whole mesh.
///
/// @param comm   communicator
/// @param part   changed in place: IDs of nodes, and nodes that no element uses
/// @param nodes  overwritten: number of nodes of the whole mesh
/// @return 0, or a code of all functions; nothing is changed then
///
/// Cost: linear, up to a logarithm. Bytes: 16 for a node whose ID lies in the range of another rank.
QEL_GRIDWORK_API int simplify(MPI_Comm comm, mesh_part& part, std::uint64_t& nodes);

/// Finds the other ranks that have each node of a part.
///
/// @param comm     communicator
/// @param part     part
/// @param sharing  overwritten
/// @return 0, or a code of all functions
///
/// Cost: linear in n, up to a logarithm. Bytes: 8 for a node whose ID lies in the range of another rank, and for each pair of
/// ranks that share a node.
QEL_GRIDWORK_API int share_nodes(MPI_Comm comm, const mesh_part& part, node_sharing& sharing);

/// Finds the element across each boundary of each element: qel::gridwork::get_neighbors() on the whole mesh.
///
/// @param comm               communicator
/// @param part               part
/// @param type               type of all elements
/// @param sharing            of this part, from share_nodes()
/// @param pair_non_manifold  what becomes of boundaries that three or more slots share, on whichever ranks
/// @param neighbors          overwritten: boundaries x e; IDs of elements, `~0` where there is none
/// @return 0; -1 also for a wrong row count; -2 for a type that is not accepted; -3, -5 for arguments that differ; -4 when
///         `sharing` does not go with the part
///
/// Cost: that of the serial function on the part. Bytes: at most 48 for each boundary all of whose nodes another rank has.
QEL_GRIDWORK_API int get_neighbors(MPI_Comm comm, const mesh_part& part, element_type type, const node_sharing& sharing,
                                   bool pair_non_manifold, dense2D<std::uint64_t>& neighbors);

/// Lists the free boundaries of a part's elements, those without a neighbour. Not collective.
///
/// The columns of all parts, ordered by slot, are those of qel::gridwork::get_mesh_boundaries() on the whole mesh.
///
/// @param part        part
/// @param type        type of all elements
/// @param neighbors   boundaries x e, from get_neighbors()
/// @param boundaries  overwritten: node IDs, boundary nodes x boundaries; `~0` in row 3 of a triangle among quadrangles
/// @param slots       overwritten: ID of the element x nbr_boundaries(type) + boundary, increasing
/// @return 0; -1 when the part is none or has a wrong row count; -2 for `neighbors` of another size; -3 for a type that is not
///         accepted; -199
///
/// Cost: linear.
QEL_GRIDWORK_API int get_mesh_boundaries(const mesh_part& part, element_type type,
                                         const dense2D<std::uint64_t>& neighbors, dense2D<std::uint64_t>& boundaries,
                                         dense1D<std::uint64_t>& slots);

/// Colours the connected parts of the whole mesh: qel::gridwork::get_subdomains(), without walls.
///
/// @param comm       communicator
/// @param part       part
/// @param type       type of all elements
/// @param sharing    of this part, from share_nodes()
/// @param neighbors  boundaries x e, from get_neighbors()
/// @param colors     overwritten: e; the colour of each element, counted from 0 in the order of the first elements
/// @param parts      overwritten: number of connected parts of the whole mesh
/// @return 0; -1 also for a wrong row count; -2 for a type that is not accepted; -3 when it differs; -4 when `sharing` does
///         not go with the part; -5 for `neighbors` of another size
///
/// Cost: linear, up to a logarithm. Bytes: 16 for each boundary between ranks; then some 100 for each connected part of a
/// part, in rounds as many as the logarithm of these.
QEL_GRIDWORK_API int get_subdomains(MPI_Comm comm, const mesh_part& part, element_type type,
                                    const node_sharing& sharing, const dense2D<std::uint64_t>& neighbors,
                                    dense1D<std::uint64_t>& colors, std::uint64_t& parts);

/// Lists for each node of a part the elements of all ranks that hold it: qel::gridwork::get_connected_elements().
///
/// @param comm      communicator
/// @param part      part
/// @param sharing   of this part, from share_nodes()
/// @param offsets   overwritten: n + 1; the elements of node i are `elements[offsets[i]]` to `elements[offsets[i + 1] - 1]`
/// @param elements  overwritten: IDs, increasing for each node; an element that holds a node twice is listed twice
/// @return 0; -3 when `sharing` does not go with the part
///
/// Cost: linear, up to a logarithm. Bytes: 16 for each element of a shared node and each other rank that has it.
QEL_GRIDWORK_API int get_connected_elements(MPI_Comm comm, const mesh_part& part, const node_sharing& sharing,
                                            dense1D<unsigned>& offsets, dense1D<std::uint64_t>& elements);

/// Numbers the edges of the whole mesh in the order of qel::gridwork::copy_edges().
///
/// @param comm      communicator
/// @param part      part
/// @param type      type of all elements
/// @param edges     overwritten: 2 x edges of the part, indices of the part, as copy_edges() lists them
/// @param edge_IDs  overwritten: the number of each, increasing; the same in all parts that have it
/// @param total     overwritten: number of edges of the whole mesh
/// @return 0; -1 also for a wrong row count; -3 when `type` differs
///
/// Cost: that of copy_edges(), and a logarithm for each edge. Bytes: 24 for an edge whose lower node's ID lies in the range of
/// another rank.
QEL_GRIDWORK_API int number_edges(MPI_Comm comm, const mesh_part& part, element_type type, dense2D<unsigned>& edges,
                                  dense1D<std::uint64_t>& edge_IDs, std::uint64_t& total);

/// Parts elements by a curve that fills space (G. M. Morton, 1966): near elements come together, as many to each part.
///
/// The result depends on the mesh and on `parts`, not on where elements lie now. Elements whose centroids are at one place, to
/// 2^-21 of the mesh's extent in space and 2^-31 in the plane, go to one part.
///
/// @param comm     communicator
/// @param part     part
/// @param parts    number of parts, above 0, usually that of the ranks
/// @param targets  overwritten: e; the part of each element, below `parts`
/// @return 0; -3 when `parts` is not above 0, or differs
///
/// Cost: e log e, and 63 reductions of `parts` numbers.
QEL_GRIDWORK_API int partition_by_curve(MPI_Comm comm, const mesh_part& part, int parts, dense1D<int>& targets);

/// Parts the graph of elements and their neighbours by PT-Scotch (F. Pellegrini), so that few boundaries lie between parts.
///
/// Nothing is promised of the result but about as many elements in each part: it may differ from run to run. PT-Scotch
/// duplicates the communicator for its own use, and writes what it finds wrong to the standard error output.
///
/// @param comm       communicator
/// @param part       part
/// @param neighbors  boundaries x e, from get_neighbors()
/// @param parts      number of parts, above 0, usually that of the ranks
/// @param targets    overwritten: e; the part of each element, below `parts`
/// @return 0; -3 for `neighbors` of another size; -4 when `parts` is not above 0, or differs; -199 also when PT-Scotch
///         fails; -202 when the component was built without PT-Scotch
///
/// Cost: that of PT-Scotch. Bytes before that: 32 for an element whose ID lies in the range of another rank, 16 to 32 for a
/// neighbour on another rank.
QEL_GRIDWORK_API int partition_graph(MPI_Comm comm, const mesh_part& part, const dense2D<std::uint64_t>& neighbors,
                                     int parts, dense1D<int>& targets);

/// Moves elements to other ranks, as any partitioner wishes. IDs and results of all functions stay.
///
/// @param comm     communicator
/// @param part     changed; left as it was on a negative result
/// @param targets  e; the rank that each element goes to
/// @return 0; -3 when `targets` has not e entries, or one that is no rank
///
/// Cost: linear, up to a logarithm. Bytes: 8 (rows + 1) for an element that moves, 32 for each of its nodes.
QEL_GRIDWORK_API int migrate(MPI_Comm comm, mesh_part& part, const dense1D<int>& targets);

/// Copies the elements of other ranks that hold a node of this part: a layer around it, in a part of its own.
///
/// @param comm     communicator
/// @param part     part
/// @param sharing  of this part, from share_nodes()
/// @param ghosts   overwritten: these elements, and all of their nodes
/// @param owners   overwritten: the rank of each
/// @return 0; -3 when `sharing` does not go with the part
///
/// Cost: linear in e and in the layer. Bytes: as for migrate().
QEL_GRIDWORK_API int get_ghosts(MPI_Comm comm, const mesh_part& part, const node_sharing& sharing, mesh_part& ghosts,
                                dense1D<int>& owners);

/// The worst shape quality of the whole mesh and the first element that has it: qel::gridwork::min_quality().
///
/// @param comm     communicator
/// @param part     part
/// @param type     as for qel::gridwork::shape_qualities()
/// @param qmin     overwritten: the smallest quality; 1 on a negative result
/// @param element  overwritten: ID of its element; `~0` when none has a quality below 1, and on a negative result
/// @return 0; else as shape_qualities(); -3 also when `type` differs
///
/// Cost: linear; bytes: those of two numbers.
QEL_GRIDWORK_API int min_quality(MPI_Comm comm, const mesh_part& part, element_type type, double& qmin,
                                 std::uint64_t& element);

/// Counts the shape qualities of the whole mesh in equal bins, and takes their mean.
///
/// The mean is that of qualities rounded to multiples of 2^-52, whose sum is exact: the same on any number of ranks.
///
/// @param comm          communicator
/// @param part          part
/// @param type          as for qel::gridwork::shape_qualities()
/// @param lower, upper  range of the bins, as of misc::histogram; qualities beyond it are in none
/// @param bins          as many entries as there are to be bins; overwritten on success
/// @param mean          overwritten: mean of all qualities; 0 without elements, and on a negative result
/// @return 0; else as shape_qualities(); -3, -4, -5, -6 also when `type`, a bound or the number of bins differs; -5 when
///         `lower` is not below `upper`
///
/// Cost: linear; bytes: those of the bins.
QEL_GRIDWORK_API int quality_histogram(MPI_Comm comm, const mesh_part& part, element_type type, double lower,
                                       double upper, dense1D<std::uint64_t>& bins, double& mean);

/// The closed box around all nodes; of nodes in the plane with z = 0. A NaN counts nowhere, and -0 may stand for 0.
///
/// @param comm        communicator
/// @param part        part
/// @param Pmin, Pmax  overwritten: corners; infinity and -infinity where there is no node
/// @return 0, or a code of all functions
///
/// Cost: linear; bytes: those of six numbers.
QEL_GRIDWORK_API int bounding_box(MPI_Comm comm, const mesh_part& part, vector_fixed<double, 3>& Pmin,
                                  vector_fixed<double, 3>& Pmax);

}  // namespace mpi
}  // namespace gridwork
}  // namespace qel

#endif
