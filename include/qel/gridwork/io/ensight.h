/// @file
/// EnSight geometry files. What holds for files of all formats is told in io.h.
#ifndef QEL_GRIDWORK_PUBLIC_IO_ENSIGHT_H
#define QEL_GRIDWORK_PUBLIC_IO_ENSIGHT_H

#include "qel/dense.h"
#include "qel/export.h"
#include "qel/gridwork/elements.h"

namespace qel {
namespace gridwork {

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
