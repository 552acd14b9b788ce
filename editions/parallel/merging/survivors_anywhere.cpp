// The merge by an infinite tolerance.
//
// Every finite node points at the first node of all, and that one at the second. Where the second one is finite, it points
// back; where it is not, it points nowhere, and the first node is merged to it.
#include <algorithm>
#include <bit>

#include "core/identity_map.h"
#include "merging/survivors.h"
#include "parts/localize.h"
#include "search/geometry.h"

namespace qel::gridwork::detail::parallel {
namespace {

struct first_node {
  std::uint64_t id;  // no_ID when there is none
  double p[3];
};

/// The first node of all ranks that counts(i).
template <class Counts>
first_node find_first(team& ranks, const node_set& nodes, Counts counts) {
  std::uint64_t i = 0;
  while (i < nodes.ids.size() && !counts(i)) ++i;
  const std::uint64_t own = i < nodes.ids.size() ? nodes.ids[i] : no_ID;
  first_node first{own, {}};
  ranks.lower(&first.id, 1);
  std::uint64_t bits[] = {no_ID, no_ID, no_ID};
  if (own != no_ID && own == first.id) {
    for (unsigned a = 0; a < 3; ++a) bits[a] = std::bit_cast<std::uint64_t>(nodes.coords(a, i));
  }
  ranks.lower(bits, 3);
  for (unsigned a = 0; a < 3; ++a) first.p[a] = std::bit_cast<double>(bits[a]);
  return first;
}

}  // namespace

int find_survivors_anywhere(team& ranks, int code, const node_set& nodes, survivors& found) {
  const std::uint64_t count = nodes.ids.size();
  dense1D<linked_node> linked;  // all that are finite
  dense1D<std::uint64_t> ids;
  bool room = set_identity(found.places, count);
  code = ranks.agree(code);
  if (code < 0) return code;
  const auto p = [&](std::uint64_t i) { return nodes.coords.column(i); };
  const auto has_place = [&](std::uint64_t i) { return !has_nan<3>(p(i)); };
  const first_node first = find_first(ranks, nodes, has_place);
  const auto is_first = [&](std::uint64_t i) {
    return nodes.ids[i] / nodes.ids_per_node == first.id / nodes.ids_per_node && same_position<3>(p(i), first.p);
  };
  const first_node second = find_first(ranks, nodes, [&](std::uint64_t i) { return has_place(i) && !is_first(i); });
  const bool ends_at_second = second.id != no_ID && !is_finite<3>(second.p);
  for (unsigned i = 0; i < count && room; ++i) {
    if (!is_finite<3>(p(i))) continue;
    room = linked.push_back({i, linked_node::alone, true}) &&
           ids.push_back(ends_at_second && is_first(i) ? second.id : first.id);
  }
  return ranks.agree(room && found.place(nodes.ids, linked, ids) ? 0 : out_of_memory);
}

}  // namespace qel::gridwork::detail::parallel
