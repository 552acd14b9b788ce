// The inspector's report on the shapes of triangles and the lengths of edges.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <vector>

#include "mesh_format.h"

namespace {

namespace gw = qel::gridwork;

constexpr unsigned bins = 10;
constexpr std::size_t worst_to_print = 5;
constexpr int widest_bar = 40;

void print_histogram(const char* title, const qel::misc::histogram& counts) {
  std::printf("%s: smallest %.4f, mean %.4f, largest %.4f\n", title, counts.min(), counts.mean(), counts.max());
  std::uint64_t most = 1;
  for (unsigned k = 0; k < counts.bins(); ++k) most = std::max(most, counts.bin(k));
  for (unsigned k = 0; k < counts.bins(); ++k) {
    const double share = static_cast<double>(counts.bin(k)) / static_cast<double>(most);
    const auto bar = static_cast<std::size_t>(std::ceil(share * widest_bar));
    std::printf("  from %4.1f %12s %s\n", counts.bin_lower(k), number(counts.bin(k)).c_str(),
                std::string(bar, '#').c_str());
  }
  if (counts.above() != 0) std::printf("  above     %12s\n", number(counts.above()).c_str());
}

void print_worst(const mesh& m, const qel::dense1D<double>& quality) {
  std::vector<unsigned> order(quality.size());
  std::iota(order.begin(), order.end(), 0U);
  const auto printed = static_cast<std::ptrdiff_t>(std::min(worst_to_print, order.size()));
  std::partial_sort(order.begin(), order.begin() + printed, order.end(),
                    [&](unsigned a, unsigned b) { return quality[a] != quality[b] ? quality[a] < quality[b] : a < b; });
  std::printf("Worst triangles\n");
  for (std::ptrdiff_t i = 0; i < printed; ++i) {
    const unsigned t = order[static_cast<std::size_t>(i)];
    double centre[3] = {};
    for (unsigned k = 0; k < 3; ++k) {
      for (unsigned axis = 0; axis < 3; ++axis) centre[axis] += m.coords(axis, m.connectivity(k, t)) / 3;
    }
    std::printf("  %10u  quality %.6f near (%.6g, %.6g, %.6g)\n", t, quality[t], centre[0], centre[1], centre[2]);
  }
}

double mean_edge_length(const mesh& m) {
  qel::dense2D<unsigned> edges;
  require(gw::operation::copy_edges, gw::copy_edges(m.connectivity, gw::ELT_TRIA3, edges), "finding edges");
  double sum = 0;
  for (std::uint64_t e = 0; e < edges.cols(); ++e) {
    const double* a = m.coords.column(edges(0, e));
    const double* b = m.coords.column(edges(1, e));
    sum += std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
  }
  return sum / static_cast<double>(edges.cols());
}

}  // namespace

void print_quality(const mesh& m) {
  if (m.connectivity.empty()) return;
  qel::dense1D<double> quality;
  require(gw::operation::shape_qualities, gw::shape_qualities(m.coords, m.connectivity, gw::ELT_TRIA3, quality),
          "measuring shape qualities");
  qel::misc::histogram shapes(0, 1, bins);
  for (const double q : quality) shapes.process(q);
  print_histogram("Shape quality of the triangles (equilateral: 1)", shapes);
  print_worst(m, quality);

  const double mean = mean_edge_length(m);
  qel::misc::histogram lengths(0, 2, bins);
  if (!(mean > 0) || !std::isfinite(mean)) return;
  const qel::dense1D<double> sizes(m.coords.cols(), mean);
  const qel::dense2D<unsigned> none_excluded;
  gw::edge_qualities(m.coords, m.connectivity, gw::ELT_TRIA3, sizes, lengths, none_excluded);
  std::printf("Mean length of the edges %.6g\n", mean);
  print_histogram("Edge quality against that length", lengths);
}
