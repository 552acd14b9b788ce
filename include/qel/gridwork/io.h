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

#include "qel/gridwork/io/ensight.h"
#include "qel/gridwork/io/femap.h"
#include "qel/gridwork/io/medit.h"
#include "qel/gridwork/io/nastran.h"
#include "qel/gridwork/io/obj.h"
#include "qel/gridwork/io/stl.h"
#include "qel/gridwork/io/vtk.h"

#endif
