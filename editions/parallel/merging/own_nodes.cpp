#include "merging/own_nodes.h"

#include <algorithm>

#include "core/identity_map.h"
#include "core/index_flags.h"
#include "core/limits.h"
#include "search/merging/coincident_nodes.h"
#include "search/merging/near_nodes.h"
#include "search/merging/proximity_merge.h"

namespace qel::gridwork::detail::parallel {
namespace {

/// Finds nodes that are linked. Each is passed once.
class link_search {
 public:
  explicit link_search(const dense1D<unsigned>& map) noexcept : map_(map) {}

  /// Those whose ways lead to outer ones, and all that lie on the ways from these; no followers, which are on no other's
  /// way. False when memory ran out.
  [[nodiscard]] bool find(const outer_nodes& outer_ones, dense1D<linked_node>& linked) {
    const auto& [outer, followers] = outer_ones;
    const auto count = static_cast<unsigned>(map_.size());
    if (outer.empty()) return true;
    if (!states_.resize(count, unknown)) return false;
    for (const linked_node& l : outer) link_way(l.node);
    const linked_node* next = outer.begin();
    const follower* next_follower = followers.begin();
    bool room = true;
    for (unsigned i = 0; i < count && room; ++i) {
      const bool follows = next_follower != followers.end() && next_follower->node == i;
      next_follower += follows ? 1 : 0;
      if (follows || (map_[i] == i && states_[i] == unknown)) continue;
      if (states_[pass_way(i)] == linked_to_others) link_way(i);
      if (states_[i] != linked_to_others) continue;
      const bool is_outer = next != outer.end() && next->node == i;
      room = linked.push_back(is_outer ? *next++ : linked_node{i, linked_node::alone, false});
    }
    return room;
  }

 private:
  enum state : unsigned char { unknown, passed, linked_to_others };

  /// Goes from a node until one that is known, and returns that.
  unsigned pass_way(unsigned at) noexcept {
    for (; states_[at] == unknown; at = map_[at]) states_[at] = passed;
    return at;
  }

  void link_way(unsigned at) noexcept {
    for (; states_[at] != linked_to_others; at = map_[at]) states_[at] = linked_to_others;
  }

  const dense1D<unsigned>& map_;
  dense1D<state> states_;
};

/// The nodes that are not enclosed, and no followers. False when memory ran out.
[[nodiscard]] bool list_open(std::uint64_t count, const outer_nodes& outer, dense1D<unsigned>& open) {
  index_flags left_out;
  if (!left_out.reset(count) || !open.reserve(count)) return false;
  for (const linked_node& l : outer.nodes) {
    if (l.is_enclosed) left_out.insert(l.node);
  }
  for (const follower& f : outer.followers) left_out.insert(f.node);
  bool room = true;
  for (unsigned i = 0; room && i < count; ++i) room = left_out.contains(i) || open.push_back(i);
  return room;
}

/// Maps each node to the first other one of this rank that is near. Enclosed ones are near to none that this rank handles
/// alone, and followers are the first near node of none; where they are many, they are left out.
template <unsigned Dim>
[[nodiscard]] bool find_own_first_near(const dense2D<double>& coords, double tol, const outer_nodes& outer,
                                       dense1D<unsigned>& map) {
  const std::uint64_t count = coords.cols();
  const auto enclosed =
      std::count_if(outer.nodes.begin(), outer.nodes.end(), [](const linked_node& l) { return l.is_enclosed; });
  const std::uint64_t needless = static_cast<std::uint64_t>(enclosed) + outer.followers.size();
  if (limits::nodes_per_enclosed * needless <= count) {
    return find_first_near(ranked_positions<Dim>(coords), tol, map);
  }
  dense1D<unsigned> open;
  dense1D<unsigned> found;
  ranked_positions<Dim> positions;
  if (!list_open(count, outer, open) || !positions.gather(coords, {open.data(), open.size()})) return false;
  if (!find_first_near(positions, tol, found) || !set_identity(map, count)) return false;
  for (std::uint64_t rank = 0; rank < found.size(); ++rank) map[open[rank]] = open[found[rank]];
  return true;
}

}  // namespace

template <unsigned Dim>
bool find_first_near(const ranked_positions<Dim>& positions, double tol, dense1D<unsigned>& map) {
  if (tol > 0) {
    return set_identity(map, positions.count()) &&
           near_nodes<Dim>(positions, static_cast<unsigned>(positions.count()), tol).find(map.data());
  }
  coincident_nodes<Dim> groups;
  if (!groups.build(positions)) return false;
  map = groups.leaders();
  return true;
}

template <unsigned Dim>
bool merge_own(const dense2D<double>& coords, double tol, const outer_nodes& outer, survivors& found,
               dense1D<linked_node>& linked) {
  if (!find_own_first_near<Dim>(coords, tol, outer, found.places) || !link_search(found.places).find(outer, linked))
    return false;
  const int merged = resolve_chains(found.places);
  if (merged < 0) return false;
  found.merged = static_cast<std::uint64_t>(merged);
  const auto discount = [&](unsigned node) { found.merged -= found.places[node] != node ? 1 : 0; };
  for (const linked_node& l : linked) discount(l.node);
  for (const follower& f : outer.followers) discount(f.node);
  return true;
}

template bool find_first_near<2>(const ranked_positions<2>&, double, dense1D<unsigned>&);
template bool find_first_near<3>(const ranked_positions<3>&, double, dense1D<unsigned>&);
template bool merge_own<2>(const dense2D<double>&, double, const outer_nodes&, survivors&, dense1D<linked_node>&);
template bool merge_own<3>(const dense2D<double>&, double, const outer_nodes&, survivors&, dense1D<linked_node>&);

}  // namespace qel::gridwork::detail::parallel
