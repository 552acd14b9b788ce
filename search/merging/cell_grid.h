// A box that is parted into cells.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_CELL_GRID_H
#define QEL_GRIDWORK_SEARCH_MERGING_CELL_GRID_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "core/check.h"
#include "core/limits.h"

namespace qel::gridwork::detail {

/// The closed box around positions, none of them NaN.
template <unsigned Dim>
struct bounding_box {
  double lower[Dim], upper[Dim];

  bounding_box() noexcept {
    std::fill_n(lower, Dim, std::numeric_limits<double>::infinity());
    std::fill_n(upper, Dim, -std::numeric_limits<double>::infinity());
  }

  void include(const double* p) noexcept {
    for (unsigned a = 0; a < Dim; ++a) {
      lower[a] = std::min(lower[a], p[a]);
      upper[a] = std::max(upper[a], p[a]);
    }
  }

  double extent(unsigned a) const noexcept { return upper[a] - lower[a]; }
  double largest(unsigned a) const noexcept { return std::max(std::abs(lower[a]), std::abs(upper[a])); }
};

/// Cells of equal size that fill a box. A node is at home in the cell that holds its position, and is entered in every
/// cell that the tolerance around it may touch: of two near nodes each is entered where the other one is at home. Cells
/// are so large that there are two such cells along an axis at most.
template <unsigned Dim, class Number = unsigned>
class cell_grid {
  using signed_number = std::make_signed_t<Number>;

 public:
  /// Parts the box into about so many cells, fewer where the tolerance forbids it or numbers leave their range.
  cell_grid(const bounding_box<Dim>& box, double tol, std::uint64_t wanted) noexcept {
    const double edge = edge_length(box, static_cast<double>(wanted));
    for (unsigned a = 0; a < Dim; ++a) {
      origin_[a] = box.lower[a];
      strides_[a] = cell_count_;
      part_axis(a, box.extent(a), edge, reach_of(box, tol, a));
      cell_count_ *= static_cast<Number>(last_cell_[a]) + 1;
    }
  }

  Number cell_count() const noexcept { return cell_count_; }

  /// Infinite along an axis of one cell.
  double cell_length(unsigned a) const noexcept { return 1 / cells_per_length_[a]; }

  /// Calls enter(cell, at_home) for each cell that a node in the box is entered in, the one where it is at home first.
  template <class Enter>
  void for_each_cell(const double* p, Enter enter) const noexcept {
    Number home = 0;
    Number beside[Dim];    // added to a cell's number: the one on the other side of the nearest border
    unsigned touched = 0;  // the axes along which the tolerance reaches there
    for (unsigned a = 0; a < Dim; ++a) {
      const double x = (p[a] - origin_[a]) * cells_per_length_[a];  // NaN where an axis of one cell is too long
      const auto cell = static_cast<signed_number>(std::min(last_cell_[a], x));  // the last cell then
      QEL_GRIDWORK_CHECK(cell >= 0 && static_cast<double>(cell) <= last_cell_[a]);
      const double place = x - static_cast<double>(cell);
      const bool below = place <= reach_[a] && cell > 0;
      const bool above = place >= 1 - reach_[a] && cell < static_cast<signed_number>(last_cell_[a]);
      beside[a] = above ? strides_[a] : Number{0} - strides_[a];
      touched |= (below || above ? 1U : 0U) << a;
      home += static_cast<Number>(cell) * strides_[a];
    }
    enter(home, true);
    if (touched != 0) enter_beside(home, beside, touched, enter);
  }

 private:
  template <class Enter>
  static void enter_beside(Number home, const Number* beside, unsigned touched, Enter enter) noexcept {
    for (unsigned axes = 1; axes < 1U << Dim; ++axes) {
      if ((axes & ~touched) != 0) continue;
      Number cell = home;
      for (unsigned a = 0; a < Dim; ++a) cell += (axes >> a & 1U) != 0 ? beside[a] : 0;
      enter(cell, false);
    }
  }

  /// The tolerance, and what rounding may add to it when the box around a node is computed.
  static double reach_of(const bounding_box<Dim>& box, double tol, unsigned a) noexcept {
    return tol + 3e-16 * (box.largest(a) + tol);
  }

  /// The edge of the smallest cubes of which no more than `wanted` lie in the box; to a step.
  static double edge_length(const bounding_box<Dim>& box, double wanted) noexcept {
    constexpr double step = 0.8;
    constexpr unsigned most_steps = 64;
    double edge = 0;
    for (unsigned a = 0; a < Dim; ++a) edge = std::max(edge, box.extent(a));
    for (unsigned steps = 0; steps < most_steps && cubes_in(box, step * edge) <= wanted; ++steps) edge *= step;
    return edge;
  }

  static double cubes_in(const bounding_box<Dim>& box, double edge) noexcept {
    double cubes = 1;
    for (unsigned a = 0; a < Dim; ++a) cubes *= std::max(1.0, std::floor(box.extent(a) / edge));
    return cubes;
  }

  void part_axis(unsigned a, double extent, double edge, double reach) noexcept {
    constexpr double smallest = 1e-280;
    constexpr double largest = 1e280;
    edge = std::max(edge, limits::smallest_cell_in_tols * reach);
    if (!(extent > smallest && extent < largest && 2 * edge <= extent)) return;
    const double cells = std::floor(extent / edge);
    last_cell_[a] = cells - 1;
    cells_per_length_[a] = cells / extent;
    const double rounding = std::max(1e-10, 1e-15 * cells);  // more than that of numbers of cells
    reach_[a] = reach * cells_per_length_[a] + rounding;
  }

  double origin_[Dim];
  double cells_per_length_[Dim] = {};  // 0 along an axis of one cell
  double last_cell_[Dim] = {};
  double reach_[Dim] = {};  // in cells
  Number strides_[Dim];
  Number cell_count_ = 1;
};

}  // namespace qel::gridwork::detail

#endif
