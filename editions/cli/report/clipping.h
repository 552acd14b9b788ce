// Meshes clipped at a plane.
#ifndef QEL_GRIDWORK_CLI_REPORT_CLIPPING_H
#define QEL_GRIDWORK_CLI_REPORT_CLIPPING_H

#include "placing.h"

namespace report {

/// What becomes of elements on both sides of the plane.
enum class crossed { cut, dropped, kept, alone };

struct clip_options {
  point at = {{0, 0, 0}};
  point normal = {{1, 0, 0}};
  crossed elements = crossed::cut;
  double tolerance = 0;  ///< nodes within it are on the plane
};

/// True when elements of a type can be cut.
bool can_be_cut(gw::element_type type);

/// Keeps what lies on the side to which the normal points, and no unused node. Of a plane mesh the first two coordinates
/// of point and normal count.
outcome clip(mesh& m, const clip_options& options);

}  // namespace report

#endif
