/// @file
/// NASTRAN bulk data. What holds for files of all formats is told in io.h.
#ifndef QEL_GRIDWORK_PUBLIC_IO_NASTRAN_H
#define QEL_GRIDWORK_PUBLIC_IO_NASTRAN_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

/// Writes a mesh as a NASTRAN bulk data deck: GRID* cards in large fields, elements as cards with commas.
///
/// IDs are positions from 1 on, those of elements over all matrices or blocks, also of elements that are not written.
///
/// | type | card | nodes, by local number |
/// |---|---|---|
/// | ELT_EDGE2, ELT_EDGE3 | CBAR | 0 1 |
/// | ELT_TRIA3; ELT_TRIA6 | CTRIA3; CTRIA6 | 0 1 2; 0 1 2 5 3 4 |
/// | ELT_QUAD4; ELT_QUAD8, ELT_QUAD9 | CQUAD4; CQUAD8 | 0 .. 3; 0 .. 7 |
/// | ELT_TETRA4; ELT_TETRA10 | CTETRA | 0 2 1 3; 0 2 1 3 5 4 6 7 9 8 |
/// | ELT_PYRAMID5; ELT_PYRAMID13, ELT_PYRAMID14 | CPYRAM | 0 .. 4; 0 .. 12 |
/// | ELT_WEDGE6; ELT_WEDGE15, ELT_WEDGE18 | CPENTA | 0 .. 5; 0 .. 5 11 9 10 6 7 8 14 12 13 |
/// | ELT_HEXA8; ELT_HEXA20, ELT_HEXA27 | CHEXA | 0 .. 7; 0 .. 11 16 .. 19 12 .. 15 |
/// | ELT_FACE_MIX, ELT_SOLID_MIX | that of each element | |
/// | ELT_UNKNOWN, ELT_NODE, ELT_EDGE_MIX | none, not written | |
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
/// Cost: linear.
QEL_GRIDWORK_API int NASTRAN_output(const char* filename, const dense2D<double>& coords,
                                    const dense2D<unsigned>& connectivity, element_type type);

/// The same for two matrices: the property IDs are 1 and 2.
///
/// @return as above; -3 also when a type of more than 8 nodes stands beside a matrix of ELT_SOLID_MIX that is not empty
QEL_GRIDWORK_API int NASTRAN_output(const char* filename, const dense2D<double>& coords,
                                    const dense2D<unsigned>& connectivity1, const dense2D<unsigned>& connectivity2,
                                    element_type type1, element_type type2);

/// The same for a matrix that is cut into blocks of one type each.
///
/// @param filename       path; an existing file is overwritten
/// @param coords         2 or 3 x nodes; with 2 rows z = 0 is written
/// @param connectivity   rows for the largest type x e
/// @param block_offsets  one entry more than blocks: block k holds the columns from `block_offsets[k]` up to but
///                       excluding `block_offsets[k + 1]`; columns of no block are not written
/// @param block_types    the type of each block
/// @param property_IDs   one entry a column
/// @return as above, and
///         -5 when `block_offsets` has not one entry more than `block_types`, decreases, or leaves the matrix
///         -6 when `property_IDs` has not one entry a column
QEL_GRIDWORK_API int NASTRAN_output(const char* filename, const dense2D<double>& coords,
                                    const dense2D<unsigned>& connectivity, const dense1D<unsigned>& block_offsets,
                                    const dense1D<int>& block_types, const dense1D<unsigned>& property_IDs);

/// Reads the nodes and elements of NASTRAN bulk data, the elements in one block a type.
///
/// GRID and GRDSET; CORD1R, CORD1C, CORD1S, CORD2R, CORD2C and CORD2S, from which nodes get their places in the basic
/// system; and the cards of elements. All other cards are skipped with the lines that go on with them, whatever they
/// hold. Names may be in small letters, fields fixed (of 8 or 16 columns, tabs up to the next multiple of 8) or free.
///
/// | card | type | nodes, by local number |
/// |---|---|---|
/// | CBAR CBEAM CROD CTUBE CBEND CONROD; CBEAM3 | ELT_EDGE2; ELT_EDGE3 | in order |
/// | CTRIA3 CTRIAR; CTRIA6 | ELT_TRIA3; ELT_TRIA6 | 0 1 2; 0 1 2 5 3 4 |
/// | CQUAD4 CQUADR CSHEAR; CQUAD8; CQUAD | ELT_QUAD4; ELT_QUAD8; ELT_QUAD9 | in order |
/// | CTETRA | ELT_TETRA4, ELT_TETRA10 | as NASTRAN_output() |
/// | CPYRAM CPYRA | ELT_PYRAMID5, ELT_PYRAMID13 | in order |
/// | CPENTA | ELT_WEDGE6, ELT_WEDGE15 | as NASTRAN_output() |
/// | CHEXA | ELT_HEXA8, ELT_HEXA20 | as NASTRAN_output() |
///
/// An element whose middle nodes are not all there is one of its linear type. A blank property is the element's ID;
/// that of CONROD is 0. Lines in front of the first BEGIN count only if there is none, sections of superelements and
/// other parts not at all; ENDDATA ends the model. An INCLUDE statement is counted, and no other file opened. Of a line
/// in free fields 4096 bytes may be used. Elements may stand before their nodes, and their IDs may repeat. Of equal
/// system IDs the first counts; a system that no node needs is not looked at. Angles are in degrees.
///
/// @param filename       path of the file
/// @param coords         overwritten: 3 x nodes, in the order of the file, also those of no element
/// @param connectivity   overwritten: rows of the largest type present x elements, `~0U` below shorter columns. The types
///                       are in the order of element_type, none of them mixed, the elements of a type in that of the
///                       file. connectivity.sub_matrix(0, first, nbr_nodes(type), count) is the matrix of a type
/// @param block_offsets  overwritten: the first column of each block, and the number of columns
/// @param block_types    overwritten: the type of each block
/// @param property_IDs   overwritten: one entry a column; a negative one modulo 2^32
/// @param element_IDs    overwritten: one entry a column
/// @param node_IDs       overwritten: one entry a node
/// @return 0, also for a file without cards; n > 0 when n INCLUDE statements (at most INT_MAX) are not followed
///         -1 when the file cannot be opened
///         -2 when a card that is read has a field that is no number (or one that is not finite, or no ID from 1 to
///            2^31 - 1), a vertex is missing, or a field is replicated by "="
///         -3 when an element of the result, or a coordinate system that is used, names a node that is not there
///         -5 when a node is defined again with another place or system; the same once more is ignored
///         -6 when a coordinate system that is used is missing, leads back to itself, or has its three points in line
///            (to a sine of 1e-12)
///         -199 when memory ran out
///         On every negative result all outputs are empty.
///
/// Cost: linear in the size of the file; n log n for nodes whose IDs go beyond 4 n. Memory: that of the outputs twice.
QEL_GRIDWORK_API int NASTRAN_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
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
QEL_GRIDWORK_API int NASTRAN_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                                   element_type type);

}  // namespace gridwork
}  // namespace qel

#endif
