#include "merging/survivors.h"

#include <algorithm>

#include "merging/chains.h"
#include "merging/handled_nodes.h"
#include "parts/localize.h"
#include "search/merging/coincident_nodes.h"
#include "search/merging/near_nodes.h"
#include "search/merging/proximity_merge.h"

namespace qel::gridwork::detail::parallel {
namespace {

/// For each node the first other one that is near; for coincident nodes the first one of all, which has none itself.
template <unsigned Dim>
bool find_targets(const dense2D<double>& coords, double tol, dense1D<unsigned>& targets) {
  const ranked_positions<Dim> positions(coords);
  if (!targets.resize(positions.count(), none)) return false;
  if (tol > 0) return near_nodes<Dim>(positions, static_cast<unsigned>(positions.count()), tol).find(targets.data());
  coincident_nodes<Dim> groups;
  if (!groups.build(positions)) return false;
  for (std::uint64_t i = 0; i < targets.size(); ++i) {
    if (groups.leaders()[i] != i) targets[i] = groups.leaders()[i];
  }
  return true;
}

template <unsigned Dim>
struct position {
  double p[Dim];
};

/// Collective. Where the survivors lie that other ranks have.
template <unsigned Dim>
int find_positions(team& ranks, int code, handled_nodes<Dim>& handled, const chains<Dim>& ways, survivors& found) {
  const std::uint64_t own = found.places.size();
  if (code == 0 && !found.coords.resize(Dim, found.others.size())) code = out_of_memory;
  const auto position_of = [&](unsigned i) {
    position<Dim> at;
    std::copy_n(ways.survivor(i).p, Dim, at.p);
    return at;
  };
  const auto is_elsewhere = [&](std::uint64_t j) { return found.places[j] >= own; };
  const auto take = [&](std::uint64_t j, const position<Dim>& at) {
    if (is_elsewhere(j)) std::copy_n(at.p, Dim, found.coords.column(found.places[j] - own));
  };
  return handled.template give_back<position<Dim>>(ranks, code, is_elsewhere, position_of, take);
}

template <unsigned Dim>
int merge_nodes(team& ranks, int code, const node_set& nodes, double tol, bool with_coords, survivors& found) {
  handled_nodes<Dim> handled;
  dense1D<unsigned> targets;
  chains<Dim> ways(handled);
  code = handled.gather(ranks, code, nodes, tol);
  if (code == 0 && !find_targets<Dim>(handled.coords(), tol, targets)) code = out_of_memory;
  code = ways.resolve(ranks, code, targets);
  if (code < 0) return code;

  dense1D<std::uint64_t> ids;
  if (!ids.resize(nodes.ids.size())) code = out_of_memory;
  const auto id_of = [&](unsigned i) { return ways.survivor(i).id; };
  const auto take_id = [&](std::uint64_t j, std::uint64_t id) { ids[j] = id; };
  const auto all = [](std::uint64_t) { return true; };
  code = handled.template give_back<std::uint64_t>(ranks, code, all, id_of, take_id);
  if (code == 0 && !found.place(nodes.ids, ids)) code = out_of_memory;
  if (with_coords) code = find_positions(ranks, code, handled, ways, found);
  code = ranks.agree(code);
  if (code < 0) return code;
  for (unsigned i = 0; i < handled.count(); ++i) {
    if (handled.is_at_home(i) && ways.survivor(i).id != handled.id(i)) ++found.merged;
  }
  ranks.add(&found.merged, 1);
  return 0;
}

/// A rank that has no others merges as the serial library does.
int merge_alone(const node_set& nodes, double tol, survivors& found) {
  const int merged = proximity_merge(nodes.coords, node_list::all(nodes.ids.size()), found.places, tol);
  if (merged < 0) return merged;
  found.merged = static_cast<std::uint64_t>(merged);
  return 0;
}

}  // namespace

bool survivors::place(const dense1D<std::uint64_t>& own, const dense1D<std::uint64_t>& ids) {
  const auto count = static_cast<unsigned>(own.size());
  if (!places.resize(count)) return false;
  for (unsigned i = 0; i < count; ++i) {
    places[i] = ids[i] == own[i] ? i : place_in(own, ids[i]);
    if (places[i] == none && !others.push_back(ids[i])) return false;
  }
  if (others.empty()) return true;
  std::sort(others.begin(), others.end());
  const auto distinct = static_cast<std::uint64_t>(std::unique(others.begin(), others.end()) - others.begin());
  if (count + distinct >= none || !others.resize(distinct)) return false;
  for (unsigned i = 0; i < count; ++i) {
    if (places[i] == none) places[i] = count + place_in(others, ids[i]);
  }
  return true;
}

int find_survivors(team& ranks, int code, const node_set& nodes, double tol, bool with_coords, survivors& found) {
  if (ranks.size() == 1) return ranks.agree(code == 0 ? merge_alone(nodes, tol, found) : code);
  return nodes.dim == 2 ? merge_nodes<2>(ranks, code, nodes, tol, with_coords, found)
                        : merge_nodes<3>(ranks, code, nodes, tol, with_coords, found);
}

}  // namespace qel::gridwork::detail::parallel
