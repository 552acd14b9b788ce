// Sizes and tensors held within the smallest and the largest size.
#include <cmath>
#include <limits>

#include "core/result.h"
#include "metrics/spectrum.h"
#include "qel/gridwork/metrics.h"

namespace qel::gridwork {

using namespace detail;

namespace {

constexpr double no_bound = std::numeric_limits<double>::max();

bool is_unbounded(double hmin, double hmax) noexcept { return !(hmin > 0) && hmax == no_bound; }

/// 0, or the code of the bound that is not finite.
int check_bounds(double hmin, double hmax) noexcept {
  if (!std::isfinite(hmin)) return -2;
  return std::isfinite(hmax) ? 0 : -3;
}

/// Sizes and eigenvalues run in opposite directions.
struct eigenvalue_bounds {
  double lowest;
  double highest;

  eigenvalue_bounds(double hmin, double hmax) noexcept
      : lowest(hmax > 0 ? 1 / (hmax * hmax) : 0), highest(hmin > 0 ? 1 / (hmin * hmin) : no_bound) {}

  /// True when the value was changed; a NaN becomes the highest.
  bool clamp(double& value) const noexcept {
    bool changed = false;
    if (!(highest >= value)) {
      value = highest;
      changed = true;
    }
    if (lowest > value) {
      value = lowest;
      changed = true;
    }
    return changed;
  }
};

template <unsigned N>
bool clamp_tensor(tensor<N>& M, const eigenvalue_bounds& bounds) noexcept {
  spectrum<N> s;
  if (!decompose(M, s)) s.values = std::numeric_limits<double>::quiet_NaN();  // the vectors are the identity
  bool changed = false;
  for (double& value : s.values) changed |= bounds.clamp(value);
  if (changed) M = weighted_squares<N>(s.values, [&](unsigned i, unsigned k) { return s.vectors(k, i); });
  return changed;
}

template <unsigned N>
int bound(tensor<N>& M, double hmin, double hmax) noexcept {
  if (is_unbounded(hmin, hmax)) return 0;
  const int code = check_bounds(hmin, hmax);
  if (code != 0) return code;
  return clamp_tensor(M, eigenvalue_bounds(hmin, hmax)) ? 1 : 0;
}

bool clamp_size(double& h, double hmin, double hmax) noexcept {
  const bool small = !(h >= hmin);
  const bool large = !small && h > hmax;
  if (small) h = hmin;
  if (large) h = hmax;
  return small || large;
}

/// Does nothing with the entries that were changed.
struct no_list {
  [[nodiscard]] bool reserve(std::uint64_t) noexcept { return true; }
  [[nodiscard]] bool push_back(unsigned) noexcept { return true; }
};

/// Calls clamp(i) for `count` entries and lists those for which it is true. Returns their number.
template <class List, class Clamp>
int clamp_all(std::uint64_t count, List& changed, Clamp clamp) {
  if (!changed.reserve(count)) return out_of_memory;
  int total = 0;
  for (std::uint64_t i = 0; i < count; ++i) {
    if (clamp(i)) total += changed.push_back(static_cast<unsigned>(i)) ? 1 : 0;
  }
  return total;
}

template <class List>
int bound_all(dense1D<double>& sizes, double hmin, double hmax, List& changed) {
  if (is_unbounded(hmin, hmax) || sizes.empty()) return 0;
  const int code = check_bounds(hmin, hmax);
  if (code != 0) return code;
  return clamp_all(sizes.size(), changed, [&](std::uint64_t i) { return clamp_size(sizes[i], hmin, hmax); });
}

template <class List>
int bound_all(dense2D<double>& tensors, double hmin, double hmax, List& changed) {
  if (is_unbounded(hmin, hmax) || tensors.empty()) return 0;
  return visit_dimension(tensors.rows(), -1, [&](auto n) {
    const int code = check_bounds(hmin, hmax);
    if (code != 0) return code;
    const eigenvalue_bounds bounds(hmin, hmax);
    return clamp_all(tensors.cols(), changed, [&](std::uint64_t j) {
      tensor<n()> M = tensor_at<n()>(tensors, j);
      const bool was_changed = clamp_tensor(M, bounds);
      if (was_changed) set_tensor(tensors, j, M);
      return was_changed;
    });
  });
}

}  // namespace

int bound_metric(symmetric_fixed<double, 2>& M, double hmin, double hmax) { return bound(M, hmin, hmax); }

int bound_metric(symmetric_fixed<double, 3>& M, double hmin, double hmax) { return bound(M, hmin, hmax); }

int bound_metrics(dense1D<double>& sizes, double hmin, double hmax) {
  no_list changed;
  return bound_all(sizes, hmin, hmax, changed);
}

int bound_metrics(dense1D<double>& sizes, double hmin, double hmax, dense1D<unsigned>& ids) {
  ids.clear();
  return bound_all(sizes, hmin, hmax, ids);
}

int bound_metrics(dense2D<double>& tensors, double hmin, double hmax) {
  no_list changed;
  return bound_all(tensors, hmin, hmax, changed);
}

int bound_metrics(dense2D<double>& tensors, double hmin, double hmax, dense1D<unsigned>& ids) {
  ids.clear();
  return bound_all(tensors, hmin, hmax, ids);
}

}  // namespace qel::gridwork
