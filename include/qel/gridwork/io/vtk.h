/// @file
/// VTK files. What holds for files of all formats is told in io.h.
#ifndef QEL_GRIDWORK_PUBLIC_IO_VTK_H
#define QEL_GRIDWORK_PUBLIC_IO_VTK_H

#include <cstdio>

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

/// Appends the elements of a matrix to a list of VTK cells: the number of nodes of a cell, then its nodes.
///
/// An element becomes a cell of its vertices (line 3, triangle 5, quadrangle 9, tetrahedron 10 with its last two nodes
/// swapped, pyramid 14, wedge 13, hexahedron 12); its other nodes, if it has any, become a poly-vertex (2) behind it.
///
/// @param connectivity  nodes x e, of any node indices
/// @param type          a plain type, but not ELT_UNKNOWN, ELT_NODE, ELT_EDGE_MIX, ELT_PYRAMID13 or ELT_WEDGE15
/// @param nbr_cells     increased by the number of cells appended
/// @param cells         appended: the cells
/// @param cell_types    appended: one type of VTK's a cell
/// @return 0
///         -1 when `connectivity` has not the row count of `type`
///         -2 when `type` is not accepted
///         -199 when memory ran out, or `nbr_cells` would exceed 2^32 - 1; nothing is appended
///
/// Cost: linear in e.
QEL_GRIDWORK_API int vtk_convert(const dense2D<unsigned>& connectivity, element_type type, unsigned& nbr_cells,
                                 dense1D<unsigned>& cells, dense1D<unsigned>& cell_types);

/// Writes nodes and a list of cells, as vtk_convert() makes it, as a legacy VTK file of text to an open stream.
///
/// @param stream      stays open; what it takes is not checked
/// @param coords      2 or 3 x nodes; with 2 rows z = 0 is written
/// @param nbr_cells   cells that are written, if the list has that many
/// @param cells       the number of nodes of a cell, then its nodes from 0 on; for all cells
/// @param cell_types  one type of VTK's a cell
/// @return 0
///         -1 when `stream` is null
///         -2 when `coords` has neither 2 nor 3 rows
///         -199 when memory ran out
///
/// Cost: linear.
QEL_GRIDWORK_API int vtk_output(std::FILE* stream, const dense2D<double>& coords, unsigned nbr_cells,
                                const dense1D<unsigned>& cells, const dense1D<unsigned>& cell_types);

/// Writes a mesh as a legacy VTK file of text ("UNSTRUCTURED_GRID"), with the cells that vtk_convert() makes.
///
/// The elements of a mixed matrix are written by node count, in increasing count.
///
/// @param filename      path; an existing file is overwritten
/// @param coords        2 or 3 x nodes; with 2 rows z = 0 is written
/// @param connectivity  nodes x e
/// @param type          a mixed type or one that vtk_convert() accepts
/// @return 0
///         -1 when the file cannot be opened
///         -2 when `coords` has neither 2 nor 3 rows, or a type is not accepted
///         -3 when a matrix is not one of its type on these nodes
///         -4 when `first` lies after `last`
///         -5 when `types` has not one entry a matrix
///         -199 when memory ran out
///
/// Cost: linear.
QEL_GRIDWORK_API int vtk_output(const char* filename, const dense2D<double>& coords,
                                const dense2D<unsigned>& connectivity, element_type type);

/// The same for two matrices, one after the other.
QEL_GRIDWORK_API int vtk_output(const char* filename, const dense2D<double>& coords,
                                const dense2D<unsigned>& connectivity1, const dense2D<unsigned>& connectivity2,
                                element_type type1, element_type type2);

/// The same for a range of matrices, one after the other.
QEL_GRIDWORK_API int vtk_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>* first,
                                const dense2D<unsigned>* last, const dense1D<int>& types);

/// Reads a legacy VTK file, text or binary, of an unstructured grid or of polydata.
///
/// Any version; cells as counts and nodes or as offsets and connectivity; keywords and names of types in any case,
/// sections in any order up to the data of points or cells, which are not read. Numbers of a text are doubles, whatever
/// their type; words of more than 4095 bytes cannot be read. Numbers of a binary file are big-endian: `long` and
/// `vtktypeint64` have 8 bytes, `vtkIdType` has 4.
///
/// | VTK's type | element | nodes, by local number |
/// |---|---|---|
/// | 3; 21 | ELT_EDGE2; ELT_EDGE3 | in order |
/// | 5; 22 | ELT_TRIA3; ELT_TRIA6 | in order; 0 1 2 5 3 4 |
/// | 9; 8 | ELT_QUAD4 | in order; 0 1 3 2 |
/// | 23; 28 | ELT_QUAD8; ELT_QUAD9 | in order |
/// | 10; 24 | ELT_TETRA4; ELT_TETRA10 | 0 1 3 2; 0 1 3 2 6 8 7 5 4 9 |
/// | 14; 27 | ELT_PYRAMID5; ELT_PYRAMID13 | in order |
/// | 13 | ELT_WEDGE6 | in order |
/// | 26; 32 | ELT_WEDGE15; ELT_WEDGE18 | 0 .. 5 11 9 10 14 12 13 6 7 8, and 17 15 16 |
/// | 12; 11 | ELT_HEXA8 | in order; 0 1 3 2 4 5 7 6 |
/// | 25; 29 | ELT_HEXA20; ELT_HEXA27 | in order |
/// | 4, lines | ELT_EDGE2, one from each node to the next | |
/// | 7, polygons of 3 and 4 nodes | ELT_TRIA3, ELT_QUAD4 | in order |
/// | 6, triangle strips | ELT_TRIA3, every second one turned | |
///
/// A linear cell followed by a poly-vertex (2) with the other nodes of a quadratic element, all distinct, is that
/// element: vtk_output() writes them so. Nodes of a cell that its type does not have are dropped. Wedges are read as they
/// stand, although files do not agree on their orientation.
///
/// @param filename       path of the file, which need not be seekable
/// @param coords         overwritten: 3 x nodes, in the order of the file
/// @param connectivity   overwritten: nodes of the largest type present x elements, `~0U` below shorter columns; one
///                       block a type, elements of a block in the order of the file; 0 x 0 without elements.
///                       `connectivity.sub_matrix(0, first, nbr_nodes(type), count)` is a type's matrix
/// @param block_offsets  overwritten: the first column of each block, and the number of all
/// @param block_types    overwritten: the types that are there, in increasing order
/// @param cell_IDs       overwritten: one entry an element, the number of its cell from 0 on, by which data of cells are
///                       found; of the first one for an element of two. Cells of polydata are numbered in the order
///                       vertices, lines, polygons, strips
/// @return 0, or the number of cells, at most INT_MAX, that have no element: vertices, other poly-vertices, polygons of
///         more than 4 nodes, all types that the table does not name
///         -1 when the file cannot be opened
///         -2 when it is no such file, numbers cannot be read, are missing or do not fit each other, or a cell has fewer
///            nodes than its type
///         -3 when an element has a node that the file does not have
///         -7 for other data sets, and for arrays of strings in a binary file
///         -199 when memory ran out, or for 2^32 - 1 nodes or cells and more
///         On every negative result all outputs are empty.
///
/// Cost: linear in the size of the file. Memory: one block, and beside the outputs the nodes of all cells and the
/// elements once more; it follows what the file has, whatever it claims to have.
QEL_GRIDWORK_API int vtk_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                               dense1D<unsigned>& block_offsets, dense1D<int>& block_types,
                               dense1D<unsigned>& cell_IDs);

/// As above, for the elements of one type alone; the nodes of others are not compared with those of the file.
///
/// @param filename      path of the file
/// @param coords        overwritten: 3 x nodes, also of nodes that no element uses
/// @param connectivity  overwritten: nbr_nodes(type) x elements; 0 x 0 without elements
/// @param type          a plain type, or ELT_FACE_MIX or ELT_SOLID_MIX for the linear elements of that family
/// @return as above, and
///         -4 when `type` is ELT_UNKNOWN, ELT_NODE or ELT_EDGE_MIX (the file is not opened)
QEL_GRIDWORK_API int vtk_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                               element_type type);

}  // namespace gridwork
}  // namespace qel

#endif
