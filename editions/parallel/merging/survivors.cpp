#include "merging/survivors.h"

#include <algorithm>
#include <bit>

#include "communication/distinct_ids.h"
#include "merging/chains.h"
#include "merging/handled_nodes.h"
#include "merging/own_nodes.h"
#include "parts/localize.h"
#include "search/merging/proximity_merge.h"

namespace qel::gridwork::detail::parallel {
namespace {

bool same_bits(double x, double y) noexcept {
  return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
}

/// What linked nodes are merged to, and whether that lies elsewhere than they do, be it by the sign of a zero.
struct answers {
  dense1D<std::uint64_t> ids;
  dense1D<unsigned char> are_moved;
};

/// Collective. Survivors of linked nodes, found where these are handled.
template <unsigned Dim>
int find_answers(team& ranks, int code, handled_nodes<Dim>& handled, const chains<Dim>& ways, answers& got) {
  constexpr std::uint64_t moved = std::uint64_t{1} << 63;  // no ID has this bit
  const auto answer = [&](unsigned i, const double* p) {
    const position<Dim> place = ways.place(i);
    return ways.survivor(i).id | (std::equal(p, p + Dim, place.p, same_bits) ? 0 : moved);
  };
  const auto take = [&](std::uint64_t k, std::uint64_t id) {
    got.ids[k] = id & ~moved;
    got.are_moved[k] = (id & moved) != 0 ? 1 : 0;
  };
  return handled.template give_back<std::uint64_t>(ranks, code, answer, take);
}

/// Collective. Where the survivors lie that other ranks have. Most lie where a node lies that is merged to them; of the rest
/// each is asked for once, by such a node.
template <unsigned Dim>
int find_positions(team& ranks, int code, const node_set& nodes, const handled_nodes<Dim>& handled,
                   const chains<Dim>& ways, const dense1D<linked_node>& linked, const answers& got, survivors& found) {
  const auto own = static_cast<unsigned>(nodes.ids.size());
  const std::uint64_t others = found.others.size();
  dense1D<unsigned> asking;  // by survivor, none once it is known
  if (code == 0 && !(found.coords.resize(Dim, others) && asking.resize(others, none))) code = out_of_memory;
  for (unsigned k = 0; code == 0 && k < linked.size(); ++k) {
    const unsigned place = found.places[linked[k].node];
    if (place >= own && got.are_moved[k] != 0) asking[place - own] = k;
  }
  for (unsigned k = 0; code == 0 && k < linked.size(); ++k) {
    const unsigned place = found.places[linked[k].node];
    if (place < own || got.are_moved[k] != 0) continue;
    std::copy_n(nodes.coords.column(linked[k].node), Dim, found.coords.column(place - own));
    asking[place - own] = none;
  }
  const auto walk = [&](auto visit) {
    for (std::uint64_t s = 0; s < others; ++s) {
      if (asking[s] != none) visit(handled.handler_of(asking[s]), nodes.ids[linked[asking[s]].node], s);
    }
  };
  const auto tell = [&](std::uint64_t id, int) { return ways.place(handled.find(id)); };
  const auto take = [&](std::uint64_t s, const position<Dim>& at) { std::copy_n(at.p, Dim, found.coords.column(s)); };
  return ask<std::uint64_t, position<Dim>>(ranks, code, walk, tell, take);
}

/// Collective. Nodes of this rank may be survivors, and be merged themselves, where rounding lets one node reach another one
/// that does not reach it: then they take the position of what they are merged to.
template <unsigned Dim>
int find_taken(team& ranks, int code, const node_set& nodes, const handled_nodes<Dim>& handled, const chains<Dim>& ways,
               const dense1D<linked_node>& linked, survivors& found) {
  if (!ways.are_moved()) return code;
  const auto walk = [&](auto visit) {
    for (std::uint64_t k = 0; k < linked.size(); ++k) visit(handled.handler_of(k), nodes.ids[linked[k].node], k);
  };
  const auto tell = [&](std::uint64_t id, int) {
    position<3> at{};
    std::copy_n(ways.survivor(handled.find(id)).p, Dim, at.p);
    return at;
  };
  const auto take = [&](std::uint64_t k, const position<3>& at) {
    found.takers[k] = linked[k].node;
    found.taken[k] = at;
  };
  if (code == 0 && !(found.taken.resize(linked.size()) && found.takers.resize(linked.size()))) code = out_of_memory;
  return ask<std::uint64_t, position<3>>(ranks, code, walk, tell, take);
}

/// Collective. Counts the nodes that are not merged without a look at others, of all ranks together and each node once: this
/// rank's share.
template <unsigned Dim>
int count_linked(team& ranks, int code, const node_set& nodes, const handled_nodes<Dim>& handled,
                 const dense1D<linked_node>& linked, const dense1D<follower>& followers, std::uint64_t& count) {
  std::uint64_t all_followers = followers.size();
  ranks.add(&all_followers, 1);
  code = ranks.agree(code);
  if (code < 0) return code;
  for (unsigned i = 0; i < handled.count(); ++i) count += handled.is_at_home(i) ? 1 : 0;
  if (all_followers == 0) return code;
  dense1D<std::uint64_t> ids;
  if (!ids.resize(linked.size() + followers.size())) code = out_of_memory;
  const linked_node* next = linked.begin();
  const follower* next_follower = followers.begin();
  for (std::uint64_t& id : ids) {
    const bool follows = next == linked.end() || (next_follower != followers.end() && next_follower->node < next->node);
    id = nodes.ids[follows ? (next_follower++)->node : (next++)->node];
  }
  return count_distinct(ranks, code, ids, count);
}

/// Collective. The survivors of linked nodes and of followers, which count where they are at home.
template <unsigned Dim>
int merge_linked(team& ranks, int code, const node_set& nodes, const cell_directory<Dim>& cells,
                 const dense1D<linked_node>& linked, double tol, bool in_full, survivors& found) {
  handled_nodes<Dim> handled;
  dense1D<unsigned> targets;
  chains<Dim> ways(handled);
  code = handled.gather(ranks, code, nodes, cells, linked);
  if (code == 0 && !find_first_near<Dim>(ranked_positions<Dim>(handled.coords()), tol, targets)) code = out_of_memory;
  code = ways.resolve(ranks, code, targets);
  if (in_full) code = ways.settle(ranks, code);
  if (code < 0) return code;

  answers got;
  if (!got.ids.resize(linked.size()) || !got.are_moved.resize(linked.size())) code = out_of_memory;
  code = find_answers(ranks, code, handled, ways, got);
  if (code == 0 && !found.place(nodes.ids, linked, got.ids)) code = out_of_memory;
  for (const follower& f : cells.followers()) found.places[f.node] = found.places[f.followed];
  if (!in_full) return code;
  std::uint64_t count = 0;
  code = find_positions(ranks, code, nodes, handled, ways, linked, got, found);
  code = find_taken(ranks, code, nodes, handled, ways, linked, found);
  code = count_linked(ranks, code, nodes, handled, linked, cells.followers(), count);
  for (unsigned i = 0; code == 0 && i < handled.count(); ++i) {
    if (handled.is_at_home(i) && ways.survivor(i).id == handled.id(i)) --count;
  }
  found.merged += count;
  return code;
}

template <unsigned Dim>
int merge_nodes(team& ranks, int code, const node_set& nodes, double tol, bool in_full, survivors& found) {
  border_nodes<Dim> border;
  cell_directory<Dim> cells;
  dense1D<linked_node> linked;
  code = border.find(ranks, code, nodes.coords, tol);
  code = cells.build(ranks, code, nodes.coords, border, tol);
  const outer_nodes outer{cells.outer_nodes(), cells.followers()};
  if (code == 0 && !merge_own<Dim>(nodes.coords, tol, outer, found, linked)) code = out_of_memory;
  code = ranks.agree(merge_linked(ranks, code, nodes, cells, linked, tol, in_full, found));
  if (code == 0) ranks.add(&found.merged, 1);
  return code;
}

/// A rank that has no others merges as the serial library does.
int merge_alone(const node_set& nodes, double tol, survivors& found) {
  const int merged = proximity_merge(nodes.coords, node_list::all(nodes.ids.size()), found.places, tol);
  if (merged < 0) return merged;
  found.merged = static_cast<std::uint64_t>(merged);
  return 0;
}

}  // namespace

bool survivors::place(const dense1D<std::uint64_t>& own, const dense1D<linked_node>& linked,
                      const dense1D<std::uint64_t>& ids) {
  const auto count = static_cast<unsigned>(own.size());
  for (std::uint64_t k = 0; k < linked.size(); ++k) {
    const unsigned node = linked[k].node;
    places[node] = ids[k] == own[node] ? node : place_in(own, ids[k]);
    if (places[node] == none && !others.push_back(ids[k])) return false;
  }
  if (others.empty()) return true;
  std::sort(others.begin(), others.end());
  const auto distinct = static_cast<std::uint64_t>(std::unique(others.begin(), others.end()) - others.begin());
  if (count + distinct >= none || !others.resize(distinct)) return false;
  for (std::uint64_t k = 0; k < linked.size(); ++k) {
    unsigned& place = places[linked[k].node];
    if (place == none) place = count + place_in(others, ids[k]);
  }
  return true;
}

int find_survivors(team& ranks, int code, const node_set& nodes, double tol, bool in_full, survivors& found) {
  if (ranks.size() == 1) return ranks.agree(code == 0 ? merge_alone(nodes, tol, found) : code);
  return nodes.dim == 2 ? merge_nodes<2>(ranks, code, nodes, tol, in_full, found)
                        : merge_nodes<3>(ranks, code, nodes, tol, in_full, found);
}

}  // namespace qel::gridwork::detail::parallel
