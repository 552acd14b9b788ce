// A line or plane, and which side of it nodes are on. Sides belong to nodes, so neighbouring elements cannot disagree.
#ifndef QEL_GRIDWORK_TRANSFORMS_HALF_SPACE_H
#define QEL_GRIDWORK_TRANSFORMS_HALF_SPACE_H

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "core/coordinates.h"
#include "core/scaling.h"
#include "qel/dense.h"
#include "qel/fixed.h"

namespace qel::gridwork::detail {

/// Sides are bits, so that those of an element's nodes can be joined. `lost`: the distance is no finite number.
constexpr unsigned on_plane = 1, before = 2, behind = 4, lost = 8;
constexpr unsigned sides_joined = 16;  // combinations

constexpr bool crosses(unsigned side, unsigned other) noexcept { return (side | other) == (before | behind); }

/// The side of a line (Dim = 2) or plane (Dim = 3) that its normal points to.
template <unsigned Dim>
class half_space {
 public:
  using vector = vector_fixed<double, Dim>;

  /// The normal is scaled by a power of two, so that its length neither overflows nor loses digits.
  half_space(const vector& point, const vector& normal, double tol) noexcept : point_(point), normal_(normal) {
    scale(normal_.begin(), normal_.end(), -std::ilogb(largest_magnitude(normal.begin(), normal.end())));
    double square = normal_[0] * normal_[0];
    for (unsigned k = 1; k < Dim; ++k) square += normal_[k] * normal_[k];
    tol_ = tol * std::sqrt(square);
  }

  /// The signed distance, times the length of the scaled normal.
  double distance(const double* p) const noexcept {
    double sum = normal_[0] * (p[0] - point_[0]);
    for (unsigned k = 1; k < Dim; ++k) sum += normal_[k] * (p[k] - point_[k]);
    return sum;
  }

  unsigned side_of(const double* p) const noexcept {
    const double d = distance(p);
    if (!std::isfinite(d)) return lost;
    if (std::abs(d) <= tol_) return on_plane;
    return d > 0 ? before : behind;
  }

 private:
  vector point_, normal_;
  double tol_;
};

/// The side of every node; `none` has no side.
class node_sides {
 public:
  template <unsigned Dim>
  [[nodiscard]] bool find(const dense2D<double>& coords, const half_space<Dim>& space) noexcept {
    const std::uint64_t count = node_bound(coords);
    if (!sides_.resize(count + 1)) return false;
    sides_[0] = 0;
    for (std::uint64_t j = 0; j < count; ++j)
      sides_[j + 1] = static_cast<unsigned char>(space.side_of(coords.column(j)));
    return true;
  }

  unsigned of(unsigned node) const noexcept { return sides_.data()[node + 1U]; }

 private:
  dense1D<unsigned char> sides_;  // that of `none` comes first
};

}  // namespace qel::gridwork::detail

#endif
