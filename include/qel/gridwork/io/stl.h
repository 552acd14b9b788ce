/// @file
/// STL files. What holds for files of all formats is told in io.h.
#ifndef QEL_GRIDWORK_PUBLIC_IO_STL_H
#define QEL_GRIDWORK_PUBLIC_IO_STL_H

#include <cstdint>

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

/// As above, and overwrites `nbr_triangles` with the number of triangles in the file, those that are not kept among them;
/// with 0 on a negative result.
QEL_GRIDWORK_API int STL_input(const char* filename, dense2D<double>& coords, dense2D<unsigned>& connectivity,
                               std::uint64_t& nbr_triangles);

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

}  // namespace gridwork
}  // namespace qel

#endif
