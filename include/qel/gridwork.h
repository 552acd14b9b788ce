/// @file
/// Everything that QEL Gridwork offers, and the first page of its manual.
///
/// A mesh is plain matrices: `coords`, a `dense2D<double>` with a column for each node, 2 or 3 rows; `connectivity`, a
/// `dense2D<unsigned>` with a column for each element and a row for each of its nodes, which are columns of `coords`,
/// counted from 0. An element_type says what the columns are. Free functions work on them; nothing is kept between calls.
///
/// The usual way through, from a file to a file:
///
/// | step | functions | header |
/// |---|---|---|
/// | read | STL_input(), WavefrontOBJ_input(), vtk_input(), medit_input(), NASTRAN_input(), FEMAP_input() | io.h |
/// | check | check_IDs() | elements.h |
/// | merge nodes that coincide or nearly do | merge() | search.h |
/// | drop elements that fell together, and unused nodes | remove_degenerated(), simplify() | search.h |
/// | find the closest node, nodes in a box | node_detector | search.h |
/// | find neighbours, free boundaries, edges | get_neighbors(), get_mesh_boundaries(), copy_edges() | topology.h |
/// | cut into parts, name their surfaces | get_subdomains(), get_colors_boundaries(), sort_elfes() | topology.h |
/// | measure | shape_qualities(), min_quality(), edge_qualities() | quality.h |
/// | move, repeat, mirror, cut open | translate(), rotate(), copy_mesh(), copy_sym_mesh(), clip() | transforms.h |
/// | prescribe sizes | bound_metrics(), minimum_metric() | metrics.h |
/// | write | vtk_output(), NASTRAN_output(), medit_output(), ... | io.h |
///
/// STL_input() merges and cleans what it reads; WavefrontOBJ_input() returns the file's own nodes.
///
/// **Views and copies** (dense.h). An array is a view of a block that counts its owners. `b = a` and `dense2D<double>
/// b(a)` share the block, `b.copy(a)` does not; `dense2D<double>(3, n, pointer)` is a view of your memory, which the
/// library never frees. So a mesh can be handed in without a copy, and a part of a matrix is a matrix.
///
/// **What is written where.** A function overwrites its outputs, or appends to them where it says so. An output that
/// shares a block with an input leaves it first. But functions that are said to work *in place* (shift_indices(),
/// change_indices(), translate(), rotate(), zoom(), bound_metrics(), overwrite_invalid_metrics(), and merge() and
/// simplify() with the connectivities that they renumber) write through to all views of the block, your memory included:
/// copy() first what has to stay.
///
/// **Results.** `int`: 0 or a count, where the function says so (readers: of what the mesh has no place for, so ask for
/// `result < 0`); a negative code when something is wrong, the first that the list at the function names; -199 when memory ran out. `bool`: false for "no". `unsigned`: `~0U` for "none".
/// message() puts codes into words (messages.h). Nothing is thrown, printed or logged.
///
/// **`~0U`** means none: no neighbour, nothing found, a row that an element of a mixed matrix does not need.
///
/// **Slots.** A slot is one boundary of one element, a face or an edge: boundary k of element e of a type with B
/// boundaries has the code e B + k.
///
/// **Counts.** Node indices and slot codes are 32-bit, so a mesh has at most 2^32 - 1 nodes; what does not fit gives
/// -199. Counts that are returned as `int` are exact up to 2^31 - 1. Sizes of arrays are 64-bit.
///
/// **What you are not told.** Entries of node lists that are no nodes are skipped where a function says so; writers other
/// than STL_output() do not report a full disk, and leave out what their format cannot hold (the list stands in io.h).
/// A null file name is one that cannot be opened. Node indices that a function does not say it checks are yours to check:
/// check_IDs() does it once for all.
///
/// **Threads.** Functions keep no state: calls on different outputs may run side by side, queries of one node_detector
/// too.
///
/// **Versions.** QEL_GRIDWORK_VERSION, QEL_GRIDWORK_VERSION_STRING and the three numbers are those of the headers a program
/// was compiled with (version.h); version() tells that of the library it runs with. A library of the same major number
/// and a later minor one may take the other's place.
///
/// Where to read on: the headers below, each the manual of its family; the page "Conventions" for what they have in
/// common; "Element types" for drawings of all local numbers.
#ifndef QEL_GRIDWORK_H
#define QEL_GRIDWORK_H

#include "qel/dense.h"
#include "qel/fixed.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/io.h"
#include "qel/gridwork/messages.h"
#include "qel/gridwork/metrics.h"
#include "qel/gridwork/quality.h"
#include "qel/gridwork/search.h"
#include "qel/gridwork/topology.h"
#include "qel/gridwork/transforms.h"
#include "qel/gridwork/version.h"
#include "qel/histogram.h"
#include "qel/lapack.h"

#endif
