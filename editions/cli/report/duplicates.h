// Elements of the same nodes.
#ifndef QEL_GRIDWORK_CLI_REPORT_DUPLICATES_H
#define QEL_GRIDWORK_CLI_REPORT_DUPLICATES_H

#include "mesh.h"

namespace report {

/// An element with the nodes of another one before it, in any order.
struct duplicate {
  std::uint64_t element = 0, of = 0;
};

/// The duplicates of a block, not in their order.
std::vector<duplicate> find_duplicates(const block& b);

/// Leaves the first one of elements of the same nodes, and counts the others.
outcome remove_duplicates(mesh& m, std::uint64_t& removed);

}  // namespace report

#endif
