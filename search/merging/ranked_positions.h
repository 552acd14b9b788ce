// Positions of the nodes of a list, by their places in the list.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_RANKED_POSITIONS_H
#define QEL_GRIDWORK_SEARCH_MERGING_RANKED_POSITIONS_H

#include <algorithm>
#include <cstdint>

#include "core/limits.h"
#include "core/position_table.h"
#include "qel/dense.h"
#include "search/node_list.h"

namespace qel::gridwork::detail {

/// Positions of the nodes of a list, one after another; a node is named by its rank, its place in the list.
template <unsigned Dim>
class ranked_positions {
 public:
  ranked_positions() noexcept = default;

  /// All nodes.
  explicit ranked_positions(const dense2D<double>& coords) noexcept
      : first_(coords.data()), ld_(coords.ld()), count_(coords.cols()) {}

  /// The nodes of a list. They are copied unless their ranks are their indices, so that loops over ranks read in order.
  [[nodiscard]] bool gather(const dense2D<double>& coords, node_list list) {
    *this = ranked_positions(coords);
    count_ = list.count;
    if (list.ids == nullptr) return true;
    if (!gathered_.resize(Dim * list.count)) return false;
    for (std::uint64_t rank = 0; rank < list.count; ++rank) {
      if (rank + limits::nodes_ahead < list.count) prefetch(coords.column(list.ids[rank + limits::nodes_ahead]));
      std::copy_n(coords.column(list.ids[rank]), Dim, gathered_.data() + Dim * rank);
    }
    first_ = gathered_.data();
    ld_ = Dim;
    return true;
  }

  std::uint64_t count() const noexcept { return count_; }
  const double* operator[](std::uint64_t rank) const noexcept { return first_ + ld_ * rank; }

 private:
  const double* first_ = nullptr;
  std::uint64_t ld_ = 0;
  std::uint64_t count_ = 0;
  dense1D<double> gathered_;
};

}  // namespace qel::gridwork::detail

#endif
