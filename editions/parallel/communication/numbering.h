// Numbers in the order of IDs that any ranks have.
#ifndef QEL_GRIDWORK_PARALLEL_COMMUNICATION_NUMBERING_H
#define QEL_GRIDWORK_PARALLEL_COMMUNICATION_NUMBERING_H

#include <algorithm>
#include <cstdint>

#include "communication/exchange.h"
#include "communication/id_ranges.h"

namespace qel::gridwork::detail::parallel {

/// Collective. Numbers the distinct keys of all ranks from 0 in their order; `keys` increase, `owner(key)` grows with them.
/// `numbers` become those of this rank's keys. The code of all ranks.
template <class Key, class Owner>
int number_in_order(team& ranks, int code, const dense1D<Key>& keys, Owner owner, dense1D<std::uint64_t>& numbers,
                    std::uint64_t& total) {
  outbox<Key> out;
  inbox<Key> in;
  dense1D<Key> distinct;
  dense1D<std::uint64_t> given;
  const auto walk = [&](auto visit) {
    for (const Key& key : keys) visit(owner(key), key);
  };
  if (code == 0 && !out.fill(ranks, walk)) code = out_of_memory;
  code = exchange(ranks, code, out, in);
  if (code < 0) return code;
  const bool room = distinct.copy(in.items) && given.resize(in.items.size());
  if (room && !std::is_sorted(distinct.begin(), distinct.end())) std::sort(distinct.begin(), distinct.end());
  const Key* end = room ? std::unique(distinct.begin(), distinct.end()) : distinct.begin();
  const team::share share = ranks.number(static_cast<std::uint64_t>(end - distinct.begin()));
  for (std::uint64_t i = 0; room && i < given.size(); ++i) {
    given[i] = share.before +
               static_cast<std::uint64_t>(
                   std::lower_bound(static_cast<const Key*>(distinct.begin()), end, in.items[i]) - distinct.begin());
  }
  total = share.total;
  return reply(ranks, room ? 0 : out_of_memory, in, given, out, numbers);
}

/// The same for IDs.
inline int number_ids(team& ranks, const dense1D<std::uint64_t>& ids, dense1D<std::uint64_t>& numbers,
                      std::uint64_t& total) {
  const id_ranges ranges(ranks, ids);
  return number_in_order(
      ranks, 0, ids, [&](std::uint64_t id) { return ranges.owner(id); }, numbers, total);
}

}  // namespace qel::gridwork::detail::parallel

#endif
