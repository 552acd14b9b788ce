#include "shapes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace report {

namespace {

bool is_measured(const block& b) { return element_dim(b.type) >= 2; }

void count_values(const qel::dense1D<double>& quality, shapes& found) {
  double sum = 0;
  found.smallest = found.largest = quality[0];
  for (std::uint64_t e = 0; e < quality.size(); ++e) {
    const double q = quality[e];
    sum += q;
    found.smallest = std::min(found.smallest, q);
    found.largest = std::max(found.largest, q);
    if (q < 0)
      ++found.inverted;
    else if (q <= 1)
      ++found.bins[std::min(static_cast<unsigned>(q * shape_bins), shape_bins - 1)];
  }
  found.mean = sum / static_cast<double>(quality.size());
}

placed_element place(const mesh& m, const block& b, std::uint64_t element, double quality) {
  placed_element placed{element, quality, {}};
  const unsigned nodes = nbr_base_nodes(b.type);
  for (unsigned k = 0; k < nodes; ++k) {
    const double* node = m.coords.column(b.connectivity(k, element));
    for (unsigned axis = 0; axis < m.coords.rows(); ++axis) placed.centre[axis] += node[axis] / nodes;
  }
  return placed;
}

// What is no number comes first.
double rank(double quality) { return std::isnan(quality) ? -std::numeric_limits<double>::infinity() : quality; }

void find_worst(const mesh& m, const block& b, const qel::dense1D<double>& quality, std::size_t count, shapes& found) {
  std::vector<unsigned> order(quality.size());
  std::iota(order.begin(), order.end(), 0U);
  const auto end = order.begin() + static_cast<std::ptrdiff_t>(std::min(count, order.size()));
  std::partial_sort(order.begin(), end, order.end(), [&](unsigned a, unsigned c) {
    return rank(quality[a]) != rank(quality[c]) ? rank(quality[a]) < rank(quality[c]) : a < c;
  });
  for (auto at = order.begin(); at != end; ++at) found.worst.push_back(place(m, b, *at, quality[*at]));
}

double edge_length(const qel::dense2D<double>& coords, unsigned a, unsigned b) {
  double sum = 0;
  for (unsigned k = 0; k < coords.rows(); ++k) sum += (coords(k, a) - coords(k, b)) * (coords(k, a) - coords(k, b));
  return std::sqrt(sum);
}

}  // namespace

outcome block_qualities(const mesh& m, const block& b, qel::dense1D<double>& quality, bool& turned) {
  const block linear = linear_block(b);
  const int result = shape_qualities(m.coords, linear.connectivity, linear.type, quality);
  const auto negative = std::count_if(quality.data(), quality.data() + quality.size(), [](double q) { return q < 0; });
  turned = 2 * static_cast<std::uint64_t>(negative) > quality.size();
  for (std::uint64_t e = 0; turned && e < quality.size(); ++e) quality[e] = -quality[e];
  return {gw::operation::shape_qualities, result};
}

outcome measure_shapes(const mesh& m, std::size_t nbr_worst, std::vector<shapes>& all) {
  for (const block& b : m.blocks) {
    if (!is_measured(b)) continue;
    qel::dense1D<double> quality;
    shapes found;
    found.type = b.type;
    found.elements = b.connectivity.cols();
    const outcome done = block_qualities(m, b, quality, found.reversed);
    if (done.failed()) return done;
    count_values(quality, found);
    find_worst(m, b, quality, nbr_worst, found);
    all.push_back(std::move(found));
  }
  return {};
}

outcome count_below(const mesh& m, double bound, std::uint64_t& count) {
  for (const block& b : m.blocks) {
    if (!is_measured(b)) continue;
    qel::dense1D<double> quality;
    bool turned = false;
    const outcome done = block_qualities(m, b, quality, turned);
    if (done.failed()) return done;
    for (std::uint64_t e = 0; e < quality.size(); ++e) count += quality[e] < bound ? 1 : 0;
  }
  return {};
}

outcome mean_edge_length(const mesh& m, double& length) {
  qel::dense2D<unsigned> edges;
  const outcome listed = find_edges(m, edges);
  double sum = 0;
  for (std::uint64_t e = 0; e < edges.cols(); ++e) sum += edge_length(m.coords, edges(0, e), edges(1, e));
  length = edges.empty() ? 0 : sum / static_cast<double>(edges.cols());
  return listed;
}

}  // namespace report
