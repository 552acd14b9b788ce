// The edges of a mesh, as the functions on sizes along edges take them.
#ifndef QEL_GRIDWORK_METRICS_MESH_EDGES_H
#define QEL_GRIDWORK_METRICS_MESH_EDGES_H

#include <algorithm>
#include <cmath>

#include "core/coordinates.h"
#include "core/edge_vector.h"
#include "core/elements.h"
#include "core/result.h"
#include "metrics/tensors.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/metrics.h"
#include "qel/gridwork/topology.h"

namespace qel::gridwork::detail {

constexpr int skipped_edge = -4;

/// 0, or the code of the argument that is refused.
inline int check_mesh(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type) {
  if (!in_plane_or_space(coords)) return -1;
  return is_element_type(type) && check_IDs(connectivity, type, node_bound(coords)) ? 0 : -2;
}

/// Calls action(dimension<N>()) for coordinates of N rows, 2 or 3.
template <class Action>
int with_dimension(const dense2D<double>& coords, Action action) {
  return coords.rows() == 2 ? action(dimension<2>()) : action(dimension<3>());
}

/// For each of n nodes its size, or 0 where it has none. False when memory ran out.
[[nodiscard]] inline bool copy_valid_sizes(const dense1D<double>& sizes, std::uint64_t n, dense1D<double>& valid) {
  if (!valid.resize(n)) return false;
  const std::uint64_t given = std::min(n, sizes.size());
  std::transform(sizes.begin(), sizes.begin() + given, valid.begin(),
                 [](double h) { return is_positive_number(h) ? h : 0; });
  std::fill(valid.begin() + given, valid.end(), 0.0);
  return true;
}

/// For each of n nodes 1 where it has a valid tensor, else 0. False when memory ran out.
template <unsigned N>
[[nodiscard]] bool flag_valid_tensors(const dense2D<double>& tensors, std::uint64_t n, dense1D<char>& valid) {
  if (!valid.resize(n)) return false;
  const std::uint64_t given = tensors.rows() == tensor_rows<N> ? std::min(n, tensors.cols()) : 0;
  for (std::uint64_t j = 0; j < given; ++j) valid[j] = is_valid_metric(tensor_at<N>(tensors, j)) ? 1 : 0;
  std::fill(valid.begin() + given, valid.end(), '\0');
  return true;
}

}  // namespace qel::gridwork::detail

#endif
