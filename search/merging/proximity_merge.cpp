#include "search/merging/proximity_merge.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/index_flags.h"
#include "core/limits.h"
#include "core/result.h"
#include "search/merging/coincident_nodes.h"
#include "search/merging/near_nodes.h"

namespace qel::gridwork::detail {
namespace {

[[nodiscard]] bool set_identity(dense1D<unsigned>& map, std::uint64_t count) {
  if (count >= none || !map.resize(count)) return false;
  for (unsigned i = 0; i < count; ++i) map[i] = i;
  return true;
}

/// Place of each node in a list; `none` for nodes that are not in it.
class node_ranks {
 public:
  [[nodiscard]] bool build(node_list list, std::uint64_t node_count) {
    if (list.ids == nullptr) return true;
    if (!ranks_.resize(node_count, none)) return false;
    for (std::uint64_t rank = 0; rank < list.count; ++rank) ranks_[list[rank]] = static_cast<unsigned>(rank);
    return true;
  }

  unsigned operator[](unsigned node) const noexcept { return ranks_.empty() ? node : ranks_[node]; }

 private:
  dense1D<unsigned> ranks_;  // empty when ranks are the nodes themselves
};

/// Follows the map from `node` as long as that leads to ever earlier nodes.
unsigned end_of_chain(const dense1D<unsigned>& new_IDs, const node_ranks& ranks, unsigned node) noexcept {
  unsigned at = node;
  for (unsigned last_rank = none; new_IDs[at] != at;) {
    const unsigned next = new_IDs[at];
    if (ranks[next] >= last_rank) break;
    at = next;
    last_rank = ranks[next];
  }
  return at;
}

/// Lets every node of the list point at the end of its chain. Returns the number of nodes that point elsewhere.
int resolve_chains(node_list list, const node_ranks& ranks, dense1D<unsigned>& new_IDs,
                   index_flags& resolved) noexcept {
  int merged = 0;
  for (std::uint64_t i = 0; i < list.count; ++i) {
    const unsigned node = list[i];
    resolved.insert(node);
    if (new_IDs[node] == node) continue;
    const unsigned end = end_of_chain(new_IDs, ranks, node);
    // Nodes on the way whose turn is yet to come would find the same end: long chains are not walked again.
    for (unsigned at = std::exchange(new_IDs[node], end); at != end;) {
      const unsigned next = new_IDs[at];
      if (!resolved.contains(at)) new_IDs[at] = end;
      at = next;
    }
    merged += end != node ? 1 : 0;
  }
  return merged;
}

template <unsigned Dim>
class merger {
 public:
  merger(const dense2D<double>& coords, node_list moving, node_list fixed, double tol) noexcept
      : coords_(coords),
        node_count_(coords.cols()),
        moving_(moving),
        fixed_(fixed),
        tol_(tol),
        one_list_(moving.ids == fixed.ids && moving.count == fixed.count) {}

  int merge(dense1D<unsigned>& new_IDs) {
    if (!fixed_positions_.gather(coords_, fixed_)) return out_of_memory;
    if (!one_list_ && !moving_positions_.gather(coords_, moving_)) return out_of_memory;
    coincident_nodes<Dim> groups;
    if (one_list_ && tol_ == 0 && !groups.build(fixed_positions_, false)) return out_of_memory;
    if (one_list_ && tol_ == 0 && fixed_.holds_all(node_count_)) {
      new_IDs.shallow_copy(groups.leaders());
      return static_cast<int>(node_count_ - groups.leader_count());
    }
    if (!set_identity(new_IDs, node_count_)) return out_of_memory;
    if (one_list_ && tol_ == 0) return merge_onto_leaders(groups, new_IDs);
    if (std::isinf(tol_ * tol_)) return resolved(new_IDs, merge_by_scan(new_IDs));
    near_nodes<Dim> near(fixed_positions_, tol_);
    if (one_list_ && !near.build_of_all()) return out_of_memory;
    if (one_list_ && !near.is_crowded()) return resolved(new_IDs, merge_each(near, new_IDs));
    if (!groups.build(fixed_positions_, true)) return out_of_memory;
    if (one_list_) near.reuse(groups.release_table());
    if (!near.build(groups)) return out_of_memory;
    return resolved(new_IDs, one_list_ ? merge_groups(groups, near, new_IDs) : merge_each(groups, near, new_IDs));
  }

 private:
  /// Resolves chains once there can be any.
  int resolved(dense1D<unsigned>& new_IDs, int merged) {
    if (merged <= 1) return merged;
    node_ranks ranks;
    index_flags done;
    if (!ranks.build(fixed_, node_count_) || !done.reset(node_count_)) return out_of_memory;
    return resolve_chains(moving_, ranks, new_IDs, done);
  }

  /// Where the square of the tolerance overflows, nearly every node reaches nearly every other, so the first one of the
  /// list is found at once.
  int merge_by_scan(dense1D<unsigned>& new_IDs) const noexcept {
    const ranked_positions<Dim>& moving_positions = one_list_ ? fixed_positions_ : moving_positions_;
    int merged = 0;
    for (std::uint64_t i = 0; i < moving_.count; ++i) {
      const double* p = moving_positions[i];
      if (!is_finite<Dim>(p)) continue;
      unsigned rank = 0;
      while (rank < fixed_.count && (fixed_[rank] == moving_[i] || !is_near<Dim>(p, fixed_positions_[rank], tol_)))
        ++rank;
      merged += map_to(new_IDs, moving_[i], rank < fixed_.count ? rank : none);
    }
    return merged;
  }

  /// Coincident nodes of one list: chains would all lead to the leader.
  int merge_onto_leaders(const coincident_nodes<Dim>& groups, dense1D<unsigned>& new_IDs) const noexcept {
    int merged = 0;
    for (std::uint64_t rank = 0; rank < fixed_.count; ++rank) {
      const unsigned leader = groups.leader(rank);
      if (leader != rank) merged += map_to(new_IDs, fixed_[rank], leader);
    }
    return merged;
  }

  /// One list, of which all nodes are in `near`, not crowded.
  int merge_each(const near_nodes<Dim>& near, dense1D<unsigned>& new_IDs) const {
    constexpr std::uint64_t ahead = limits::nodes_ahead;
    typename near_nodes<Dim>::surroundings queue[ahead];
    const auto has_company = [&](std::uint64_t rank) {
      return near.may_have_company(rank) && is_finite<Dim>(fixed_positions_[rank]);
    };
    int merged = 0;
    for (std::uint64_t next = 0; next < fixed_.count + ahead; ++next) {
      auto& around = queue[next % ahead];
      if (next >= ahead && has_company(next - ahead)) {
        const auto rank = static_cast<unsigned>(next - ahead);
        merged += map_to(new_IDs, fixed_[rank], near.first_near(around, fixed_positions_[rank], rank));
      }
      if (next < fixed_.count && has_company(next)) around = near.approach(fixed_positions_[next]);
    }
    return merged;
  }

  /// One list: the nodes of a group share what lies near them; it is looked up when their leader, the first of them,
  /// has its turn. What a leader is mapped to serves the others too: the second node of the group, which it may be,
  /// comes after the leader, on which they merge at the latest.
  int merge_groups(coincident_nodes<Dim>& groups, const near_nodes<Dim>& near, dense1D<unsigned>& new_IDs) const {
    dense1D<unsigned>& targets = groups.seconds();
    int merged = 0;
    for (std::uint64_t rank = 0; rank < fixed_.count; ++rank) {
      const unsigned leader = groups.leader(rank);
      const double* p = fixed_positions_[rank];
      if (leader != rank) {
        targets[rank] = std::min(targets[leader], leader);
      } else if (near.may_have_company(rank) && is_finite<Dim>(p)) {
        targets[rank] = std::min(targets[rank], near.first_near(p, leader));
      }
      merged += map_to(new_IDs, fixed_[rank], targets[rank]);
    }
    return merged;
  }

  /// Two lists.
  int merge_each(coincident_nodes<Dim>& groups, const near_nodes<Dim>& near, dense1D<unsigned>& new_IDs) const {
    int merged = 0;
    for (std::uint64_t i = 0; i < moving_.count; ++i) {
      const double* p = moving_positions_[i];
      if (!is_finite<Dim>(p)) continue;
      const unsigned leader = groups.find(fixed_positions_, p);
      unsigned coincident = leader;
      if (leader != none && fixed_[leader] == moving_[i]) coincident = groups.seconds()[leader];
      merged += map_to(new_IDs, moving_[i], std::min(coincident, near.first_near(p, leader)));
    }
    return merged;
  }

  /// Maps a node to the one of that rank, if there is one. 1 when it did.
  int map_to(dense1D<unsigned>& new_IDs, unsigned node, unsigned rank) const noexcept {
    if (rank == none) return 0;
    new_IDs[node] = fixed_[rank];
    return 1;
  }

  const dense2D<double>& coords_;
  std::uint64_t node_count_;
  node_list moving_;
  node_list fixed_;
  ranked_positions<Dim> moving_positions_;
  ranked_positions<Dim> fixed_positions_;
  double tol_;
  bool one_list_;
};

}  // namespace

int proximity_merge(const dense2D<double>& coords, node_list list, dense1D<unsigned>& new_IDs, double tol) {
  return proximity_merge(coords, list, list, new_IDs, tol);
}

int proximity_merge(const dense2D<double>& coords, node_list moving, node_list fixed, dense1D<unsigned>& new_IDs,
                    double tol) {
  return coords.rows() == 2 ? merger<2>(coords, moving, fixed, tol).merge(new_IDs)
                            : merger<3>(coords, moving, fixed, tol).merge(new_IDs);
}

}  // namespace qel::gridwork::detail
