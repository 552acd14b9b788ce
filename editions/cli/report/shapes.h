// Shape qualities of elements, block by block.
#ifndef QEL_GRIDWORK_CLI_REPORT_SHAPES_H
#define QEL_GRIDWORK_CLI_REPORT_SHAPES_H

#include "mesh.h"

namespace report {

constexpr unsigned shape_bins = 10;  // from 0 to 1

/// An element, and where it lies.
struct placed_element {
  std::uint64_t element = 0;  ///< its position in its block
  double quality = 0;
  double centre[3] = {};
};

/// The qualities of a block. Files differ in the orientation of solids: where most qualities are negative, all are taken
/// with the other sign, and the block is `reversed`.
struct shapes {
  gw::element_type type = gw::ELT_UNKNOWN;
  std::uint64_t elements = 0;
  bool reversed = false;
  double smallest = 0, mean = 0, largest = 0;
  std::uint64_t inverted = 0;           ///< below 0
  std::uint64_t bins[shape_bins] = {};  ///< those of 0 and more
  std::vector<placed_element> worst;    ///< by increasing quality, then position
};

/// The qualities of a block of faces or solids; `turned` where they are taken with the other sign.
outcome block_qualities(const mesh& m, const block& b, qel::dense1D<double>& quality, bool& turned);

/// Of all faces and solids of a mesh whose nodes are valid; vertices count, middle nodes do not.
outcome measure_shapes(const mesh& m, std::size_t nbr_worst, std::vector<shapes>& all);

/// How many elements have a quality below `bound`.
outcome count_below(const mesh& m, double bound, std::uint64_t& count);

/// The mean length of the distinct edges; 0 without edges.
outcome mean_edge_length(const mesh& m, double& length);

}  // namespace report

#endif
