// Sizes at the nodes of a mesh, and lengths of edges against them.
#ifndef QEL_GRIDWORK_CLI_REPORT_SIZES_H
#define QEL_GRIDWORK_CLI_REPORT_SIZES_H

#include "mesh.h"

namespace report {

constexpr unsigned length_bins = 20;  // from 0 to 2

using sizes = qel::dense1D<double>;

/// What is done to the sizes that a mesh has, in this order.
struct size_options {
  gw::size_rule rule = gw::SIZE_MEAN;  ///< which of the lengths of its edges a node takes
  double factor = 1;
  double smallest = 0, largest = 0;  ///< bounds; 0: none
  double gradation = 0;              ///< largest ratio of the lengths of adjacent edges; 0: any
};

struct size_report {
  std::uint64_t nodes = 0;    ///< that have a size
  std::uint64_t bounded = 0;  ///< changes by the bounds
  std::uint64_t graded = 0;   ///< nodes that the gradation lowers
  double smallest = 0, mean = 0, largest = 0;
  double shock_before = 1,
         shock = 1;  ///< largest ratio of the lengths of adjacent edges, before and behind the gradation
};

/// The sizes at the nodes of a mesh whose nodes are valid; 0 at nodes without an edge.
outcome find_sizes(const mesh& m, const size_options& options, sizes& h, size_report& found);

/// Reads the sizes at nodes: the first field of a MEDIT solution, a scalar one. Fails in words of the reader; a file
/// without one gives no sizes.
outcome read_sizes(const char* path, sizes& h);

/// Lengths of edges in relation to the sizes at their ends: 1 is as prescribed.
struct length_report {
  std::uint64_t edges = 0;  ///< between nodes that have sizes
  std::uint64_t below = 0, above = 0;
  std::uint64_t bins[length_bins] = {};
  double smallest = 0, mean = 0, largest = 0;
};

outcome measure_lengths(const mesh& m, const sizes& h, length_report& found);

}  // namespace report

#endif
