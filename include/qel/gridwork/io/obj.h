/// @file
/// Wavefront OBJ files. What holds for files of all formats is told in io.h.
#ifndef QEL_GRIDWORK_PUBLIC_IO_OBJ_H
#define QEL_GRIDWORK_PUBLIC_IO_OBJ_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

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

}  // namespace gridwork
}  // namespace qel

#endif
