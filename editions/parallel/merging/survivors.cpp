#include "merging/survivors.h"

#include <algorithm>

#include "merging/chains.h"
#include "merging/handled_nodes.h"
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

template <unsigned Dim>
int merge_nodes(team& ranks, int code, const node_set& nodes, double tol, bool with_coords, survivors& found) {
  handled_nodes<Dim> handled;
  dense1D<unsigned> targets;
  chains<Dim> ways(handled);
  code = handled.gather(ranks, code, nodes, tol);
  if (code == 0 && !find_targets<Dim>(handled.coords(), tol, targets)) code = out_of_memory;
  code = ways.resolve(ranks, code, targets);
  if (code < 0) return code;

  if (!found.ids.resize(nodes.ids.size()) || (with_coords && !found.coords.copy(nodes.coords))) code = out_of_memory;
  const auto id_of = [&](unsigned i) { return ways.survivor(i).id; };
  const auto take_id = [&](std::uint64_t j, std::uint64_t id) { found.ids[j] = id; };
  code = handled.template give_back<std::uint64_t>(ranks, code, id_of, take_id);
  if (code < 0) return code;
  if (with_coords) {
    const auto position_of = [&](unsigned i) {
      position<Dim> at;
      std::copy_n(ways.survivor(i).p, Dim, at.p);
      return at;
    };
    const auto take_position = [&](std::uint64_t j, const position<Dim>& at) {
      std::copy_n(at.p, Dim, found.coords.column(j));
    };
    code = handled.template give_back<position<Dim>>(ranks, code, position_of, take_position);
    if (code < 0) return code;
  }
  found.merged = 0;
  for (unsigned i = 0; i < handled.count(); ++i) {
    if (handled.is_at_home(i) && ways.survivor(i).id != handled.id(i)) ++found.merged;
  }
  ranks.add(&found.merged, 1);
  return 0;
}

/// A rank that has no others merges as the serial library does.
int merge_alone(const node_set& nodes, double tol, bool with_coords, survivors& found) {
  dense1D<unsigned> new_IDs;
  const std::uint64_t count = nodes.ids.size();
  const int merged = proximity_merge(nodes.coords, node_list::all(count), new_IDs, tol);
  if (merged < 0 || !found.ids.resize(count) || (with_coords && !found.coords.resize(nodes.dim, count)))
    return out_of_memory;
  for (std::uint64_t j = 0; j < count; ++j) found.ids[j] = nodes.ids[new_IDs[j]];
  for (std::uint64_t j = 0; with_coords && j < count; ++j) {
    std::copy_n(nodes.coords.column(new_IDs[j]), nodes.dim, found.coords.column(j));
  }
  found.merged = static_cast<std::uint64_t>(merged);
  return 0;
}

}  // namespace

int find_survivors(team& ranks, int code, const node_set& nodes, double tol, bool with_coords, survivors& found) {
  if (ranks.size() == 1) return ranks.agree(code == 0 ? merge_alone(nodes, tol, with_coords, found) : code);
  return nodes.dim == 2 ? merge_nodes<2>(ranks, code, nodes, tol, with_coords, found)
                        : merge_nodes<3>(ranks, code, nodes, tol, with_coords, found);
}

}  // namespace qel::gridwork::detail::parallel
