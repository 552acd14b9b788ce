// Gradation: sizes and tensors whose change along edges is bounded. Sizes are lowered in increasing order, so that each
// node bounds its neighbours once.
#include <cmath>
#include <limits>

#include "core/elementary.h"
#include "core/outputs.h"
#include "metrics/adjacent_nodes.h"
#include "metrics/changes.h"
#include "metrics/mesh_edges.h"
#include "metrics/node_queue.h"
#include "metrics/tensor_gradation.h"

namespace qel::gridwork {

using namespace detail;

namespace {

constexpr auto smallest_first = [](const auto& x, const auto& y) { return x.key < y.key; };

template <unsigned Dim>
class size_gradation {
 public:
  size_gradation(const dense2D<double>& coords, double max_variation) noexcept
      : coords_(coords), rate_(max_variation), queue_(smallest_first) {}

  [[nodiscard]] bool prepare(const dense1D<double>& sizes) {
    return copy_valid_sizes(sizes, coords_.cols(), sizes_) && queue_.prepare(coords_.cols());
  }

  /// Makes the nodes that bound a neighbour wait. True when an edge is not sound.
  bool queue_bounding_nodes(const dense2D<unsigned>& edges) noexcept {
    bool skipped = false;
    for (std::uint64_t j = 0; j < edges.cols(); ++j) {
      const unsigned a = edges(0, j);
      const unsigned b = edges(1, j);
      const double length = edge_vector<Dim>(coords_, a, b).length();
      const bool a_is_smaller = sizes_[a] < sizes_[b];
      const double least = a_is_smaller ? sizes_[a] : sizes_[b];
      const double most = a_is_smaller ? sizes_[b] : sizes_[a];
      if (!(least > 0 && length <= std::numeric_limits<double>::max())) {
        skipped = true;
      } else if (least + rate_ * length < most) {
        queue_.push({least, a_is_smaller ? a : b});
      }
    }
    return skipped;
  }

  bool is_done() const noexcept { return queue_.empty(); }

  /// Lowers the sizes. False when memory ran out.
  [[nodiscard]] bool bound(const dense2D<unsigned>& edges) {
    adjacent_nodes rows;
    if (!rows.build(edges, coords_.cols())) return false;
    while (!queue_.empty()) {
      const unsigned node = queue_.pop();
      for (const unsigned* other = rows.begin(node); other != rows.end(node); ++other) lower(*other, node);
    }
    return true;
  }

  int store(dense1D<double>& sizes, dense1D<unsigned>* ids) const {
    return store_changes(
        std::min(coords_.cols(), sizes.size()), [&](std::uint64_t i) { return sizes_[i] > 0 && sizes_[i] != sizes[i]; },
        [&](unsigned i) { sizes[i] = sizes_[i]; }, ids);
  }

 private:
  /// Comparisons with a length that is no number, or with a missing size, are false.
  void lower(unsigned node, unsigned from) noexcept {
    const double largest = sizes_[from] + rate_ * edge_vector<Dim>(coords_, from, node).length();
    if (!(largest < sizes_[node])) return;
    sizes_[node] = largest;
    queue_.push({largest, node});
  }

  const dense2D<double>& coords_;
  double rate_;
  dense1D<double> sizes_;  // 0 where there is none
  node_queue<decltype(smallest_first)> queue_;
};

template <unsigned Dim>
int bound_sizes(const dense2D<double>& coords, const dense2D<unsigned>& edges, dense1D<double>& sizes,
                double max_variation, dense1D<unsigned>* ids) {
  size_gradation<Dim> gradation(coords, max_variation);
  if (!gradation.prepare(sizes)) return out_of_memory;
  const bool skipped = gradation.queue_bounding_nodes(edges);
  int result = 0;
  if (!gradation.is_done()) result = gradation.bound(edges) ? gradation.store(sizes, ids) : out_of_memory;
  return skipped && result >= 0 ? skipped_edge : result;
}

/// How much sizes or tensors may change along an edge. Sizes grow by the rate times its length under both laws.
struct change_bound {
  bool is_valid;
  growth law;
  double rate;
};

change_bound variation(double most) noexcept { return {most >= 0 && std::isfinite(most), growth::additive, most}; }

change_bound gradation(double most) noexcept {
  return {most >= 1 && std::isfinite(most), growth::proportional, logarithm(most)};
}

/// Checks, then calls bound_edges(edges, ids), which may use up the edges.
template <class BoundEdges>
int bound_mesh(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
               const change_bound& bound, dense1D<unsigned>* ids, BoundEdges bound_edges) {
  dense1D<unsigned> unwanted;
  output written(ids != nullptr ? *ids : unwanted, connectivity);
  dense1D<unsigned>& changed = written;
  changed.clear();
  const int code = check_mesh(coords, connectivity, type);
  if (code != 0) return code;
  if (!bound.is_valid) return -5;
  dense2D<unsigned> edges;
  if (copy_edges(connectivity, type, edges) != 0) return out_of_memory;
  return bound_edges(edges, ids != nullptr ? &changed : nullptr);
}

int bound_sizes_of_mesh(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                        dense1D<double>& sizes, const change_bound& bound, dense1D<unsigned>* ids) {
  return bound_mesh(coords, connectivity, type, bound, ids,
                    [&](const dense2D<unsigned>& edges, dense1D<unsigned>* changed) {
                      return with_dimension(
                          coords, [&](auto n) { return bound_sizes<n()>(coords, edges, sizes, bound.rate, changed); });
                    });
}

int bound_tensors_of_mesh(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                          dense2D<double>& tensors, const change_bound& bound, dense1D<unsigned>* ids) {
  return bound_mesh(coords, connectivity, type, bound, ids, [&](dense2D<unsigned>& edges, dense1D<unsigned>* changed) {
    return bound_tensors(coords, edges, tensors, bound.law, bound.rate, changed);
  });
}

}  // namespace

int bound_metric_variations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                            dense1D<double>& sizes, double max_variation) {
  return bound_sizes_of_mesh(coords, connectivity, type, sizes, variation(max_variation), nullptr);
}

int bound_metric_variations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                            dense1D<double>& sizes, double max_variation, dense1D<unsigned>& ids) {
  return bound_sizes_of_mesh(coords, connectivity, type, sizes, variation(max_variation), &ids);
}

int bound_metric_gradations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                            dense1D<double>& sizes, double max_gradation) {
  return bound_sizes_of_mesh(coords, connectivity, type, sizes, gradation(max_gradation), nullptr);
}

int bound_metric_gradations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                            dense1D<double>& sizes, double max_gradation, dense1D<unsigned>& ids) {
  return bound_sizes_of_mesh(coords, connectivity, type, sizes, gradation(max_gradation), &ids);
}

int bound_metric_variations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                            dense2D<double>& tensors, double max_variation) {
  return bound_tensors_of_mesh(coords, connectivity, type, tensors, variation(max_variation), nullptr);
}

int bound_metric_variations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                            dense2D<double>& tensors, double max_variation, dense1D<unsigned>& ids) {
  return bound_tensors_of_mesh(coords, connectivity, type, tensors, variation(max_variation), &ids);
}

int bound_metric_gradations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                            dense2D<double>& tensors, double max_gradation) {
  return bound_tensors_of_mesh(coords, connectivity, type, tensors, gradation(max_gradation), nullptr);
}

int bound_metric_gradations(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                            dense2D<double>& tensors, double max_gradation, dense1D<unsigned>& ids) {
  return bound_tensors_of_mesh(coords, connectivity, type, tensors, gradation(max_gradation), &ids);
}

}  // namespace qel::gridwork
