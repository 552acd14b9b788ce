// The boundary of a mesh as a mesh of its own.
#ifndef QEL_GRIDWORK_CLI_REPORT_BOUNDARY_H
#define QEL_GRIDWORK_CLI_REPORT_BOUNDARY_H

#include "mesh.h"

namespace report {

/// Keeps the sides of one element alone: faces of solids, edges of faces, of their vertices. The faces look outwards if
/// all solids are turned the same way. Nodes must be valid; without a boundary there are no blocks and no nodes.
outcome take_boundary(mesh& m);

}  // namespace report

#endif
