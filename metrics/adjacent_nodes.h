// The nodes at the other ends of a node's edges.
#ifndef QEL_GRIDWORK_METRICS_ADJACENT_NODES_H
#define QEL_GRIDWORK_METRICS_ADJACENT_NODES_H

#include <cstdint>

#include "core/distribute.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// Compressed rows of a list of edges.
class adjacent_nodes {
 public:
  /// False when memory ran out.
  [[nodiscard]] bool build(const dense2D<unsigned>& edges, std::uint64_t nodes) {
    if (edges.cols() > none / 2) return false;
    const auto walk = [&edges](auto visit) {
      for (std::uint64_t j = 0; j < edges.cols(); ++j) {
        const unsigned* edge = edges.column(j);
        visit(edge[0], edge[1]);
        visit(edge[1], edge[0]);
      }
    };
    return distribute(nodes, walk, others_, offsets_);
  }

  const unsigned* begin(unsigned node) const noexcept { return others_.data() + offsets_[node]; }
  const unsigned* end(unsigned node) const noexcept { return begin(node + 1); }

 private:
  dense1D<unsigned> others_;
  dense1D<unsigned> offsets_;
};

}  // namespace qel::gridwork::detail

#endif
