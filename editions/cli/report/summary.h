// What is found out about a mesh before it is printed or shown.
#ifndef QEL_GRIDWORK_CLI_REPORT_SUMMARY_H
#define QEL_GRIDWORK_CLI_REPORT_SUMMARY_H

#include <limits>

#include "reading.h"
#include "shapes.h"
#include "topology.h"

namespace report {

struct box {
  static constexpr double infinity = std::numeric_limits<double>::infinity();
  qel::vector_fixed<double, 3> lower = {{infinity, infinity, infinity}};
  qel::vector_fixed<double, 3> upper = {{-infinity, -infinity, -infinity}};
};

struct summary {
  box bounds;
  bool valid = false;  ///< every element has nodes that are there; else what follows is not known
  node_use use;
  std::uint64_t unused = 0;
  topology sides;
  std::vector<report::shapes> shapes;
};

/// The box of all nodes; missing coordinates are 0.
box bounding_box(const mesh& m);

/// `nbr_worst` elements are named for each type.
outcome summarize(const mesh& m, std::size_t nbr_worst, summary& found);

/// Adds the members that tell of a file and of the mesh in it.
void add_summary(json& object, const loaded& file, const summary& found);

/// Qualities of a type, with histogram and worst elements.
json shapes_json(const shapes& found);

}  // namespace report

#endif
