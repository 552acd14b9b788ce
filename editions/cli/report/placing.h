// Meshes moved, turned, scaled and mirrored.
#ifndef QEL_GRIDWORK_CLI_REPORT_PLACING_H
#define QEL_GRIDWORK_CLI_REPORT_PLACING_H

#include "mesh.h"

namespace report {

using point = qel::vector_fixed<double, 3>;

/// One step of a transformation.
struct placing {
  enum kind { move, turn, scale, mirror } what = move;
  point vector = {{0, 0, 0}};  ///< the shift; the axis; the normal of the plane
  double number = 0;           ///< degrees, right-handed about the axis; the factor
  point center = {{0, 0, 0}};  ///< a point of the axis, the fixed point, a point of the plane
};

/// Applies the steps one after the other. A mesh in the plane remains one if its nodes stay at z = 0; mirrored elements are
/// turned over, so that they look outwards as before.
outcome place(mesh& m, const std::vector<placing>& steps);

}  // namespace report

#endif
