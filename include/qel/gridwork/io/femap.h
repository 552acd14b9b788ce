/// @file
/// FEMAP neutral files. What holds for files of all formats is told in io.h.
#ifndef QEL_GRIDWORK_PUBLIC_IO_FEMAP_H
#define QEL_GRIDWORK_PUBLIC_IO_FEMAP_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

/// Reads the nodes and elements of a FEMAP neutral file of text, the elements in one block a type.
///
/// Blocks 403 and 404 are read, and of block 100 the version: elements have lists behind their flags from 4.5 on, and
/// where there is no version. All other blocks, and what stands outside of blocks, are skipped; the last block may lack
/// its end. Fields have commas, blanks or both between them.
///
/// | topology | type | slots of the nodes, in the order of NASTRAN_output() |
/// |---|---|---|
/// | 0; 1 | ELT_EDGE2; ELT_EDGE3 | 0 1; 0 1 2 |
/// | 2; 3 | ELT_TRIA3; ELT_TRIA6 | 0 1 2; 0 1 2, 4 5 6 |
/// | 4; 5 | ELT_QUAD4; ELT_QUAD8 | 0 .. 3; 0 .. 7 |
/// | 6; 10 | ELT_TETRA4; ELT_TETRA10 | 0 1 2 4; 0 1 2 4, 8 9 10, 12 13 14 |
/// | 14; 19 | ELT_PYRAMID5; ELT_PYRAMID13 | 0 .. 4; 0 .. 4, 8 .. 11, 12 .. 15 |
/// | 7; 11 | ELT_WEDGE6; ELT_WEDGE15 | 0 1 2 4 5 6; 0 1 2 4 5 6, 8 9 10, 12 13 14, 16 17 18 |
/// | 8; 12 | ELT_HEXA8; ELT_HEXA20 | 0 .. 7; 0 .. 19 |
///
/// An element whose middle nodes are not all there is one of its linear type. Where there is a node in a slot that the
/// topology leaves empty, the nodes are those of the first slots.
///
/// @param filename       path of the file
/// @param coords         overwritten: 3 x nodes, in the order of the file, also those of no element
/// @param connectivity   overwritten: rows of the largest type present x elements, `~0U` below shorter columns; as that
///                       of NASTRAN_input()
/// @param block_offsets  overwritten: the first column of each block, and the number of columns
/// @param block_types    overwritten: the type of each block
/// @param property_IDs   overwritten: one entry a column; a negative one modulo 2^32
/// @param element_IDs    overwritten: one entry a column
/// @param node_IDs       overwritten: one entry a node
/// @return 0; n > 0 when n elements (at most INT_MAX) of other topologies are left out
///         -1 when the file cannot be opened
///         -2 when there is no block, a number of a node or element cannot be read, is not finite or no ID from 1 to
///            2^31 - 1, a vertex is missing, or a record is cut short
///         -3 when an element of the result names a node that is not there
///         -5 when a node is defined again at another place; the same once more is ignored
///         -199 when memory ran out
///         On every negative result all outputs are empty.
///
/// Cost: linear in the size of the file; n log n for nodes whose IDs go beyond 4 n. Memory: that of the outputs twice.
QEL_GRIDWORK_API int FEMAP_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                                 dense1D<unsigned>& block_offsets, dense1D<int>& block_types,
                                 dense1D<unsigned>& property_IDs, dense1D<unsigned>& element_IDs,
                                 dense1D<unsigned>& node_IDs);

/// The same for the elements of one type; others are skipped, and their nodes not looked up.
///
/// @param filename      path of the file
/// @param coords        overwritten: 3 x nodes
/// @param connectivity  overwritten: nbr_nodes(type) x elements, in the order of the file; empty when there is none
/// @param type          any type with a matrix of its own; ELT_FACE_MIX and ELT_SOLID_MIX take the linear elements of
///                      their family
/// @return as above, and -4, before all others, for ELT_UNKNOWN, ELT_NODE and ELT_EDGE_MIX
QEL_GRIDWORK_API int FEMAP_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                                 element_type type);

/// Writes a mesh as a FEMAP neutral file of text, version 7, with 17 digits, so that coordinates come back bit for bit.
///
/// Blocks 100, 601 (an empty material), 402 (a property each, increasing, of the kind of its first element), 403 and
/// 404, with the topologies and slots of FEMAP_input(). ELT_QUAD9, ELT_PYRAMID14, ELT_WEDGE18 and ELT_HEXA27 are written
/// without their last nodes. IDs and elements that are not written are those of NASTRAN_output().
///
/// @param filename      path; an existing file is overwritten
/// @param coords        2 or 3 x nodes; with 2 rows z = 0 is written
/// @param connectivity  nodes x e, of any node indices; of a higher matrix the first rows count
/// @param type          any type; every element gets the property ID 1
/// @return 0, also for an empty `connectivity` (no file is created)
///         -1 when the file cannot be opened
///         -2 when `coords` has neither 2 nor 3 rows
///         -3 when `connectivity` has too few rows for `type`, or for ELT_SOLID_MIX other than 4, 5, 6 or 8
///         -199 when memory ran out
///
/// Cost: linear, and sorting the runs of equal properties, of which a list is made.
QEL_GRIDWORK_API int FEMAP_output(const char* filename, const dense2D<double>& coords,
                                  const dense2D<unsigned>& connectivity, element_type type);

/// The same for two matrices: the property IDs are 1 and 2.
///
/// @return as above; -3 also when a type of more than 8 nodes stands beside a matrix of ELT_SOLID_MIX that is not empty
QEL_GRIDWORK_API int FEMAP_output(const char* filename, const dense2D<double>& coords,
                                  const dense2D<unsigned>& connectivity1, const dense2D<unsigned>& connectivity2,
                                  element_type type1, element_type type2);

/// The same for a matrix that is cut into blocks of one type each, with the arguments of NASTRAN_output().
///
/// @return as above, and
///         -5 when `block_offsets` has not one entry more than `block_types`, decreases, or leaves the matrix
///         -6 when `property_IDs` has not one entry a column
QEL_GRIDWORK_API int FEMAP_output(const char* filename, const dense2D<double>& coords,
                                  const dense2D<unsigned>& connectivity, const dense1D<unsigned>& block_offsets,
                                  const dense1D<int>& block_types, const dense1D<unsigned>& property_IDs);

}  // namespace gridwork
}  // namespace qel

#endif
