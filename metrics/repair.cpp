// Invalid sizes and tensors replaced by given ones.
#include <algorithm>

#include "core/outputs.h"
#include "core/result.h"
#include "metrics/tensors.h"
#include "qel/gridwork/metrics.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// Replaces the invalid columns of the first `count` by default_of(j), where that is valid.
template <unsigned N, class DefaultOf>
int replace_invalid(dense2D<double>& tensors, std::uint64_t count, DefaultOf default_of) {
  int replaced = 0;
  for (std::uint64_t j = 0; j < std::min(count, tensors.cols()); ++j) {
    if (is_valid_metric(tensor_at<N>(tensors, j))) continue;
    const tensor<N> substitute = default_of(j);
    if (!is_valid_metric(substitute)) continue;
    set_tensor(tensors, j, substitute);
    ++replaced;
  }
  return replaced;
}

}  // namespace

int overwrite_invalid_metrics(dense1D<double>& sizes, const dense1D<double>& defaults) {
  const input source(defaults, sizes);
  if (!source.is_ready()) return out_of_memory;
  const dense1D<double>& substitutes = source;
  int replaced = 0;
  for (std::uint64_t i = 0; i < std::min(sizes.size(), substitutes.size()); ++i) {
    if (!(substitutes[i] > 0 && sizes[i] <= 0)) continue;
    sizes[i] = substitutes[i];
    ++replaced;
  }
  return replaced;
}

int overwrite_invalid_metrics(dense2D<double>& tensors, const dense2D<double>& defaults) {
  if (tensors.empty()) return 0;
  return visit_dimension(tensors.rows(), -1, [&](auto n) {
    if (defaults.rows() != tensors.rows()) return -2;
    const input source(defaults, tensors);
    if (!source.is_ready()) return out_of_memory;
    return replace_invalid<n()>(tensors, defaults.cols(), [&](std::uint64_t j) { return tensor_at<n()>(source, j); });
  });
}

int overwrite_invalid_metrics(dense2D<double>& tensors, const dense1D<double>& default_sizes) {
  if (tensors.empty()) return 0;
  return visit_dimension(tensors.rows(), -1, [&](auto n) {
    const input source(default_sizes, tensors);
    if (!source.is_ready()) return out_of_memory;
    const dense1D<double>& sizes = source;
    return replace_invalid<n()>(tensors, sizes.size(), [&](std::uint64_t j) {
      tensor<n()> M;
      metric_iso_to_aniso(sizes[j], M);
      return M;
    });
  });
}

}  // namespace qel::gridwork
