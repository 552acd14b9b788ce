/// @file
/// MEDIT files: meshes and solutions. What holds for files of all formats is told in io.h.
#ifndef QEL_GRIDWORK_PUBLIC_IO_MEDIT_H
#define QEL_GRIDWORK_PUBLIC_IO_MEDIT_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

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

}  // namespace gridwork
}  // namespace qel

#endif
