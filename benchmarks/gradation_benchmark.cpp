// Sizes and tensors along the edges of a mesh: generation, H-shock, gradation; beside the listing of the edges, beside the
// edge qualities of the same mesh, and beside Dijkstra's algorithm, which bounds sizes too.
#include "compare.h"
#include "inputs.h"

#ifdef QEL_HAVE_LEMON
#include <lemon/dijkstra.h>
#include <lemon/smart_graph.h>
#endif

namespace {

using namespace qel::gridwork;
using qel::dense1D;
using qel::dense2D;

/// Tetrahedra of the unit cube.
struct cube {
  dense2D<double> coords;
  dense2D<unsigned> tetrahedra;

  explicit cube(unsigned cells) : tetrahedra(inputs::tetrahedra(cells, false)) {
    const unsigned n = cells + 1;
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> shift(0, 0.3);
    coords = dense2D<double>(3, std::uint64_t{n} * n * n);
    for (unsigned j = 0; j < coords.cols(); ++j) {
      const unsigned at[3] = {j % n, j / n % n, j / n / n};
      for (unsigned k = 0; k < 3; ++k) coords(k, j) = (at[k] + shift(random)) / cells;
    }
  }

  double distance(std::uint64_t j) const { return std::abs(coords(0, j) + 0.3 * coords(1, j) - 0.6); }

  template <class SizeAt>
  dense1D<double> sizes(SizeAt size_at) const {
    dense1D<double> all(coords.cols());
    for (unsigned j = 0; j < all.size(); ++j) all[j] = size_at(j);
    return all;
  }

  /// The size h(distance) across a plane, 0.5 along it.
  template <class SizeAt>
  dense2D<double> tensors(SizeAt h) const {
    constexpr double normal[3] = {0.9578262852211514, 0.28734788556634543, 0};
    dense2D<double> all(6, coords.cols());
    for (std::uint64_t j = 0; j < all.cols(); ++j) {
      const double across = 1 / (h(distance(j)) * h(distance(j)));
      double* M = all.column(j);
      for (unsigned c = 0; c < 3; ++c) {
        for (unsigned r = 0; r <= c; ++r) *M++ = (r == c ? 4 : 0) + (across - 4) * normal[r] * normal[c];
      }
    }
    return all;
  }
};

/// Runs f on a copy of the field, so that each time has the same to do.
template <class Field, class Run>
void add_on_copy(const std::string& group, const std::string& who, const Field& field, Run run) {
  add_benchmark(group, who, [=] {
    Field changed;
    return changed.copy(field) ? run(changed) : 0;
  });
}

void add_listing(const std::string& group, const cube& m) {
  add_benchmark(group, "copy_edges", [=] {
    dense2D<unsigned> edges;
    return copy_edges(m.tetrahedra, ELT_TETRA4, edges) + static_cast<int>(edges.cols());
  });
}

template <class Field>
void add_edge_qualities(const std::string& group, const cube& m, const Field& field) {
  add_benchmark(group, "edge_qualities", [=] {
    histogram H;
    return edge_qualities(m.coords, m.tetrahedra, ELT_TETRA4, field, H, {});
  });
}

void add_generation(const cube& m) {
  for (const size_rule rule : {SIZE_MEAN, SIZE_SHORTEST}) {
    const std::string group = rule == SIZE_MEAN ? "mean lengths as sizes" : "shortest lengths as sizes";
    add_benchmark(group, "ours", [=] {
      dense1D<double> sizes;
      return metrics_gen_iso(m.coords, m.tetrahedra, ELT_TETRA4, sizes, rule);
    });
    add_listing(group, m);
  }
}

template <class Field>
void add_shock(const std::string& group, const cube& m, const Field& field) {
  add_benchmark(group, "ours", [=] {
    histogram H;
    return H_shock(m.coords, m.tetrahedra, ELT_TETRA4, field, H);
  });
  add_edge_qualities(group, m, field);
}

#ifdef QEL_HAVE_LEMON
/// All nodes are sources, at the distance of their size; the graph is made of the edges.
double bound_by_lemon(const cube& m, const dense1D<double>& sizes, double max_variation) {
  dense2D<unsigned> edges;
  if (copy_edges(m.tetrahedra, ELT_TETRA4, edges) != 0) return 0;
  lemon::SmartGraph graph;
  graph.reserveNode(static_cast<int>(sizes.size()));
  graph.reserveEdge(static_cast<int>(edges.cols()));
  for (std::uint64_t j = 0; j < sizes.size(); ++j) graph.addNode();
  lemon::SmartGraph::EdgeMap<double> steps(graph);
  for (std::uint64_t j = 0; j < edges.cols(); ++j) {
    const double* a = m.coords.column(edges(0, j));
    const double* b = m.coords.column(edges(1, j));
    const double x = b[0] - a[0], y = b[1] - a[1], z = b[2] - a[2];
    const auto node = [&](unsigned row) { return lemon::SmartGraph::nodeFromId(static_cast<int>(edges(row, j))); };
    steps[graph.addEdge(node(0), node(1))] = max_variation * std::sqrt(x * x + y * y + z * z);
  }
  lemon::Dijkstra<lemon::SmartGraph, lemon::SmartGraph::EdgeMap<double>> search(graph, steps);
  search.init();
  for (std::uint64_t j = 0; j < sizes.size(); ++j) {
    search.addSource(lemon::SmartGraph::nodeFromId(static_cast<int>(j)), sizes[j]);
  }
  search.start();
  return search.dist(lemon::SmartGraph::nodeFromId(0));
}
#endif

void add_sizes(const std::string& group, const cube& m, const dense1D<double>& sizes) {
  constexpr double variation = 0.26;
  add_on_copy(group, "ours", sizes, [=](dense1D<double>& h) {
    return bound_metric_variations(m.coords, m.tetrahedra, ELT_TETRA4, h, variation);
  });
  add_listing(group, m);
#ifdef QEL_HAVE_LEMON
  add_benchmark(group, "LEMON", [=] { return bound_by_lemon(m, sizes, variation); });
#endif
}

void add_tensors(const std::string& group, const cube& m, const dense2D<double>& tensors, bool keeps_shape) {
  add_on_copy(group, "ours", tensors, [=](dense2D<double>& M) {
    return keeps_shape ? bound_metric_gradations(m.coords, m.tetrahedra, ELT_TETRA4, M, 1.3)
                       : bound_metric_variations(m.coords, m.tetrahedra, ELT_TETRA4, M, 0.26);
  });
  add_edge_qualities(group, m, tensors);
}

}  // namespace

int main(int argc, char** argv) {
  const cube large(55), small(30);
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> exponent(-3, 0);
  const auto constant = [](auto) { return 0.1; };
  const auto smooth = [](double distance) { return std::min(0.5, 0.01 + 0.5 * distance); };
  const auto sharp = [](double distance) { return distance < 0.02 ? 0.01 : 0.5; };
  add_generation(large);
  add_shock("H-shock of sizes", large, large.sizes(constant));
  add_shock("H-shock of tensors", large, large.tensors(smooth));
  add_sizes("bound sizes, nothing to lower", large, large.sizes(constant));
  add_sizes("bound sizes, random", large, large.sizes([&](auto) { return std::pow(10, exponent(random)); }));
  add_sizes("bound sizes, from one layer", large, large.sizes([](unsigned j) { return j < 56 * 56 ? 1e-3 : 1e3; }));
  for (const bool keeps_shape : {true, false}) {
    const std::string law = keeps_shape ? ", gradations" : ", variations";
    add_tensors("bound tensors, nothing to change" + law, large, large.tensors(constant), keeps_shape);
    add_tensors("bound tensors, smooth layer" + law, small, small.tensors(smooth), keeps_shape);
    add_tensors("bound tensors, sharp layer" + law, small, small.tensors(sharp), keeps_shape);
  }
  return run_benchmarks(argc, argv);
}
