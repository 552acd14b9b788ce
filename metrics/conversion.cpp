// Sizes as tensors, and tensors of space in planes.
#include <algorithm>

#include "core/outputs.h"
#include "core/result.h"
#include "core/vectors.h"
#include "metrics/tensors.h"
#include "qel/gridwork/metrics.h"

namespace qel::gridwork {

using namespace detail;

namespace {

using frame = matrix_fixed<double, 3, 2>;

constexpr unsigned frame_rows = 6;

double eigenvalue_of_size(double h) noexcept { return h > 0 ? 1 / (h * h) : 0; }

template <unsigned N>
tensor<N> isotropic_tensor(double h) noexcept {
  tensor<N> M{};
  for (unsigned k = 0; k < N; ++k) M(k, k) = eigenvalue_of_size(h);
  return M;
}

tensor<2> isotropic_in_plane(double h, const frame& F) noexcept {
  if (!(h > 0)) return {};
  const double lambda = eigenvalue_of_size(h);
  return {lambda * dot(&F(0, 0), &F(0, 0)), lambda * dot(&F(0, 0), &F(0, 1)), lambda * dot(&F(0, 1), &F(0, 1))};
}

tensor<2> restricted_to_plane(const tensor<3>& M, const frame& F) noexcept {
  double images[2][3];  // the columns of M F
  for (unsigned j = 0; j < 2; ++j) {
    for (unsigned k = 0; k < 3; ++k) images[j][k] = M(k, 0) * F(0, j) + M(k, 1) * F(1, j) + M(k, 2) * F(2, j);
  }
  return {dot(&F(0, 0), images[0]), dot(&F(0, 0), images[1]), dot(&F(0, 1), images[1])};
}

frame frame_at(const dense2D<double>& frames, std::uint64_t j) noexcept {
  frame F;
  std::copy_n(frames.column(j), frame_rows, F.data());
  return F;
}

bool holds(const dense2D<double>& m, std::uint64_t rows, std::uint64_t cols) noexcept {
  return m.rows() == rows && m.cols() >= cols;
}

/// Writes tensor_of(i) where the size is one.
template <unsigned N, class TensorOf>
int write_tensors(const dense1D<double>& sizes, dense2D<double>& tensors, TensorOf tensor_of) noexcept {
  const input source(sizes, tensors);
  if (!source.is_ready()) return out_of_memory;
  const dense1D<double>& h = source;
  for (std::uint64_t i = 0; i < h.size(); ++i) {
    if (h[i] > 0) set_tensor<N>(tensors, i, tensor_of(h[i], i));
  }
  return 0;
}

template <unsigned N>
int write_isotropic(const dense1D<double>& sizes, dense2D<double>& tensors) noexcept {
  if (sizes.empty() && tensors.empty()) return 0;
  if (!holds(tensors, tensor_rows<N>, sizes.size())) return -2;
  return write_tensors<N>(sizes, tensors, [](double h, std::uint64_t) { return isotropic_tensor<N>(h); });
}

}  // namespace

void metric_iso_to_aniso(double h, symmetric_fixed<double, 2>& M) { M = isotropic_tensor<2>(h); }

void metric_iso_to_aniso(double h, symmetric_fixed<double, 3>& M) { M = isotropic_tensor<3>(h); }

void metric_iso_to_aniso2d(double h, const matrix_fixed<double, 3, 2>& F, symmetric_fixed<double, 2>& M) {
  M = isotropic_in_plane(h, F);
}

void metric_aniso3d_to_aniso2d(const symmetric_fixed<double, 3>& M3, const matrix_fixed<double, 3, 2>& F,
                               symmetric_fixed<double, 2>& M2) {
  M2 = restricted_to_plane(M3, F);
}

int metrics_iso_to_aniso2d(const dense1D<double>& sizes, dense2D<double>& tensors) {
  return write_isotropic<2>(sizes, tensors);
}

int metrics_iso_to_aniso3d(const dense1D<double>& sizes, dense2D<double>& tensors) {
  return write_isotropic<3>(sizes, tensors);
}

int metrics_iso_to_aniso2d(const dense1D<double>& sizes, const dense2D<double>& frames, dense2D<double>& tensors) {
  if (sizes.empty() && tensors.empty()) return 0;
  if (!holds(frames, frame_rows, sizes.size()) || !holds(tensors, tensor_rows<2>, sizes.size())) return -2;
  const input planes(frames, tensors);
  if (!planes.is_ready()) return out_of_memory;
  return write_tensors<2>(sizes, tensors,
                          [&](double h, std::uint64_t i) { return isotropic_in_plane(h, frame_at(planes, i)); });
}

int metrics_aniso3d_to_aniso2d(const dense2D<double>& tensors3d, const dense2D<double>& frames,
                               dense2D<double>& tensors2d) {
  if (tensors3d.empty() && tensors2d.empty()) return 0;
  if (tensors3d.rows() != tensor_rows<3>) return -1;
  const std::uint64_t count = tensors3d.cols();
  if (!holds(frames, frame_rows, count) || !holds(tensors2d, tensor_rows<2>, count)) return -2;
  const input source(tensors3d, tensors2d);
  const input planes(frames, tensors2d);
  if (!source.is_ready() || !planes.is_ready()) return out_of_memory;
  for (std::uint64_t j = 0; j < count; ++j) {
    set_tensor(tensors2d, j, restricted_to_plane(tensor_at<3>(source, j), frame_at(planes, j)));
  }
  return 0;
}

}  // namespace qel::gridwork
