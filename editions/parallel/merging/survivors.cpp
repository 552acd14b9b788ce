#include "merging/survivors.h"

#include <algorithm>

#include "merging/chains.h"
#include "merging/handled_nodes.h"
#include "merging/own_nodes.h"
#include "parts/localize.h"
#include "search/merging/proximity_merge.h"

namespace qel::gridwork::detail::parallel {
namespace {

template <unsigned Dim>
struct position {
  double p[Dim];
};

/// Collective. Where the survivors lie that other ranks have.
template <unsigned Dim>
int find_positions(team& ranks, int code, handled_nodes<Dim>& handled, const chains<Dim>& ways, std::uint64_t own,
                   const dense1D<linked_node>& linked, survivors& found) {
  if (code == 0 && !found.coords.resize(Dim, found.others.size())) code = out_of_memory;
  const auto position_of = [&](unsigned i) {
    position<Dim> at;
    std::copy_n(ways.survivor(i).p, Dim, at.p);
    return at;
  };
  const auto place = [&](std::uint64_t k) { return found.places[linked[k].node]; };
  const auto is_elsewhere = [&](std::uint64_t k) { return place(k) >= own; };
  const auto take = [&](std::uint64_t k, const position<Dim>& at) {
    if (is_elsewhere(k)) std::copy_n(at.p, Dim, found.coords.column(place(k) - own));
  };
  return handled.template give_back<position<Dim>>(ranks, code, is_elsewhere, position_of, take);
}

/// Collective. The survivors of linked nodes, which count where they are at home.
template <unsigned Dim>
int merge_linked(team& ranks, int code, const node_set& nodes, const cell_directory<Dim>& cells,
                 const dense1D<linked_node>& linked, double tol, bool with_coords, survivors& found) {
  handled_nodes<Dim> handled;
  dense1D<unsigned> targets;
  chains<Dim> ways(handled);
  code = handled.gather(ranks, code, nodes, cells, linked);
  if (code == 0 && !find_first_near<Dim>(ranked_positions<Dim>(handled.coords()), tol, targets)) code = out_of_memory;
  code = ways.resolve(ranks, code, targets);
  if (code < 0) return code;

  dense1D<std::uint64_t> ids;
  if (!ids.resize(linked.size())) code = out_of_memory;
  const auto id_of = [&](unsigned i) { return ways.survivor(i).id; };
  const auto take_id = [&](std::uint64_t k, std::uint64_t id) { ids[k] = id; };
  const auto all = [](std::uint64_t) { return true; };
  code = handled.template give_back<std::uint64_t>(ranks, code, all, id_of, take_id);
  if (code == 0 && !found.place(nodes.ids, linked, ids)) code = out_of_memory;
  if (with_coords) code = find_positions(ranks, code, handled, ways, nodes.ids.size(), linked, found);
  for (unsigned i = 0; code == 0 && i < handled.count(); ++i) {
    if (handled.is_at_home(i) && ways.survivor(i).id != handled.id(i)) ++found.merged;
  }
  return code;
}

template <unsigned Dim>
int merge_nodes(team& ranks, int code, const node_set& nodes, double tol, bool with_coords, survivors& found) {
  cell_directory<Dim> cells;
  dense1D<linked_node> linked;
  code = cells.build(ranks, code, nodes.coords, tol);
  if (code == 0 && !merge_own<Dim>(nodes.coords, tol, cells.outer_nodes(), found, linked)) code = out_of_memory;
  code = ranks.agree(merge_linked(ranks, code, nodes, cells, linked, tol, with_coords, found));
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

int find_survivors(team& ranks, int code, const node_set& nodes, double tol, bool with_coords, survivors& found) {
  if (ranks.size() == 1) return ranks.agree(code == 0 ? merge_alone(nodes, tol, found) : code);
  return nodes.dim == 2 ? merge_nodes<2>(ranks, code, nodes, tol, with_coords, found)
                        : merge_nodes<3>(ranks, code, nodes, tol, with_coords, found);
}

}  // namespace qel::gridwork::detail::parallel
