// Sizes of a mesh from the lengths of its edges.
#include <algorithm>
#include <cmath>
#include <limits>

#include "core/outputs.h"
#include "metrics/mesh_edges.h"

namespace qel::gridwork {

using namespace detail;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

/// Calls visit(a, b, length) for each edge whose length is greater than 0 and finite.
template <unsigned Dim, class Visit>
void visit_lengths(const dense2D<double>& coords, const dense2D<unsigned>& edges, Visit visit) {
  for (std::uint64_t j = 0; j < edges.cols(); ++j) {
    const unsigned a = edges(0, j);
    const unsigned b = edges(1, j);
    const double length = edge_vector<Dim>(coords, a, b).length();
    if (length > 0 && std::isfinite(length)) visit(a, b, length);
  }
}

/// Of the lengths at each node the one that choose() takes, `start` where there is none.
template <unsigned Dim, class Choose>
void choose_lengths(const dense2D<double>& coords, const dense2D<unsigned>& edges, dense1D<double>& sizes, double start,
                    Choose choose) {
  std::fill(sizes.begin(), sizes.end(), start);
  visit_lengths<Dim>(coords, edges, [choose, chosen = sizes.data()](unsigned a, unsigned b, double length) {
    chosen[a] = choose(chosen[a], length);
    chosen[b] = choose(chosen[b], length);
  });
}

/// Means whose sums are infinite, once more. Their lengths are so large that scaling costs the small ones nothing that
/// counts. Until a mean is done it has a negative sign, so that no other one changes.
template <unsigned Dim>
void repair_overflown_means(const dense2D<double>& coords, const dense2D<unsigned>& edges,
                            const dense1D<unsigned>& counts, dense1D<double>& means) {
  constexpr double scale = 0x1p-33;  // a node has less than 2^32 edges
  constexpr double largest = std::numeric_limits<double>::max();
  std::replace(means.begin(), means.end(), infinite, -0.0);
  const auto add = [&means](unsigned node, double length) {
    if (std::signbit(means[node])) means[node] -= scale * length;
  };
  visit_lengths<Dim>(coords, edges, [add](unsigned a, unsigned b, double length) {
    add(a, length);
    add(b, length);
  });
  for (std::uint64_t i = 0; i < means.size(); ++i) {
    if (std::signbit(means[i])) means[i] = std::min(-means[i] / counts[i] / scale, largest);
  }
}

template <unsigned Dim>
bool average_lengths(const dense2D<double>& coords, const dense2D<unsigned>& edges, dense1D<double>& sizes) {
  dense1D<unsigned> counts;
  if (!counts.resize(coords.cols(), 0)) return false;
  visit_lengths<Dim>(coords, edges, [sum = sizes.data(), count = counts.data()](unsigned a, unsigned b, double length) {
    sum[a] += length;
    sum[b] += length;
    ++count[a];
    ++count[b];
  });
  bool overflown = false;
  for (std::uint64_t i = 0; i < counts.size(); ++i) {
    if (counts[i] != 0) sizes[i] /= counts[i];
    overflown |= std::isinf(sizes[i]);
  }
  if (overflown) repair_overflown_means<Dim>(coords, edges, counts, sizes);
  return true;
}

template <unsigned Dim>
bool take_lengths(const dense2D<double>& coords, const dense2D<unsigned>& edges, size_rule rule,
                  dense1D<double>& sizes) {
  constexpr auto smaller = [](double x, double y) { return std::min(x, y); };
  constexpr auto larger = [](double x, double y) { return std::max(x, y); };
  if (rule == SIZE_MEAN) return average_lengths<Dim>(coords, edges, sizes);
  if (rule == SIZE_LONGEST) {
    choose_lengths<Dim>(coords, edges, sizes, 0, larger);
  } else {
    choose_lengths<Dim>(coords, edges, sizes, infinite, smaller);
    std::replace(sizes.begin(), sizes.end(), infinite, 0.0);
  }
  return true;
}

int generate(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type, size_rule rule,
             dense1D<double>& sizes) {
  dense2D<unsigned> edges;
  if (copy_edges(connectivity, type, edges) != 0 || !sizes.resize(coords.cols(), 0)) return out_of_memory;
  return with_dimension(coords, [&](auto n) {
    if (!take_lengths<n()>(coords, edges, rule, sizes)) return out_of_memory;
    return static_cast<int>(std::count_if(sizes.begin(), sizes.end(), [](double h) { return h > 0; }));
  });
}

bool is_rule(int rule) noexcept { return rule >= SIZE_MEAN && rule <= SIZE_LONGEST; }

}  // namespace

int metrics_gen_iso(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                    dense1D<double>& sizes, size_rule rule) {
  output written(sizes, coords);
  dense1D<double>& generated = written;
  generated.clear();
  int result = check_mesh(coords, connectivity, type);
  if (result == 0 && !is_rule(rule)) result = -5;
  if (result == 0) result = generate(coords, connectivity, type, rule, generated);
  if (result < 0) generated.clear();
  return result;
}

}  // namespace qel::gridwork
