// Node lists of the search subsystem.
#ifndef QEL_GRIDWORK_SEARCH_NODE_LIST_H
#define QEL_GRIDWORK_SEARCH_NODE_LIST_H

#include <cstdint>

#include "qel/dense.h"

namespace qel::gridwork::detail {

/// A list of distinct nodes: the given ones or, without an array, 0 .. count - 1.
struct node_list {
  const unsigned* ids = nullptr;
  std::uint64_t count = 0;

  static node_list all(std::uint64_t count) noexcept { return {nullptr, count}; }
  static node_list of(const dense1D<unsigned>& ids) noexcept {
    std::uint64_t in_place = 0;
    while (in_place < ids.size() && ids[in_place] == in_place) ++in_place;
    return in_place == ids.size() ? all(ids.size()) : node_list{ids.data(), ids.size()};
  }

  /// True when ranks are the nodes themselves.
  bool holds_all(std::uint64_t node_count) const noexcept { return ids == nullptr && count == node_count; }

  unsigned operator[](std::uint64_t rank) const noexcept {
    return ids != nullptr ? ids[rank] : static_cast<unsigned>(rank);
  }
};

}  // namespace qel::gridwork::detail

#endif
