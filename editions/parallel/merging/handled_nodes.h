// The nodes that a rank handles, and those that are near to them.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_HANDLED_NODES_H
#define QEL_GRIDWORK_PARALLEL_MERGING_HANDLED_NODES_H

#include <algorithm>
#include <cstdint>

#include "communication/exchange.h"
#include "merging/cell_directory.h"
#include "merging/node_set.h"

namespace qel::gridwork::detail::parallel {

/// In the order of their ids. Nodes that are one node stand there once.
template <unsigned Dim>
class handled_nodes {
 public:
  /// Collective: brings nodes to their handlers. The code of the ranks so far; this one's own may be added.
  int gather(team& ranks, int code, const node_set& nodes, double tol);

  unsigned count() const noexcept { return static_cast<unsigned>(ids_.size()); }
  const dense2D<double>& coords() const noexcept { return coords_; }
  std::uint64_t id(unsigned i) const noexcept { return ids_[i]; }

  /// True for a node of this rank's own; false for a copy of one that another handles.
  bool is_at_home(unsigned i) const noexcept { return is_only_rank_ || handlers_[i] == rank_; }

  node_reference<Dim> reference(unsigned i) const noexcept {
    node_reference<Dim> r{};
    std::copy_n(coords_.column(i), Dim, r.p);
    r.id = ids_[i];
    r.handler = is_only_rank_ ? rank_ : handlers_[i];
    return r;
  }

  /// The node of this id, which must be there.
  unsigned find(std::uint64_t id) const noexcept {
    return static_cast<unsigned>(std::lower_bound(ids_.begin(), ids_.end(), id) - ids_.begin());
  }

  /// Collective: gives back what was found for each node, answer(i), to where it came from: take(node, answer).
  template <class Answer, class GiveAnswer, class Take>
  int give_back(team& ranks, int code, GiveAnswer answer, Take take);

 private:
  struct sent_node {
    double p[Dim];
    std::uint64_t id;
  };

  int keep_all(const team& ranks, int code, const node_set& nodes);
  int send(team& ranks, int code, const node_set& nodes, const cell_directory<Dim>& cells);
  [[nodiscard]] bool collect(const node_set& nodes, const cell_directory<Dim>& cells);
  [[nodiscard]] bool sort_candidates();
  [[nodiscard]] bool drop_repeated(std::uint64_t ids_per_node);

  template <class Visit>
  void for_each_sent(Visit visit) const {
    for (std::uint64_t j = 0; j < homes_.size(); ++j) {
      if (homes_[j] != rank_ && homes_[j] != cell_directory<Dim>::alone) visit(homes_[j], j);
    }
  }

  struct candidate {
    node_reference<Dim> node;
    bool may_repeat;  // another rank may have the same one
  };

  int rank_ = 0;
  bool is_only_rank_ = false;
  dense1D<int> homes_;  // of this rank's nodes
  outbox<sent_node> sent_;
  inbox<sent_node> received_;
  inbox<node_reference<Dim>> copies_;
  dense1D<candidate> candidates_;  // nodes that were kept, those received, copies
  dense1D<unsigned> order_;        // of the candidates, by id
  dense1D<unsigned> places_;       // of the candidates among the nodes

  dense2D<double> coords_;
  dense1D<std::uint64_t> ids_;
  dense1D<int> handlers_;
};

template <unsigned Dim>
template <class Answer, class GiveAnswer, class Take>
int handled_nodes<Dim>::give_back(team& ranks, int code, GiveAnswer answer, Take take) {
  if (is_only_rank_) {
    for (unsigned i = 0; code == 0 && i < count(); ++i) take(i, answer(i));
    return ranks.agree(code);
  }
  dense1D<Answer> given;
  dense1D<Answer> answers;
  unsigned kept = 0;
  for (std::uint64_t j = 0; code == 0 && j < homes_.size(); ++j) {
    if (homes_[j] == rank_ || homes_[j] == cell_directory<Dim>::alone) take(j, answer(places_[kept++]));
  }
  if (code == 0 && !given.resize(received_.items.size())) code = out_of_memory;
  for (std::uint64_t i = 0; code == 0 && i < given.size(); ++i) given[i] = answer(places_[kept + i]);
  code = reply(ranks, code, received_, given, sent_, answers);
  if (code < 0) return code;
  sent_.rewind();
  for_each_sent([&](int handler, std::uint64_t j) { take(j, answers[sent_.next_place(handler)]); });
  return 0;
}

extern template class handled_nodes<2>;
extern template class handled_nodes<3>;

}  // namespace qel::gridwork::detail::parallel

#endif
