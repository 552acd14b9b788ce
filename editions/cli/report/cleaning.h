// Merging of the nodes of a mesh.
#ifndef QEL_GRIDWORK_CLI_REPORT_CLEANING_H
#define QEL_GRIDWORK_CLI_REPORT_CLEANING_H

#include "mesh.h"

namespace report {

struct cleaned {
  std::uint64_t merged = 0;            ///< nodes that became others
  std::uint64_t removed_elements = 0;  ///< that held a node twice then
  std::uint64_t removed_nodes = 0;     ///< that no element uses, those merged among them
};

/// Merges near nodes, then removes degenerate elements and unused nodes. `mode` is that of merge() for connectivities.
/// A mesh is not to be used where it fails.
outcome clean(mesh& m, double tolerance, unsigned mode, cleaned& counts);

/// Merges near nodes; counts them.
outcome merge_nodes(mesh& m, double tolerance, unsigned mode);

/// Removes the elements that hold a node twice, and blocks that are empty then.
outcome remove_degenerate(mesh& m, std::uint64_t& removed);

/// Removes the nodes that no element uses; counts them.
outcome remove_unused_nodes(mesh& m);

}  // namespace report

#endif
