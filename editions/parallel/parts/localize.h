// From IDs to a part's own indices.
#ifndef QEL_GRIDWORK_PARALLEL_PARTS_LOCALIZE_H
#define QEL_GRIDWORK_PARALLEL_PARTS_LOCALIZE_H

#include <algorithm>
#include <cstdint>

#include "core/index_flags.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/mpi.h"

namespace qel::gridwork::detail::parallel {

constexpr std::uint64_t no_ID = ~std::uint64_t{0};

/// The place of an ID in a list that strictly increases; `none` where it is not. No place lies further behind the first one
/// than IDs do, and where none is left out each lies just there.
inline unsigned place_in(const dense1D<std::uint64_t>& ids, std::uint64_t id) noexcept {
  if (ids.empty() || id < ids[0]) return none;
  const std::uint64_t* last = ids.begin() + std::min(id - ids[0], ids.size() - 1);
  const std::uint64_t* found = *last == id ? last : std::lower_bound(ids.begin(), last, id);
  return *found == id ? static_cast<unsigned>(found - ids.begin()) : none;
}

/// Orders the nodes of a part: those that are `used` of two lists, each in the order of IDs, own nodes and numbered on behind
/// them others. Node k has id(k), and gets the place in the part places[k], `none` if it is not used. False when memory ran
/// out.
template <class ID>
[[nodiscard]] bool order_nodes(unsigned own, unsigned all, const index_flags& used, ID id, dense1D<unsigned>& places,
                               dense1D<std::uint64_t>& node_IDs) {
  std::uint64_t count = 0;
  for (unsigned k = 0; k < all; ++k) count += used.contains(k) ? 1 : 0;
  if (!places.resize(all, none) || !node_IDs.resize(count)) return false;
  unsigned next = 0, other = own;
  const auto take = [&](unsigned k) {
    node_IDs[next] = id(k);
    places[k] = next++;
  };
  const auto take_others_before = [&](std::uint64_t bound) {
    for (; other < all && (!used.contains(other) || id(other) < bound); ++other) {
      if (used.contains(other)) take(other);
    }
  };
  for (unsigned k = 0; k < own; ++k) {
    if (!used.contains(k)) continue;
    take_others_before(id(k));
    take(k);
  }
  take_others_before(no_ID);
  return true;
}

}  // namespace qel::gridwork::detail::parallel

#endif
