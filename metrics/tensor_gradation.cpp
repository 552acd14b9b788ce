// Gradation of tensors: the densest waiting node bounds its neighbours.
#include "metrics/tensor_gradation.h"

#include <algorithm>
#include <functional>
#include <numeric>

#include "metrics/adjacent_nodes.h"
#include "metrics/changes.h"
#include "metrics/denser_tensor.h"
#include "metrics/growth_laws.h"
#include "metrics/mesh_edges.h"
#include "metrics/node_queue.h"

namespace qel::gridwork::detail {
namespace {

/// Drops edges that are not sound, and those from a node to itself. True when there were some that are not sound.
template <unsigned N>
bool drop_unsound_edges(const dense2D<double>& coords, const dense1D<char>& valid, dense2D<unsigned>& edges) noexcept {
  bool skipped = false;
  std::uint64_t kept = 0;
  for (std::uint64_t j = 0; j < edges.cols(); ++j) {
    const unsigned a = edges(0, j);
    const unsigned b = edges(1, j);
    const bool sound = valid[a] != 0 && valid[b] != 0 && std::isfinite(edge_vector<N>(coords, a, b).length());
    skipped |= !sound;
    edges(0, kept) = a;
    edges(1, kept) = b;
    if (sound && a != b) ++kept;
  }
  (void)edges.resize(2, kept);  // not more than before
  return skipped;
}

/// Whose turn comes first: the densest, then by place, then by number.
template <unsigned N>
struct densest_first {
  const dense2D<double>* coords;

  template <class Entry>
  bool operator()(const Entry& x, const Entry& y) const noexcept {
    if (x.key != y.key) return x.key > y.key;
    const double* p = coords->column(x.node);
    const double* q = coords->column(y.node);
    for (unsigned k = 0; k < N; ++k) {
      if (p[k] != q[k]) return p[k] < q[k];
    }
    return x.node < y.node;
  }
};

template <unsigned N, class Law>
class tensor_gradation {
 public:
  tensor_gradation(const dense2D<double>& coords, double rate) noexcept
      : coords_(coords), rate_(rate), queue_(densest_first<N>{&coords}) {}

  /// The edges are sound, and used up. False when memory ran out.
  [[nodiscard]] bool prepare(const dense2D<double>& tensors, dense2D<unsigned>& edges) {
    const std::uint64_t n = coords_.cols();
    const std::uint64_t given = std::min(n, tensors.cols());
    if (!rows_.build(edges, n)) return false;
    edges.clear_hard();
    if (!memory_.resize(n) || !densities_.resize(n) || !queue_.prepare(n)) return false;
    tensors_ = memory_.data();
    for (std::uint64_t j = 0; j < given; ++j) tensors_[j] = tensor_at<N>(tensors, j);
    return true;
  }

  /// The nodes that bound no neighbour at first have nothing to do in their turn, so they need not wait: the tensors round
  /// them only become denser. False when there are no others.
  bool list_bounding_nodes() noexcept {
    for (unsigned node = 0; node < coords_.cols(); ++node) {
      if (rows_.begin(node) == rows_.end(node)) continue;
      densities_[node] = density(tensors_[node]);
      if (bounds_a_neighbor(node)) queue_.push({densities_[node], node});
    }
    return !queue_.empty();
  }

  void bound_all() noexcept {
    while (!queue_.empty()) bound_neighbors(queue_.pop());
  }

  int store(dense2D<double>& tensors, dense1D<unsigned>* ids) const {
    const auto is_changed = [&](std::uint64_t j) {
      const auto differ = [](double x, double y) { return x < y || x > y; };  // what is no number never changes
      const tensor<N> given = tensor_at<N>(tensors, j);
      return std::inner_product(given.begin(), given.end(), tensors_[j].begin(), false, std::logical_or<>(), differ);
    };
    const auto write = [&](unsigned j) { set_tensor(tensors, j, tensors_[j]); };
    return store_changes(std::min(coords_.cols(), tensors.cols()), is_changed, write, ids);
  }

 private:
  /// The densities of the neighbours may be missing yet.
  bool bounds_a_neighbor(unsigned node) const noexcept {
    const Law law(tensors_[node], rate_);
    return std::any_of(rows_.begin(node), rows_.end(node), [&](unsigned other) {
      const tensor<N> S = law.at(edge_vector<N>(coords_, node, other));
      tensor<N> B = tensors_[other];
      if (is_below(S, B)) return false;
      double density_of_B = density(B);
      return intersect(B, S, density_of_B);
    });
  }

  void bound_neighbors(unsigned node) noexcept {
    const Law law(tensors_[node], rate_);
    for (const unsigned* other = rows_.begin(node); other != rows_.end(node); ++other) {
      const tensor<N> S = law.at(edge_vector<N>(coords_, node, *other));
      tensor<N>& B = tensors_[*other];
      if (is_below(S, B) || !intersect(B, S, densities_[*other])) continue;
      queue_.push({densities_[*other], *other});
    }
  }

  /// True when S has larger sizes than B in all directions; most edges are done with this.
  static bool is_below(const tensor<N>& S, const tensor<N>& B) noexcept {
    tensor<N> difference;
    for (unsigned k = 0; k < tensor_rows<N>; ++k) difference[k] = B[k] - S[k];
    return is_positive_definite(difference);
  }

  const dense2D<double>& coords_;
  double rate_;
  adjacent_nodes rows_;
  node_queue<densest_first<N>> queue_;
  dense1D<tensor<N>> memory_;
  dense1D<double> densities_;
  tensor<N>* tensors_ = nullptr;
};

template <unsigned N, class Law>
int bound_along(const dense2D<double>& coords, dense2D<unsigned>& edges, dense2D<double>& tensors, double rate,
                dense1D<unsigned>* ids) {
  bool skipped;
  {
    dense1D<char> valid;
    if (!flag_valid_tensors<N>(tensors, coords.cols(), valid)) return out_of_memory;
    skipped = drop_unsound_edges<N>(coords, valid, edges);
  }
  int result = 0;
  if (!edges.empty()) {
    tensor_gradation<N, Law> gradation(coords, rate);
    if (!gradation.prepare(tensors, edges)) return out_of_memory;
    bool changes = false;
    // The second round finds nothing to do, but where tensors so thin that rounding decides have changed meanwhile.
    for (; gradation.list_bounding_nodes(); changes = true) gradation.bound_all();
    if (changes) result = gradation.store(tensors, ids);
  }
  return skipped && result >= 0 ? skipped_edge : result;
}

}  // namespace

int bound_tensors(const dense2D<double>& coords, dense2D<unsigned>& edges, dense2D<double>& tensors, growth law,
                  double rate, dense1D<unsigned>* ids) {
  return with_dimension(coords, [&](auto n) {
    return law == growth::proportional ? bound_along<n(), proportional_growth<n()>>(coords, edges, tensors, rate, ids)
                                       : bound_along<n(), additive_growth<n()>>(coords, edges, tensors, rate, ids);
  });
}

}  // namespace qel::gridwork::detail
