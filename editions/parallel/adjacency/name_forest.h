// Components of a graph whose edges are spread over ranks.
#ifndef QEL_GRIDWORK_PARALLEL_ADJACENCY_NAME_FOREST_H
#define QEL_GRIDWORK_PARALLEL_ADJACENCY_NAME_FOREST_H

#include <algorithm>
#include <cstdint>

#include "communication/exchange.h"
#include "communication/id_ranges.h"

namespace qel::gridwork::detail::parallel {

/// Names, each in the care of one rank, that point at lower ones of their component. In every round, roots with edges to
/// lower roots are hung on the lowest of these, and all edges move to the roots of their ends: at least half of the roots
/// that have edges go each time.
class name_forest {
 public:
  struct edge {
    std::uint64_t a, b;
  };

  name_forest(team& ranks, const id_ranges& ranges) noexcept : ranks_(ranks), ranges_(ranges) {}

  /// Collective. Finds the lowest name of the component of each of `names`, which increase. Edges are between names of any
  /// ranks. The code of all ranks.
  int solve(int code, const dense1D<std::uint64_t>& names, dense1D<edge>& edges, dense1D<std::uint64_t>& roots) {
    if (code == 0 && !roots.copy(names)) code = out_of_memory;
    code = enter(code, names);
    for (std::uint64_t left = 1; code == 0;) {
      left = edges.size();
      ranks_.add(&left, 1);
      if (left == 0) break;
      code = hang(edges);
      if (code == 0) code = shorten();
      if (code == 0) code = move_edges(edges);
    }
    return code < 0 ? code : look_up(roots.size(), [&](std::uint64_t i) -> std::uint64_t& { return roots[i]; });
  }

 private:
  int owner(std::uint64_t name) const noexcept { return ranges_.owner(name); }

  std::uint64_t& parent(std::uint64_t name) noexcept {
    return parents_[static_cast<std::uint64_t>(std::lower_bound(names_.begin(), names_.end(), name) - names_.begin())];
  }

  int enter(int code, const dense1D<std::uint64_t>& names) {
    outbox<std::uint64_t> out;
    inbox<std::uint64_t> in;
    const auto walk = [&](auto visit) {
      for (const std::uint64_t name : names) visit(owner(name), name);
    };
    code = exchange(ranks_, code == 0 && !out.fill(ranks_, walk) ? out_of_memory : code, out, in);
    if (code < 0) return code;
    names_ = in.items;
    std::sort(names_.begin(), names_.end());
    return ranks_.agree(parents_.copy(names_) ? 0 : out_of_memory);
  }

  int hang(const dense1D<edge>& edges) {
    outbox<edge> out;
    inbox<edge> in;
    const auto walk = [&](auto visit) {
      for (const edge& e : edges) visit(owner(std::max(e.a, e.b)), edge{std::max(e.a, e.b), std::min(e.a, e.b)});
    };
    const int code = exchange(ranks_, out.fill(ranks_, walk) ? 0 : out_of_memory, out, in);
    if (code < 0) return code;
    for (const edge& e : in.items) parent(e.a) = std::min(parent(e.a), e.b);
    return 0;
  }

  /// Lets every name point at its root: in each step twice as far.
  int shorten() {
    for (;;) {
      dense1D<std::uint64_t> above;
      int code = ranks_.agree(above.copy(parents_) ? 0 : out_of_memory);
      if (code == 0) code = look_up(above.size(), [&](std::uint64_t i) -> std::uint64_t& { return above[i]; });
      if (code < 0) return code;
      std::uint64_t changed = 0;
      for (std::uint64_t i = 0; i < above.size(); ++i) changed += above[i] != parents_[i] ? 1 : 0;
      parents_ = above;
      ranks_.add(&changed, 1);
      if (changed == 0) return 0;
    }
  }

  /// Edges within a component are of no use any more.
  int move_edges(dense1D<edge>& edges) {
    const auto end_of_edge = [&](std::uint64_t i) -> std::uint64_t& {
      return i % 2 == 0 ? edges[i / 2].a : edges[i / 2].b;
    };
    const int code = look_up(2 * edges.size(), end_of_edge);
    if (code < 0) return code;
    const edge* end = std::remove_if(edges.begin(), edges.end(), [](const edge& e) { return e.a == e.b; });
    const bool fits = edges.resize(static_cast<std::uint64_t>(end - edges.begin()));  // being no larger than it was
    return fits ? 0 : out_of_memory;
  }

  /// Replaces names by what they point at.
  template <class Name>
  int look_up(std::uint64_t count, Name name) {
    dense1D<std::uint64_t> found;
    const auto walk = [&](auto visit) {
      for (std::uint64_t i = 0; i < count; ++i) visit(owner(name(i)), name(i), i);
    };
    const auto answer = [&](std::uint64_t asked, int) { return parent(asked); };
    const auto take = [&](std::uint64_t i, std::uint64_t answered) { found[i] = answered; };
    const int code =
        ask<std::uint64_t, std::uint64_t>(ranks_, found.resize(count) ? 0 : out_of_memory, walk, answer, take);
    for (std::uint64_t i = 0; code == 0 && i < count; ++i) name(i) = found[i];
    return code;
  }

  team& ranks_;
  const id_ranges& ranges_;
  dense1D<std::uint64_t> names_;    // in this rank's care
  dense1D<std::uint64_t> parents_;  // of these
};

}  // namespace qel::gridwork::detail::parallel

#endif
