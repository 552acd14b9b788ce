// The nodes that a rank handles, and those that are near to them.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_HANDLED_NODES_H
#define QEL_GRIDWORK_PARALLEL_MERGING_HANDLED_NODES_H

#include <algorithm>
#include <cstdint>

#include "communication/exchange.h"
#include "merging/cell_directory.h"
#include "merging/node_set.h"

namespace qel::gridwork::detail::parallel {

/// In the order of their ids. Nodes that are one node stand there once. Of this rank's nodes those that are linked, from the
/// outer ones of the cells on: any others are near to none of these, and merged without them.
template <unsigned Dim>
class handled_nodes {
 public:
  /// Collective: brings nodes to their handlers. The code of the ranks so far; this one's own may be added.
  int gather(team& ranks, int code, const node_set& nodes, const cell_directory<Dim>& cells,
             const dense1D<linked_node>& linked);

  unsigned count() const noexcept { return static_cast<unsigned>(ids_.size()); }
  const dense2D<double>& coords() const noexcept { return coords_; }
  std::uint64_t id(unsigned i) const noexcept { return ids_[i]; }

  /// True for a node of this rank's own; false for a copy of one that another handles.
  bool is_at_home(unsigned i) const noexcept { return handlers_[i] == rank_; }

  node_reference<Dim> reference(unsigned i) const noexcept {
    node_reference<Dim> r{};
    std::copy_n(coords_.column(i), Dim, r.p);
    r.id = ids_[i];
    r.handler = handlers_[i];
    return r;
  }

  /// The node of this id, which must be there.
  unsigned find(std::uint64_t id) const noexcept {
    return static_cast<unsigned>(std::lower_bound(ids_.begin(), ids_.end(), id) - ids_.begin());
  }

  /// Collective: gives back what was found for each linked node, answer(i, p) for one at p, to where it came from:
  /// take(k, answer) for the k-th one.
  template <class Answer, class GiveAnswer, class Take>
  int give_back(team& ranks, int code, GiveAnswer answer, Take take);

  /// The rank that handles the k-th linked node.
  int handler_of(std::uint64_t k) const noexcept { return is_kept(linked_[k]) ? rank_ : linked_[k].home; }

 private:
  struct sent_node {
    double p[Dim];
    std::uint64_t id;
  };

  int send(team& ranks, int code, const node_set& nodes, const cell_directory<Dim>& cells);
  [[nodiscard]] bool order_foreign(dense1D<unsigned>& order) const;
  [[nodiscard]] bool make_list(const node_set& nodes);

  bool is_kept(const linked_node& l) const noexcept { return l.home == rank_ || l.home == linked_node::alone; }

  template <class Visit>
  void for_each_sent(Visit visit) const {
    for (std::uint64_t k = 0; k < linked_.size(); ++k) {
      if (!is_kept(linked_[k])) visit(linked_[k].home, k);
    }
  }

  /// Nodes of other ranks in one list: those received, then copies.
  /// @{
  std::uint64_t foreign_count() const noexcept { return received_.items.size() + copies_.items.size(); }
  node_reference<Dim> foreign(std::uint64_t i) const noexcept {
    const std::uint64_t received = received_.items.size();
    if (i >= received) return copies_.items[i - received];
    node_reference<Dim> r{};
    std::copy_n(received_.items[i].p, Dim, r.p);
    r.id = received_.items[i].id;
    r.handler = rank_;
    return r;
  }
  std::uint64_t foreign_id(std::uint64_t i) const noexcept {
    const std::uint64_t received = received_.items.size();
    return i < received ? received_.items[i].id : copies_.items[i - received].id;
  }
  /// @}

  int rank_ = 0;
  dense1D<linked_node> linked_;  // this rank's nodes
  outbox<sent_node> sent_;
  inbox<sent_node> received_;
  inbox<node_reference<Dim>> copies_;
  dense1D<unsigned> places_;  // in the list: of this rank's nodes that are kept, and of those received

  dense2D<double> coords_;
  dense1D<std::uint64_t> ids_;
  dense1D<int> handlers_;
};

template <unsigned Dim>
template <class Answer, class GiveAnswer, class Take>
int handled_nodes<Dim>::give_back(team& ranks, int code, GiveAnswer answer, Take take) {
  dense1D<Answer> given;
  dense1D<Answer> answers;
  for (std::uint64_t k = 0; code == 0 && k < linked_.size(); ++k) {
    if (is_kept(linked_[k])) take(k, answer(places_[k], coords_.column(places_[k])));
  }
  if (code == 0 && !given.resize(received_.items.size())) code = out_of_memory;
  for (std::uint64_t i = 0; code == 0 && i < given.size(); ++i) {
    given[i] = answer(places_[linked_.size() + i], received_.items[i].p);
  }
  code = reply(ranks, code, received_, given, sent_, answers);
  if (code < 0) return code;
  sent_.rewind();
  for_each_sent([&](int handler, std::uint64_t k) { take(k, answers[sent_.next_place(handler)]); });
  return 0;
}

extern template class handled_nodes<2>;
extern template class handled_nodes<3>;

}  // namespace qel::gridwork::detail::parallel

#endif
