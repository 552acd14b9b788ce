#include "merging/chains.h"

#include <utility>

namespace qel::gridwork::detail::parallel {

/// The number of a node that an answer told of; `none` when memory ran out.
template <unsigned Dim>
unsigned chains<Dim>::learn(const team& ranks, const reference& r) {
  if (r.handler == ranks.rank()) return nodes_.find(r.id);
  const std::uint64_t number = nodes_.count() + learned_.size();
  return number < none && learned_.push_back(r) ? static_cast<unsigned>(number) : none;
}

template <unsigned Dim>
bool chains<Dim>::stop_behind(unsigned node, unsigned at) {
  parents_[node] = node;
  return stopped_.push_back({node, at});
}

/// Follows targets to the parent of a node, or to where only another rank knows on.
template <unsigned Dim>
bool chains<Dim>::walk(unsigned node, unsigned at) {
  while (id(at) > nodes_.id(node)) {
    if (!is_here(at)) return open_.push_back({node, at});
    const unsigned next = (*targets_)[at];
    if (id(next) >= id(at)) return stop_behind(node, at);
    at = next;
  }
  parents_[node] = id(at) == nodes_.id(node) ? node : at;
  return true;
}

template <unsigned Dim>
bool chains<Dim>::start() {
  const unsigned count = nodes_.count();
  if (!parents_.resize(count, none)) return false;
  for (unsigned i = 0; i < count; ++i) {
    if (nodes_.is_at_home(i) && !walk(i, (*targets_)[i])) return false;
  }
  return true;
}

template <unsigned Dim>
typename chains<Dim>::answer chains<Dim>::target_of(std::uint64_t id) const noexcept {
  answer a{};
  a.node = known((*targets_)[nodes_.find(id)]);
  return a;
}

/// Asks the ranks that know on, tell(id) there, until no end is open; follow(end, answer) goes on from each here, and is
/// false when memory ran out.
template <unsigned Dim>
template <class Tell, class Follow>
int chains<Dim>::close_ends(team& ranks, int code, Tell tell, Follow follow) {
  for (;;) {
    std::uint64_t open = code == 0 ? open_.size() : 0;
    ranks.add(&open, 1);
    if (open == 0) return code;
    const dense1D<open_end> asked = std::exchange(open_, dense1D<open_end>());
    bool room = true;
    const auto walk_open = [&](auto visit) {
      for (std::uint64_t k = 0; k < asked.size(); ++k) visit(known(asked[k].at).handler, id(asked[k].at), k);
    };
    const auto tell_rank = [&](std::uint64_t id_asked, int) { return tell(id_asked); };
    const auto go_on = [&](std::uint64_t k, const answer& a) { room = room && follow(asked[k], a); };
    code = ask<std::uint64_t, answer>(ranks, code, walk_open, tell_rank, go_on);
    if (code < 0) return code;
    if (!room) code = out_of_memory;
  }
}

template <unsigned Dim>
int chains<Dim>::find_parents(team& ranks, int code) {
  if (code == 0 && !start()) code = out_of_memory;
  const auto tell = [&](std::uint64_t asked) { return target_of(asked); };
  return close_ends(ranks, code, tell, [&](const open_end& end, const answer& a) {
    if (a.node.id >= id(end.at)) return stop_behind(end.node, end.at);
    const unsigned next = learn(ranks, a.node);
    return next != none && walk(end.node, next);
  });
}

/// Ways within this rank are as short as they can be: parents come before their children.
template <unsigned Dim>
bool chains<Dim>::climb() {
  const unsigned count = nodes_.count();
  if (!tops_.resize(count, none) || !ended_.resize(count, 1)) return false;
  for (unsigned i = 0; i < count; ++i) {
    if (!nodes_.is_at_home(i)) continue;
    const bool leads_on = !is_root(i) && is_here(parents_[i]);
    tops_[i] = leads_on ? tops_[parents_[i]] : i;
    if (is_root(i) || leads_on) continue;
    ended_[i] = 0;
    if (!open_.push_back({i, parents_[i]})) return false;
  }
  return true;
}

template <unsigned Dim>
typename chains<Dim>::answer chains<Dim>::root_of(std::uint64_t id) const noexcept {
  const unsigned top = tops_[nodes_.find(id)];
  answer a{};
  a.node = known(parents_[top]);
  a.is_end = ended_[top] != 0;
  return a;
}

/// Each top asks its parent's rank for what lies above, which is twice as far every time.
template <unsigned Dim>
int chains<Dim>::find_roots(team& ranks, int code) {
  if (code == 0 && !climb()) code = out_of_memory;
  const auto tell = [&](std::uint64_t asked) { return root_of(asked); };
  return close_ends(ranks, code, tell, [&](const open_end& end, const answer& a) {
    const unsigned next = a.node.id == id(end.at) ? end.at : learn(ranks, a.node);
    if (next == none) return false;
    parents_[end.node] = next;
    ended_[end.node] = a.is_end ? 1 : 0;
    return a.is_end || open_.push_back({end.node, next});
  });
}

/// They take the places of the tops, each of which is asked for once.
template <unsigned Dim>
void chains<Dim>::name_survivors() noexcept {
  survivors_.shallow_copy(tops_);
  for (unsigned i = 0; i < nodes_.count(); ++i) {
    if (nodes_.is_at_home(i)) survivors_[i] = parents_[tops_[i]];
  }
  for (const auto& [node, at] : stopped_) survivors_[node] = at;
}

template <unsigned Dim>
int chains<Dim>::resolve(team& ranks, int code, const dense1D<unsigned>& targets) {
  targets_ = &targets;
  code = find_parents(ranks, code);
  code = find_roots(ranks, code);
  code = ranks.agree(code);
  if (code == 0) name_survivors();
  return code;
}

/// That is so hardly ever: only then the rank of each survivor is asked.
template <unsigned Dim>
int chains<Dim>::settle(team& ranks, int code) {
  std::uint64_t stopped = stopped_.size();
  ranks.add(&stopped, 1);
  code = ranks.agree(code);
  are_moved_ = stopped != 0;
  if (code < 0 || !are_moved_) return code;
  const auto walk = [&](auto visit) {
    for (unsigned i = 0; i < nodes_.count(); ++i) {
      if (nodes_.is_at_home(i)) visit(survivor(i).handler, survivor(i).id, i);
    }
  };
  const auto tell = [&](std::uint64_t asked, int) { return place_of(survivors_[nodes_.find(asked)]); };
  const auto take = [&](std::uint64_t i, const position<Dim>& at) { settled_[i] = at; };
  if (!settled_.resize(nodes_.count())) code = out_of_memory;
  return ask<std::uint64_t, position<Dim>>(ranks, code, walk, tell, take);
}

template class chains<2>;
template class chains<3>;

}  // namespace qel::gridwork::detail::parallel
