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

/// Orders the nodes of a part: those that are `used` of own nodes and, numbered on behind them, others. IDs increase in either
/// list, or stay as they are where nodes are not used. Each node gets its place among all used ones, `none` if it is not used;
/// `count` is their number. False when memory ran out.
[[nodiscard]] inline bool order_nodes(const dense1D<std::uint64_t>& own, const dense1D<std::uint64_t>& others,
                                      const index_flags& used, dense1D<unsigned>& places, unsigned& count) {
  const auto own_count = static_cast<unsigned>(own.size()), other_count = static_cast<unsigned>(others.size());
  if (!places.resize(own_count + other_count)) return false;
  unsigned other = 0;
  count = 0;
  const auto place = [&](unsigned k) { places[k] = used.contains(k) ? count++ : none; };
  for (unsigned k = 0; k < own_count; ++k) {
    while (other < other_count && others[other] < own[k]) place(own_count + other++);
    place(k);
  }
  while (other < other_count) place(own_count + other++);
  return true;
}

}  // namespace qel::gridwork::detail::parallel

#endif
