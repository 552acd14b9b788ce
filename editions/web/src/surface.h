// What is drawn of a mesh: triangles, each with the quality and the piece of its element.
#ifndef QEL_GRIDWORK_WEB_SURFACE_H
#define QEL_GRIDWORK_WEB_SURFACE_H

#include <report/summary.h>

namespace web {

struct surface {
  std::vector<float> positions;     ///< three of each node, from the middle of the box
  std::vector<unsigned> triangles;  ///< three nodes each
  std::vector<float> qualities;     ///< one of each triangle
  std::vector<unsigned> pieces;     ///< one of each triangle, numbered from 0 on
  /// One of each triangle: bit k is set where the side opposite to its corner k is one of its element.
  std::vector<unsigned char> outlines;
};

/// The faces of a mesh or, where it has solids, their boundary; quadrangles become two triangles.
report::outcome make_surface(const report::mesh& m, const report::summary& known, surface& drawn);

}  // namespace web

#endif
