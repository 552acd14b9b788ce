// The nodes that a transform acts on: all of them, those of a list, those of a connectivity (which becomes a list).
#ifndef QEL_GRIDWORK_TRANSFORMS_SELECTION_H
#define QEL_GRIDWORK_TRANSFORMS_SELECTION_H

#include <cstdint>

#include "core/check.h"
#include "core/coordinates.h"
#include "qel/dense.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork::detail {

/// All nodes, in order.
struct every_node {
  static constexpr bool empty() noexcept { return false; }
  static constexpr bool exist_in(const dense2D<double>&) noexcept { return true; }

  /// Calls action(node) for each of them and returns how many they are.
  template <class Action>
  static int visit(std::uint64_t node_count, Action action) {
    for (std::uint64_t node = 0; node < node_count; ++node) action(node);
    return static_cast<int>(node_count);
  }
};

/// The entries of a list, in order and as often as they occur; those that are no node are passed over.
struct listed_nodes {
  const dense1D<unsigned>& ids;

  bool empty() const noexcept { return ids.empty(); }
  bool exist_in(const dense2D<double>& coords) const { return check_IDs(ids, node_bound(coords)); }

  template <class Action>
  int visit(std::uint64_t node_count, Action action) const {
    int count = 0;
    for (const unsigned node : ids) {
      if (node >= node_count) continue;
      action(node);
      ++count;
    }
    return count;
  }
};

/// The same for a list that its caller vouches for: entries are neither tested nor counted.
struct trusted_nodes {
  const dense1D<unsigned>& ids;

  bool empty() const noexcept { return ids.empty(); }

  template <class Action>
  int visit(std::uint64_t node_count, Action action) const {
    for (const unsigned node : ids) {
      QEL_GRIDWORK_CHECK(node < node_count);
      action(node);
    }
    return 0;
  }
};

}  // namespace qel::gridwork::detail

#endif
