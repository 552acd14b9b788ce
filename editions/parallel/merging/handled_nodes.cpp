#include "merging/handled_nodes.h"

#include <numeric>

#include "core/position_table.h"
#include "search/geometry.h"
#include "search/merging/coincident_nodes.h"

namespace qel::gridwork::detail::parallel {
namespace {

constexpr auto by_id = [](const auto& candidates) {
  return [&candidates](unsigned a, unsigned b) { return candidates[a].node.id < candidates[b].node.id; };
};

}  // namespace

/// A rank that has no others handles its nodes as they are.
template <unsigned Dim>
int handled_nodes<Dim>::keep_all(const team& ranks, int code, const node_set& nodes) {
  rank_ = ranks.rank();
  is_only_rank_ = true;
  coords_ = nodes.coords;
  ids_ = nodes.ids;
  return ids_.size() < none ? code : out_of_memory;
}

template <unsigned Dim>
int handled_nodes<Dim>::send(team& ranks, int code, const node_set& nodes, const cell_directory<Dim>& cells) {
  const auto walk_nodes = [&](auto visit) {
    for_each_sent([&](int handler, std::uint64_t j) {
      sent_node item{};
      std::copy_n(nodes.coords.column(j), Dim, item.p);
      item.id = nodes.ids[j];
      visit(handler, item);
    });
  };
  const auto walk_copies = [&](auto visit) {
    for (const auto& [j, handler] : cells.copies()) {
      node_reference<Dim> item{};
      std::copy_n(nodes.coords.column(j), Dim, item.p);
      item.id = nodes.ids[j];
      item.handler = homes_[j] == cell_directory<Dim>::alone ? rank_ : homes_[j];
      visit(handler, item);
    }
  };
  outbox<node_reference<Dim>> copied;
  if (code == 0 && !(sent_.fill(ranks, walk_nodes) && copied.fill(ranks, walk_copies))) code = out_of_memory;
  code = exchange(ranks, code, sent_, received_);
  return code < 0 ? code : exchange(ranks, code, copied, copies_);
}

template <unsigned Dim>
bool handled_nodes<Dim>::collect(const node_set& nodes, const cell_directory<Dim>& cells) {
  const std::uint64_t most = nodes.ids.size() + received_.items.size() + copies_.items.size();
  if (most >= none || !candidates_.reserve(most)) return false;
  const auto append = [&](const double* p, std::uint64_t id, int handler, bool may_repeat) {
    candidate c{};
    std::copy_n(p, Dim, c.node.p);
    c.node.id = id;
    c.node.handler = handler;
    c.may_repeat = may_repeat;
    return candidates_.push_back(c);
  };
  bool room = true;
  for (std::uint64_t j = 0; j < homes_.size(); ++j) {
    const bool is_alone = homes_[j] == cells.alone;
    if (is_alone || homes_[j] == rank_) room = room && append(nodes.coords.column(j), nodes.ids[j], rank_, !is_alone);
  }
  for (const sent_node& item : received_.items) room = room && append(item.p, item.id, rank_, true);
  for (const node_reference<Dim>& item : copies_.items) room = room && append(item.p, item.id, item.handler, true);
  return room;
}

/// What was kept is in order; what came is sorted and merged with it.
template <unsigned Dim>
bool handled_nodes<Dim>::sort_candidates() {
  const std::uint64_t foreign = received_.items.size() + copies_.items.size();
  dense1D<unsigned> places;
  if (!places.resize(candidates_.size()) || !order_.resize(candidates_.size())) return false;
  std::iota(places.begin(), places.end(), 0U);
  unsigned* arrived = places.end() - foreign;
  std::sort(arrived, places.end(), by_id(candidates_));
  std::merge(places.begin(), arrived, arrived, places.end(), order_.begin(), by_id(candidates_));
  return true;
}

/// Makes the list of nodes of the candidates in order.
template <unsigned Dim>
bool handled_nodes<Dim>::drop_repeated(std::uint64_t ids_per_node) {
  const std::uint64_t most = candidates_.size();
  position_table seen;  // of nodes that may repeat
  if (!seen.reset(received_.items.size()) || !places_.resize(most) || !coords_.resize(Dim, most)) return false;
  if (!ids_.reserve(most) || !handlers_.reserve(most)) return false;
  for (const unsigned c : order_) {
    const node_reference<Dim>& node = candidates_[c].node;
    const bool may_repeat = candidates_[c].may_repeat;
    const auto next = static_cast<unsigned>(ids_.size());
    const auto is_same = [&](unsigned held) {
      return ids_[held] / ids_per_node == node.id / ids_per_node && same_position<Dim>(coords_.column(held), node.p);
    };
    if (may_repeat && !seen.make_room()) return false;
    places_[c] = may_repeat ? seen.find_or_insert(hash_values<Dim>(node.p), next, is_same) : next;
    if (places_[c] != next) continue;
    std::copy_n(node.p, Dim, coords_.column(next));
    if (!ids_.push_back(node.id) || !handlers_.push_back(node.handler)) return false;
  }
  candidates_.clear_hard();
  order_.clear_hard();
  return coords_.resize(Dim, ids_.size());
}

template <unsigned Dim>
int handled_nodes<Dim>::gather(team& ranks, int code, const node_set& nodes, double tol) {
  if (ranks.size() == 1) return keep_all(ranks, code, nodes);
  rank_ = ranks.rank();
  cell_directory<Dim> cells;
  code = cells.build(ranks, code, nodes.coords, tol);
  homes_ = cells.homes();
  code = send(ranks, code, nodes, cells);
  if (code < 0) return code;
  return collect(nodes, cells) && sort_candidates() && drop_repeated(nodes.ids_per_node) ? 0 : out_of_memory;
}

template class handled_nodes<2>;
template class handled_nodes<3>;

}  // namespace qel::gridwork::detail::parallel
