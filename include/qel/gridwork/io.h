/// @file
/// Mesh files: STL, OBJ, VTK, MEDIT, NASTRAN and FEMAP, read and written; EnSight, written.
///
/// Every file is closed when a function returns. Types are enumerators of element_type; a mixed matrix with the row
/// count of a smaller member holds only that member, and a matrix without entries no element. The overloads on a range
/// take the matrices from `first` up to but excluding `last`, matrix i being of the type `types[i]`.
///
/// A positive result of a reader counts the parts of the file that are not in the mesh, which is there: what has failed is
/// told by `result < 0`.
///
/// Names of files are bytes as the system takes them; on Windows, UTF-8. Lines end with a newline on every system, and are
/// read with a carriage return before it, too. A `FILE*` must come from the C library that this library is linked with,
/// and is best opened as binary.
///
/// Readers take a failure of the stream for the end of the file. A call that a signal breaks off is repeated, also by
/// writers; only a stream of the caller's, which has a buffer, may lose what the buffer held then.
///
/// Numbers are those of `printf` in the "C" locale. A refused call leaves an empty file, unless it is said that nothing
/// is created; then a file that was there stays as it was. Memory: one block of constant size, whatever the size of the
/// mesh.
///
/// | format | numbers | indices | a mesh without nodes and elements |
/// |---|---|---|---|
/// | STL, text | `%e` | | the lines "solid QEL" and "endsolid QEL" |
/// | STL, binary | 32-bit floats, those beyond their range infinite | | 84 bytes |
/// | OBJ | `%.8e` | `%u` | no byte |
/// | VTK | `%f`, so that numbers below 5e-7 are lost | `%d` | header, "POINTS 0 double", "CELLS 0 0", "CELL_TYPES 0" |
/// | MEDIT | `%E` | `%d` | header, "Vertices", 0 and "End" |
/// | MEDIT, solution | `%E` | | the line of counts; of scalars an empty line behind it |
/// | NASTRAN | `%16E` | `%d`, for nodes `%16d` | no file |
/// | FEMAP | `%.16E` | `%d` | no file |
/// | EnSight | `%12.5e` | `%8d` | header and 0 |
///
/// `%d` prints indices from 2^31 on as negative. Index + 1 is printed everywhere but in VTK, `~0U` as 0. EnSight's
/// columns overflow, and its files cannot be read, from the ID 10^8 on and by negative coordinates whose exponent has
/// three digits.
///
/// What writers leave out or do not report, with the result 0:
/// - failures of the stream while writing: all but STL
/// - OBJ, short forms: matrices of other types than ELT_TRIA3 and ELT_QUAD4
/// - MEDIT: nodes that are no vertices; all elements of ELT_UNKNOWN, ELT_NODE, ELT_EDGE_MIX, ELT_PYRAMID13 and
///   ELT_WEDGE15; elements of reference `~0U`
/// - NASTRAN, FEMAP: all elements of ELT_UNKNOWN, ELT_NODE and ELT_EDGE_MIX; columns of no block; in NASTRAN the middle
///   node of ELT_EDGE3; and the last nodes of ELT_QUAD9, ELT_PYRAMID14, ELT_WEDGE18 and ELT_HEXA27
/// - EnSight: all elements of the mixed types, of pyramids, ELT_WEDGE15, ELT_UNKNOWN and ELT_NODE; the last nodes of
///   ELT_QUAD9, ELT_WEDGE18 and ELT_HEXA27
/// - OBJ, NASTRAN, FEMAP, EnSight and vtk_convert(): indices that `coords` does not have
#ifndef QEL_GRIDWORK_IO_H
#define QEL_GRIDWORK_IO_H

#include <cstdio>

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

/// Reads a text or binary STL file as a triangle mesh whose triangles share their nodes.
///
/// The file is read as text first; when that fails with a code from -198 to -1, as binary. Then coincident nodes are
/// merged (block by block of 100 000 triangles), nodes within 5 % of the smallest positive triangle height of the file
/// are merged, triangles that hold a node twice and nodes that are no longer used are removed. A file in which no
/// triangle has a positive height is returned as it is, three nodes a triangle.
///
/// Text: lines are cut at 255 characters, keywords are case-insensitive, lines with "color" are skipped, several solids
/// make one mesh; numbers are read as `scanf` reads `%lg` in the "C" locale. Binary: little-endian; normals,
/// attributes and bytes behind the last triangle are ignored, and memory is taken only for triangles that are there.
///
/// @param filename      path of the file. One that cannot be read twice (a pipe) is read as binary only if what makes
///                      it no text stands in its first 256 KiB, as it does in any binary file; else the code of the
///                      text reader is returned: -3
/// @param coords        overwritten: 3 x nodes
/// @param connectivity  overwritten: 3 x triangles (ELT_TRIA3)
/// @return 0
///         -1 when the file cannot be opened
///         -2 when it is no text of this form and has fewer than the 80 bytes of a binary header
///         -3 when it is no text of this form, has these bytes, and triangles or their count are cut short
///         -199 when memory ran out
///         On every negative result both outputs are empty. A file that fails as text and as binary gives the code of
///         the binary reader.
///
/// Cost: linear in the size of the file, plus merging (see merge()).
QEL_GRIDWORK_API int STL_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity);

/// Writes a triangle mesh as a text or binary STL file, with the unit normal of each triangle (0 0 0 if degenerate).
///
/// Where twice the area of a triangle lies outside of 1e-153 to 1e153, its square has no place in a double, and the
/// normal is the product of two edges as it is, 0 0 0 or NaN.
///
/// @param filename      path; an existing file is overwritten
/// @param coords        2 or 3 x nodes; with 2 rows z = 0 is written
/// @param connectivity  3 x triangles (ELT_TRIA3)
/// @param ascii         true: text, numbers in the form 1.234567e+00; false: binary, little-endian 32-bit floats
/// @return 0
///         -1 when the file cannot be opened, or written in full
///         -2 when `coords` has neither 2 nor 3 rows (the file is created and left empty)
///         -3 when `connectivity` is not one of triangles on these nodes (the file is created and left empty)
///         -199 when memory ran out
///
/// Cost: linear.
QEL_GRIDWORK_API int STL_output(const char* filename, const dense2D<double>& coords,
                                const dense2D<unsigned>& connectivity, bool ascii);

/// Reads the triangles and quadrangles of a Wavefront OBJ file, with its vertices, normals and texture coordinates.
///
/// Lines that start with "v", "vn", "vt" and "f" count, all others are skipped. Blanks are space, tab, CR, VT and FF.
/// The numbers of a line end at the first token that is not a number as `scanf` reads "%lg" in the "C" locale, or has
/// more than 4095 characters. Lines may be of any length, and the last one may lack its newline. Nothing else is taken
/// for the end of a line: a file with CR alone is one line. A byte order mark belongs to the first word, so that the
/// first line is skipped; a vertex there is missing then, and all faces are shifted. A line that ends with a backslash
/// does not go on: the backslash ends the numbers, and is no corner of a face. Nor is a comment behind a face (-2).
///
/// - "v": at least 3 numbers, of which the first 3 count. "vn": 3 numbers.
/// - "vt": 1 to 3 numbers; the first such line sets the row count of `uvs`, and lines with another count are dropped.
/// - "f": corners "v", "v/vt", "v//vn" or "v/vt/vn". Only the vertex index is kept, k as the node k - 1, and 0 or
///   nothing as the number of vertices read so far. Faces of neither 3 nor 4 corners are skipped. Nodes are not
///   compared with the number of vertices: check_IDs() does that. An index may have a sign, and a slash nothing behind
///   it ("1/", "1//", "1/2/"). Indices relative to the end are not resolved:
///   -1 becomes the node 4294967294, which no mesh has.
///
/// @param filename   path of the file, which need not be seekable
/// @param coords     overwritten: 3 x vertices
/// @param normals    overwritten: 3 x "vn" lines
/// @param uvs        overwritten: 1, 2 or 3 x "vt" lines
/// @param triangles  overwritten: 3 x triangles (ELT_TRIA3)
/// @param quads      overwritten: 4 x quadrangles (ELT_QUAD4)
/// @return 0
///         -1 when the file cannot be opened (the outputs are empty)
///         -2 when a "v" has fewer than 3 numbers, a "vn" not 3, a "vt" 4 or more; when a face has a corner of another
///            form, an index below -2^31 or above 2^32 - 1, or an index of texture coordinates or of a normal before
///            the first "vt" or "vn" line
///         -199 when memory ran out
///         On -2 and -199 the outputs hold what was read before.
///
/// Cost: linear in the size of the file. Memory: one block beside the outputs, however long a line is; outputs of 2 MiB
/// and more may take their last huge page in full. Their capacity may exceed their size, in pages that are never
/// touched. A file that is not seekable, whose size is not known, makes them grow by doubling.
QEL_GRIDWORK_API int WavefrontOBJ_input(const char* filename, dense2D<double>& coords, dense2D<double>& normals,
                                        dense2D<double>& uvs, dense2D<unsigned>& triangles, dense2D<unsigned>& quads);

/// Writes triangles and quadrangles as a Wavefront OBJ file, numbers in the form 1.23456789e+00.
///
/// A corner of a face is written as "i/i/i" with the number of its node; without `uvs` the second number is left out,
/// without `normals` the third, but never a slash.
///
/// @param filename   path; an existing file is overwritten
/// @param coords     2 or 3 x nodes; with 2 rows z = 0 is written
/// @param normals    3 x nodes, or empty
/// @param uvs        2 x nodes, or empty
/// @param triangles  3 x e (ELT_TRIA3), of any node indices
/// @param quads      4 x e (ELT_QUAD4), of any node indices
/// @return 0
///         -1 when the file cannot be opened
///         -2 when `coords` has neither 2 nor 3 rows
///         -3, -4 when `normals`, `uvs` are of another shape
///         -5, -6 when `triangles`, `quads` have not the row count of their type
///         -199 when memory ran out
///
/// Cost: linear.
QEL_GRIDWORK_API int WavefrontOBJ_output(const char* filename, const dense2D<double>& coords,
                                         const dense2D<double>& normals, const dense2D<double>& uvs,
                                         const dense2D<unsigned>& triangles, const dense2D<unsigned>& quads);

/// The same for one matrix, without normals and texture coordinates. A matrix that is of another type than ELT_TRIA3
/// and ELT_QUAD4, also ELT_FACE_MIX of 4 rows, is not looked at, and the file has no faces.
QEL_GRIDWORK_API int WavefrontOBJ_output(const char* filename, const dense2D<double>& coords,
                                         const dense2D<unsigned>& connectivity, element_type type);

/// The same for two matrices, which may be of the same type.
QEL_GRIDWORK_API int WavefrontOBJ_output(const char* filename, const dense2D<double>& coords,
                                         const dense2D<unsigned>& connectivity1, const dense2D<unsigned>& connectivity2,
                                         element_type type1, element_type type2);

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

/// Writes a mesh as a MEDIT file of text, with the position of its matrix (0, 1, ...) as reference of an element.
///
/// Only vertices are written, a quadratic element is its linear one. A pyramid and a wedge are hexahedra with repeated
/// nodes: 0 1 2 3 4 4 4 4 and 0 1 2 2 3 4 5 5. Every plain type has a section of its own, in the order of element_type;
/// ELT_UNKNOWN, ELT_NODE, ELT_EDGE_MIX, ELT_PYRAMID13 and ELT_WEDGE15 have none. Nothing is created before all checks
/// hold.
///
/// @param filename      path; an existing file is overwritten
/// @param coords        1, 2 or 3 x nodes
/// @param connectivity  nodes x e
/// @param type          any type
/// @return 0
///         -1 when the file cannot be opened
///         -2 when `coords` has no row or more than 3
///         -3 when a matrix is not one of its type on these nodes
///         -4 when `first` lies after `last`
///         -5 when `types` has not one entry a matrix
///         -199 when memory ran out
///
/// Cost: linear.
QEL_GRIDWORK_API int medit_output(const char* filename, const dense2D<double>& coords,
                                  const dense2D<unsigned>& connectivity, element_type type);

/// The same for two matrices: references 0 and 1.
QEL_GRIDWORK_API int medit_output(const char* filename, const dense2D<double>& coords,
                                  const dense2D<unsigned>& connectivity1, const dense2D<unsigned>& connectivity2,
                                  element_type type1, element_type type2);

/// The same for a range of matrices.
QEL_GRIDWORK_API int medit_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>* first,
                                  const dense2D<unsigned>* last, const dense1D<int>& types);

/// The same for elements with references of their own; inside a section they are written by increasing reference.
///
/// @param filename      path; an existing file is overwritten
/// @param coords        1, 2 or 3 x nodes
/// @param connectivity  nodes x e
/// @param type          any type
/// @param references    one entry an element; elements of reference ~0U are left out, and need not be valid
/// @return 0, also for an empty `connectivity` (no file is created)
///         -1, -2, -3, -199 as above
///         -5 when `references` has not one entry an element
///         -6 when memory for the order of the references ran out, also for 2^32 - 1 elements and more
///
/// Cost: linear in the size of the file; the order of the references takes one pass for every 11 bits that the largest
/// of them has. Memory: 4 bytes an element for the order, 8 where references exceed 2047, beside the block.
QEL_GRIDWORK_API int medit_output(const char* filename, const dense2D<double>& coords,
                                  const dense2D<unsigned>& connectivity, element_type type,
                                  const dense1D<unsigned>& references);

/// Reads a MEDIT mesh of text, with the references of its elements and nodes.
///
/// Words count, not lines; "#" starts a comment, keywords may be in any case and their sections in any order and
/// repeated. Numbers are read as `scanf` reads "%lg" in the "C" locale, or have a D before their exponent. A word of more
/// than 4095 bytes cannot be read.
///
/// | sections | type | nodes, by local number |
/// |---|---|---|
/// | Edges; EdgesP2 | ELT_EDGE2; ELT_EDGE3 | in order |
/// | Triangles; TrianglesP2 | ELT_TRIA3; ELT_TRIA6 | in order; 0 1 2 5 3 4 |
/// | Quadrilaterals; QuadrilateralsQ2 | ELT_QUAD4; ELT_QUAD9 | in order |
/// | Tetrahedra; TetrahedraP2 | ELT_TETRA4; ELT_TETRA10 | in order; 0 1 2 3 6 4 5 7 8 9 |
/// | Pyramids | ELT_PYRAMID5 | in order |
/// | Prisms, Pentahedra | ELT_WEDGE6 | in order |
/// | Hexahedra, Hexaedra | ELT_HEXA8 | in order |
///
/// A hexahedron of the nodes a b c d e e e e, five of them distinct, is read as the pyramid a b c d e, one of a b c c d e
/// f f, six of them distinct, as the wedge a b c d e f, as medit_output() writes these. Tetrahedra are not turned:
/// programs of that family orient them the other way round. Sections that hold no elements are passed over.
///
/// @param filename         path of the file, which need not be seekable
/// @param coords           overwritten: the file's dimension (1, 2 or 3) x nodes, in the order of the file
/// @param connectivity     overwritten: nodes of the largest type present x elements, `~0U` below shorter columns; one
///                         block a type, elements of a block in the order of the file; 0 x 0 without elements.
///                         `connectivity.sub_matrix(0, first, nbr_nodes(type), count)` is a type's matrix
/// @param block_offsets    overwritten: the first column of each block, and the number of all
/// @param block_types      overwritten: the types that are there, in increasing order
/// @param references       overwritten: one entry an element; negative ones modulo 2^32
/// @param node_references  overwritten: one entry a node
/// @return 0, or the number of elements, at most INT_MAX, in sections that cannot be read: of order 3 and 4, PrismsP2,
///         PyramidsP2, HexahedraQ2, Prisms9, Hexahedra12, Quadrilaterals6 and Polyhedra
///         -1 when the file cannot be opened
///         -2 when it does not start with MeshVersionFormatted, has vertices before its dimension, or numbers that cannot
///            be read, are cut short or, for references, have more than 32 bits
///         -3 when an element has a node that the file does not have
///         -7 when the file is binary
///         -199 when memory ran out, or for 2^32 - 1 nodes or elements and more
///         On every negative result all outputs are empty.
///
/// Cost: linear in the size of the file. Memory: one block beside the outputs, and the elements twice; it follows what
/// the file has, whatever it claims to have.
QEL_GRIDWORK_API int medit_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                                 dense1D<unsigned>& block_offsets, dense1D<int>& block_types,
                                 dense1D<unsigned>& references, dense1D<unsigned>& node_references);

/// As above, for the elements of one type alone; the nodes of others are not compared with those of the file.
///
/// @param filename      path of the file
/// @param coords        overwritten: the file's dimension x nodes, also of nodes that no element uses
/// @param connectivity  overwritten: nbr_nodes(type) x elements; 0 x 0 without elements
/// @param type          a plain type, or ELT_FACE_MIX or ELT_SOLID_MIX for the linear elements of that family
/// @return as above, and
///         -4 when `type` is ELT_UNKNOWN, ELT_NODE or ELT_EDGE_MIX (the file is not opened)
QEL_GRIDWORK_API int medit_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                                 element_type type);

/// Reads the fields at the nodes of a MEDIT solution of text: the first section SolAtVertices of a file with keywords,
/// which may be a mesh, or a file of values behind "dimension rows nodes 2", as medit_scalar(), medit_vector() and
/// medit_tensor() write it.
///
/// Words and numbers are those of medit_input(). The symmetric tensors of a file have the order of rows that this library
/// uses: a part of `values` can be handed to edge_qualities() as it is. Without keywords, one row is a scalar field, as
/// many rows as the dimension a vector field, dim (dim + 1) / 2 rows a field of tensors, other rows as many scalar ones.
///
/// @param filename  path of the file, which need not be seekable
/// @param dim       overwritten: dimension of the mesh
/// @param values    overwritten: rows of all fields below one another x nodes
/// @param kinds     overwritten: one entry a field: 1 for a scalar (1 row), 2 for a vector (dim rows), 3 for a symmetric
///                  tensor (dim (dim + 1) / 2), 4 for a matrix (dim^2)
/// @return 0, also for a file without SolAtVertices (no rows, no kinds)
///         -1 when the file cannot be opened
///         -2 when it does not start with MeshVersionFormatted or four numbers of which the last is 2, has fields before
///            its dimension or of another kind, or numbers that cannot be read or are cut short
///         -7 when the file is binary
///         -199 when memory ran out, or for 2^32 - 1 nodes and more
///         On every negative result the outputs are empty, and `dim` is 0.
///
/// Cost: linear in the size of the file.
QEL_GRIDWORK_API int medit_solution_input(const char* filename, unsigned& dim, dense2D<double>& values,
                                          dense1D<int>& kinds);

/// Writes a scalar field as a MEDIT solution, 8 values a line.
///
/// @param filename  path; an existing file is overwritten
/// @param dim       dimension of the mesh, written as it is
/// @param values    one entry a node
/// @return 0; -1 when the file cannot be opened; -199 when memory ran out
///
/// Cost: linear.
QEL_GRIDWORK_API int medit_scalar(const char* filename, unsigned dim, const dense1D<double>& values);

/// Writes a vector field as a MEDIT solution.
///
/// @param filename  path; an existing file is overwritten
/// @param dim       dimension of the mesh, written as it is
/// @param vectors   components x nodes
/// @return 0; -1 when the file cannot be opened; -199 when memory ran out
///
/// Cost: linear.
QEL_GRIDWORK_API int medit_vector(const char* filename, unsigned dim, const dense2D<double>& vectors);

/// Writes a field of metric tensors as a MEDIT solution, of dimension 2 for 3 rows and 3 for 6.
///
/// @param filename  path; an existing file is overwritten
/// @param metrics   3 or 6 x nodes
/// @return 0; -1 when the file cannot be opened; -2 when `metrics` has neither 3 nor 6 rows; -199 when memory ran out
///
/// Cost: linear.
QEL_GRIDWORK_API int medit_tensor(const char* filename, const dense2D<double>& metrics);

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

/// Writes a mesh as an EnSight geometry file of text, with one part a matrix.
///
/// Part numbers are positions in the range from 1 on, also of matrices that are not written; IDs of nodes and, in every
/// part, of elements are positions from 1 on.
///
/// | type | element | nodes, by local number |
/// |---|---|---|
/// | ELT_EDGE2; ELT_EDGE3 | bar2; bar3 | 0 1; 0 1 2 |
/// | ELT_TRIA3; ELT_TRIA6 | tria3; tria6 | 0 1 2; 0 1 2 5 3 4 |
/// | ELT_QUAD4; ELT_QUAD8, ELT_QUAD9 | quad4; quad8 | 0 .. 3; 0 .. 7 |
/// | ELT_TETRA4; ELT_TETRA10 | tetra4; tetra10 | 0 2 1 3; 0 2 1 3 5 4 6 7 9 8 |
/// | ELT_WEDGE6, ELT_WEDGE18 | penta6 | 0 .. 5 |
/// | ELT_HEXA8; ELT_HEXA20, ELT_HEXA27 | hexa8; hexa20 | 0 .. 7; 0 .. 19 |
/// | all others, also the mixed types and pyramids | none, not written | |
///
/// @param filename      path; an existing file is overwritten
/// @param coords        1, 2 or 3 x nodes; missing coordinates are written as 0
/// @param connectivity  nodes x e, of any node indices
/// @param type          any type
/// @return 0
///         -1 when the file cannot be opened
///         -2 when `coords` has no row or more than 3
///         -3 when a matrix has not the row count of its type
///         -4 when `first` lies after `last`
///         -5 when `types` has not one entry a matrix
///         -199 when memory ran out
///
/// Cost: linear.
QEL_GRIDWORK_API int ensight_output(const char* filename, const dense2D<double>& coords,
                                    const dense2D<unsigned>& connectivity, element_type type);

/// The same for two matrices, one after the other.
QEL_GRIDWORK_API int ensight_output(const char* filename, const dense2D<double>& coords,
                                    const dense2D<unsigned>& connectivity1, const dense2D<unsigned>& connectivity2,
                                    element_type type1, element_type type2);

/// The same for a range of matrices.
QEL_GRIDWORK_API int ensight_output(const char* filename, const dense2D<double>& coords, const dense2D<unsigned>* first,
                                    const dense2D<unsigned>* last, const dense1D<int>& types);

}  // namespace gridwork
}  // namespace qel

#endif
