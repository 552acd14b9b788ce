/// @file
/// Gradation, H-shock and generated sizes as they are defined: all edges again and again, until nothing changes; for
/// tensors, the densest of all waiting nodes, searched for one by one.
#ifndef QEL_TESTS_GRADATION_REFERENCE_H
#define QEL_TESTS_GRADATION_REFERENCE_H

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/elementary.h"
#include "metrics/denser_tensor.h"
#include "metrics/growth_laws.h"
#include "qel/gridwork.h"

namespace reference {

using qel::dense1D;
using qel::dense2D;

/// The edges of a mesh and which of them are sound; `has` tells which nodes have a size or a tensor.
struct edge_model {
  struct edge {
    unsigned a, b;
    double length;
    bool sound;
  };
  std::vector<edge> edges;
  bool all_sound = true;

  template <class Has>
  edge_model(const dense2D<double>& coords, const dense2D<unsigned>& list, Has has) {
    for (std::uint64_t j = 0; j < list.cols(); ++j) {
      const unsigned a = list(0, j), b = list(1, j);
      const double l = length(coords, a, b);
      edges.push_back({a, b, l, has(a) && has(b) && std::isfinite(l)});
      all_sound = all_sound && edges.back().sound;
    }
  }

  static double length(const dense2D<double>& coords, unsigned a, unsigned b) {
    double e[3] = {0, 0, 0}, largest = 0, sum = 0;
    for (unsigned k = 0; k < coords.rows(); ++k) {
      e[k] = coords(k, b) - coords(k, a);
      if (!std::isfinite(e[k])) return e[k] + random_meshes::infinity;
      largest = std::max(largest, std::abs(e[k]));
    }
    if (largest == 0) return 0;
    for (double& x : e) x = std::ldexp(x, -std::ilogb(largest)), sum += x * x;
    return std::ldexp(std::sqrt(sum), std::ilogb(largest));
  }

  /// Calls visit(from, to, length) for each sound edge, in both directions.
  template <class Visit>
  void visit(Visit visit) const {
    for (const edge& e : edges) {
      if (e.sound) visit(e.a, e.b, e.length), visit(e.b, e.a, e.length);
    }
  }
};

inline bool is_size(double h) { return h > 0 && h < std::numeric_limits<double>::max(); }

/// Repeated relaxation.
inline void bound_sizes(const edge_model& mesh, double max_variation, dense1D<double>& sizes) {
  for (bool changed = true; changed;) {
    changed = false;
    mesh.visit([&](unsigned from, unsigned to, double length) {
      const double allowed = sizes[from] + max_variation * length;
      if (allowed < sizes[to]) sizes[to] = allowed, changed = true;
    });
  }
}

/// The documented order, by plain search. `Law` as in metrics/growth_laws.h.
template <unsigned N, class Law>
void bound_tensors(const edge_model& mesh, const dense2D<double>& coords, double rate, dense2D<double>& tensors) {
  namespace inner = qel::gridwork::detail;
  const auto n = static_cast<unsigned>(coords.cols());
  std::vector<bool> waits(n, true), has_edge(n, false);
  mesh.visit([&](unsigned from, unsigned, double) { has_edge[from] = true; });
  const auto at = [&](unsigned node) { return inner::tensor_at<N>(tensors, node); };
  const auto is_before = [&](unsigned x, unsigned y) {
    const double dx = inner::density(at(x)), dy = inner::density(at(y));
    if (dx != dy) return dx > dy;
    for (unsigned k = 0; k < N; ++k) {
      if (coords(k, x) != coords(k, y)) return coords(k, x) < coords(k, y);
    }
    return x < y;
  };
  const auto find_first = [&] {
    unsigned first = n;
    for (unsigned node = 0; node < n; ++node) {
      if (waits[node] && has_edge[node] && (first == n || is_before(node, first))) first = node;
    }
    return first;
  };
  // Rounding may leave something to do for another round.
  for (bool changed = true; changed; waits.assign(n, true)) {
    changed = false;
    for (unsigned first; (first = find_first()) != n;) {
      waits[first] = false;
      const Law law(at(first), rate);
      mesh.visit([&](unsigned from, unsigned to, double) {
        if (from != first || to == first) return;
        auto B = at(to);
        double density = inner::density(B);
        if (!inner::intersect(B, law.at(inner::edge_vector<N>(coords, from, to)), density)) return;
        inner::set_tensor(tensors, to, B);
        changed = waits[to] = true;
      });
    }
  }
}

}  // namespace reference

#endif
