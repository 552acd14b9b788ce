// H-shock: how steeply sizes change along edges.
#include <algorithm>
#include <cmath>
#include <limits>

#include "core/elementary.h"
#include "metrics/mesh_edges.h"
#include "metrics/tensor_length.h"

namespace qel::gridwork {

using namespace detail;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

/// The logarithm of the H-shock of an edge.
double log_shock(double length, double h1, double h2) noexcept { return h1 == h2 ? 0 : std::abs(h2 - h1) / length; }

/// 1 / x - 1 / y of 0 <= x <= y, where both inverses may be infinite, or both lengths.
double difference_of_inverses(double x, double y) noexcept { return x == y ? 0 : (1 - x / y) / x; }

template <unsigned Dim>
class shock_of_sizes {
 public:
  [[nodiscard]] bool prepare(const dense2D<double>& coords, const dense1D<double>& sizes) {
    coords_ = &coords;
    return copy_valid_sizes(sizes, coords.cols(), valid_);
  }

  /// False when the edge is not sound.
  bool find(unsigned a, unsigned b, double& result) const noexcept {
    const double length = edge_vector<Dim>(*coords_, a, b).length();
    result = log_shock(length, valid_[a], valid_[b]);
    return valid_[a] > 0 && valid_[b] > 0 && std::isfinite(length);
  }

 private:
  const dense2D<double>* coords_ = nullptr;
  dense1D<double> valid_;  // 0 where there is no size
};

template <unsigned Dim>
class shock_of_tensors {
 public:
  [[nodiscard]] bool prepare(const dense2D<double>& coords, const dense2D<double>& tensors) {
    coords_ = &coords;
    tensors_ = &tensors;
    return flag_valid_tensors<Dim>(tensors, coords.cols(), valid_);
  }

  bool find(unsigned a, unsigned b, double& result) const noexcept {
    const edge_vector<Dim> along(*coords_, a, b);
    if (valid_[a] == 0 || valid_[b] == 0 || !std::isfinite(along.length())) return false;
    const tensor<Dim> A = tensor_at<Dim>(*tensors_, a);
    const tensor<Dim> B = tensor_at<Dim>(*tensors_, b);
    const double la = length_in(A, along);
    const double lb = length_in(B, along);
    result = difference_of_inverses(std::min(la, lb), std::max(la, lb));
    if (la == 0 && lb == 0) result = A == B ? 0 : infinite;
    return true;
  }

 private:
  const dense2D<double>* coords_ = nullptr;
  const dense2D<double>* tensors_ = nullptr;
  dense1D<char> valid_;
};

/// Calls take(logarithm) for each sound edge. The number of edges, or the code of one that is not sound.
template <class Shock, class Take>
int visit_shocks(const dense2D<unsigned>& edges, const Shock& shock, Take take) {
  bool skipped = false;
  for (std::uint64_t j = 0; j < edges.cols(); ++j) {
    double logarithm;
    if (shock.find(edges(0, j), edges(1, j), logarithm)) {
      take(logarithm);
    } else {
      skipped = true;
    }
  }
  return skipped ? skipped_edge : static_cast<int>(edges.cols());
}

template <template <unsigned> class Shock, class Prescribed, class Take>
int visit_mesh_shocks(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                      const Prescribed& prescribed, Take take) {
  const int code = check_mesh(coords, connectivity, type);
  if (code != 0) return code;
  dense2D<unsigned> edges;
  if (copy_edges(connectivity, type, edges) != 0) return out_of_memory;
  return with_dimension(coords, [&](auto n) {
    Shock<n()> shock;
    return shock.prepare(coords, prescribed) ? visit_shocks(edges, shock, take) : out_of_memory;
  });
}

template <template <unsigned> class Shock, class Prescribed>
int find_largest(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                 const Prescribed& prescribed, double& largest) {
  double most = 0;
  const int result = visit_mesh_shocks<Shock>(coords, connectivity, type, prescribed,
                                              [&most](double logarithm) { most = std::max(most, logarithm); });
  largest = exponential(most);
  return result;
}

template <template <unsigned> class Shock, class Prescribed>
int fill_histogram(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                   const Prescribed& prescribed, histogram& H) {
  return visit_mesh_shocks<Shock>(coords, connectivity, type, prescribed,
                                  [&H](double logarithm) { H.process(exponential(logarithm)); });
}

}  // namespace

int H_shock(double L, double h1, double h2, double& shock) {
  if (!(L >= 0)) return -1;
  if (!is_positive_number(h1)) return -2;
  if (!is_positive_number(h2)) return -3;
  shock = exponential(log_shock(L, h1, h2));
  return 0;
}

int H_shock(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
            const dense1D<double>& sizes, double& largest) {
  return find_largest<shock_of_sizes>(coords, connectivity, type, sizes, largest);
}

int H_shock(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
            const dense2D<double>& tensors, double& largest) {
  return find_largest<shock_of_tensors>(coords, connectivity, type, tensors, largest);
}

int H_shock(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
            const dense1D<double>& sizes, histogram& H) {
  return fill_histogram<shock_of_sizes>(coords, connectivity, type, sizes, H);
}

int H_shock(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
            const dense2D<double>& tensors, histogram& H) {
  return fill_histogram<shock_of_tensors>(coords, connectivity, type, tensors, H);
}

}  // namespace qel::gridwork
