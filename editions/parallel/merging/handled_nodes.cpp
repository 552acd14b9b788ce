#include "merging/handled_nodes.h"

#include <numeric>

#include "core/position_table.h"
#include "search/geometry.h"
#include "search/merging/coincident_nodes.h"

namespace qel::gridwork::detail::parallel {

template <unsigned Dim>
int handled_nodes<Dim>::send(team& ranks, int code, const node_set& nodes, const cell_directory<Dim>& cells) {
  const auto walk_nodes = [&](auto visit) {
    for_each_sent([&](int handler, std::uint64_t k) {
      sent_node item{};
      std::copy_n(nodes.coords.column(linked_[k].node), Dim, item.p);
      item.id = nodes.ids[linked_[k].node];
      visit(handler, item);
    });
  };
  const auto walk_copies = [&](auto visit) {
    for (const auto& [node, home, handler] : cells.copies()) {
      node_reference<Dim> item{};
      std::copy_n(nodes.coords.column(node), Dim, item.p);
      item.id = nodes.ids[node];
      item.handler = home;
      visit(handler, item);
    }
  };
  outbox<node_reference<Dim>> copied;
  if (code == 0 && !(sent_.fill(ranks, walk_nodes) && copied.fill(ranks, walk_copies))) code = out_of_memory;
  code = exchange(ranks, code, sent_, received_);
  return code < 0 ? code : exchange(ranks, code, copied, copies_);
}

template <unsigned Dim>
bool handled_nodes<Dim>::order_foreign(dense1D<unsigned>& order) const {
  if (!order.resize(foreign_count())) return false;
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(), [this](unsigned a, unsigned b) { return foreign_id(a) < foreign_id(b); });
  return true;
}

/// What is kept is in order, and by far the most: what came is sorted, and put between.
template <unsigned Dim>
bool handled_nodes<Dim>::make_list(const node_set& nodes) {
  const std::uint64_t own = linked_.size(), received = received_.items.size(), most = own + foreign_count();
  position_table seen;  // of nodes that another rank may have, too
  dense1D<unsigned> order;
  if (most >= none || !order_foreign(order) || !seen.reset(received) || !places_.resize(own + received)) return false;
  if (!coords_.resize(Dim, most) || !ids_.resize(most) || !handlers_.resize(most)) return false;
  unsigned count = 0;
  bool room = true;
  const auto enter = [&](const double* p, std::uint64_t id, int handler, bool may_repeat) {
    const auto is_same = [&](unsigned held) {
      return ids_[held] / nodes.ids_per_node == id / nodes.ids_per_node && same_position<Dim>(coords_.column(held), p);
    };
    room = room && (!may_repeat || seen.make_room());
    const unsigned place = room && may_repeat ? seen.find_or_insert(hash_values<Dim>(p), count, is_same) : count;
    if (place != count) return place;
    std::copy_n(p, Dim, coords_.column(count));
    ids_[count] = id;
    handlers_[count] = handler;
    return count++;
  };
  const unsigned* next = order.begin();
  const auto enter_foreign_before = [&](std::uint64_t id) {
    for (; next != order.end() && foreign_id(*next) < id; ++next) {
      const node_reference<Dim> node = foreign(*next);
      const unsigned place = enter(node.p, node.id, node.handler, true);
      if (*next < received) places_[own + *next] = place;
    }
  };
  for (std::uint64_t k = 0; k < own; ++k) {
    const linked_node& l = linked_[k];
    if (!is_kept(l)) continue;
    enter_foreign_before(nodes.ids[l.node]);
    places_[k] = enter(nodes.coords.column(l.node), nodes.ids[l.node], rank_, l.home == rank_);
  }
  enter_foreign_before(~std::uint64_t{0});
  return room && coords_.resize(Dim, count) && ids_.resize(count) && handlers_.resize(count);
}

template <unsigned Dim>
int handled_nodes<Dim>::gather(team& ranks, int code, const node_set& nodes, const cell_directory<Dim>& cells,
                               const dense1D<linked_node>& linked) {
  rank_ = ranks.rank();
  linked_ = linked;
  code = send(ranks, code, nodes, cells);
  if (code < 0) return code;
  return make_list(nodes) ? 0 : out_of_memory;
}

template class handled_nodes<2>;
template class handled_nodes<3>;

}  // namespace qel::gridwork::detail::parallel
