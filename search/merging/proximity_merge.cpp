// How near nodes are merged:
//
//   1. Lists are made distinct by the caller. A node is named by its rank, its place in the list of those that are merged
//      onto; nodes that are only merged come behind. The node of the lowest rank survives.
//   2. Without a tolerance, a table of positions gives the first node at each (coincident_nodes.h).
//   3. Else nodes are parted into cells (cell_grid.h), and these again, until each pair of a cell can be compared; a
//      node is entered in all cells that its tolerance touches. A dense cell, which cannot be parted, gets a tree
//      (near_nodes.h, box_tree.h). Each node is mapped to the first one that is near. Only a tolerance whose square
//      overflows has all nodes compared with all.
//   4. Chains of maps are followed as long as they lead to earlier nodes (resolve_chains below).
#include "search/merging/proximity_merge.h"

#include <cmath>
#include <utility>

#include "core/identity_map.h"
#include "core/index_flags.h"
#include "core/result.h"
#include "search/geometry.h"
#include "search/merging/coincident_nodes.h"
#include "search/merging/near_nodes.h"

namespace qel::gridwork::detail {
namespace {

/// Makes the map the one that was found: its block, unless a caller's memory is to be filled.
[[nodiscard]] bool share_or_copy(const dense1D<unsigned>& found, dense1D<unsigned>& map) {
  if (!map.is_borrowed() || map.capacity() < found.size()) {
    map.shallow_copy(found);
    return true;
  }
  if (!map.resize(found.size())) return false;
  std::copy(found.begin(), found.end(), map.begin());
  return true;
}

/// The nodes that take part, by rank: those that are merged onto, then those that are only merged.
class ranked_nodes {
 public:
  /// One list.
  [[nodiscard]] bool build(node_list list, std::uint64_t node_count) {
    nodes_ = list;
    if (list.ids == nullptr) return true;
    return ranks_.resize(node_count, none) && (enter(list), true);
  }

  /// Two lists.
  [[nodiscard]] bool build(node_list fixed, node_list moving, std::uint64_t node_count) {
    if (!ids_.reserve(fixed.count + moving.count) || !ranks_.resize(node_count, none)) return false;
    if (!append_new(fixed) || !append_new(moving)) return false;
    nodes_ = {ids_.data(), ids_.size()};
    return true;
  }

  const node_list& nodes() const noexcept { return nodes_; }
  unsigned rank_of(unsigned node) const noexcept { return ranks_.empty() ? node : ranks_[node]; }

 private:
  void enter(node_list list) noexcept {
    for (std::uint64_t rank = 0; rank < list.count; ++rank) ranks_[list[rank]] = static_cast<unsigned>(rank);
  }

  [[nodiscard]] bool append_new(node_list list) {
    for (std::uint64_t i = 0; i < list.count; ++i) {
      if (ranks_[list[i]] != none) continue;
      ranks_[list[i]] = static_cast<unsigned>(ids_.size());
      if (!ids_.push_back(list[i])) return false;
    }
    return true;
  }

  node_list nodes_;
  dense1D<unsigned> ids_;
  dense1D<unsigned> ranks_;  // by node; empty when ranks are the nodes themselves
};

/// Follows the map from `node` as long as that leads to ever earlier nodes.
unsigned end_of_chain(const dense1D<unsigned>& new_IDs, const ranked_nodes& ranked, unsigned node) noexcept {
  unsigned at = node;
  for (unsigned last_rank = none; new_IDs[at] != at;) {
    const unsigned next = new_IDs[at];
    if (ranked.rank_of(next) >= last_rank) break;
    at = next;
    last_rank = ranked.rank_of(next);
  }
  return at;
}

/// Lets every node of the list point at the end of its chain. Returns the number of nodes that point elsewhere.
int resolve_chains(node_list list, const ranked_nodes& ranked, dense1D<unsigned>& new_IDs,
                   index_flags& resolved) noexcept {
  int merged = 0;
  for (std::uint64_t i = 0; i < list.count; ++i) {
    const unsigned node = list[i];
    if (i + limits::nodes_ahead < list.count) prefetch(new_IDs.data() + new_IDs[list[i + limits::nodes_ahead]]);
    resolved.insert(node);
    if (new_IDs[node] == node) continue;
    const unsigned end = end_of_chain(new_IDs, ranked, node);
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
    if (node_count_ >= none) return out_of_memory;
    if (std::isinf(tol_ * tol_)) return merge_by_scan(new_IDs);
    return one_list_ && tol_ == 0 ? merge_coincident(new_IDs) : merge_near(new_IDs);
  }

 private:
  /// Where the square of the tolerance overflows, nearly every node reaches nearly every other, so the first one of the
  /// list is found at once.
  int merge_by_scan(dense1D<unsigned>& new_IDs) {
    if (!rank_nodes() || !set_identity(new_IDs, node_count_)) return out_of_memory;
    int merged = 0;
    for (std::uint64_t i = 0; i < moving_.count; ++i) {
      const double* p = coords_.column(moving_[i]);
      if (!is_finite<Dim>(p)) continue;
      std::uint64_t rank = 0;
      const auto is_hit = [&] {
        return fixed_[rank] != moving_[i] && is_near<Dim>(p, coords_.column(fixed_[rank]), tol_);
      };
      while (rank < fixed_.count && !is_hit()) ++rank;
      if (rank == fixed_.count) continue;
      new_IDs[moving_[i]] = fixed_[rank];
      ++merged;
    }
    return resolved(new_IDs, merged);
  }

  /// Chains would all lead to the first node of a position.
  int merge_coincident(dense1D<unsigned>& new_IDs) {
    ranked_positions<Dim> positions;
    coincident_nodes<Dim> groups;
    if (!positions.gather(coords_, fixed_) || !groups.build(positions)) return out_of_memory;
    const auto merged = static_cast<int>(fixed_.count - groups.leader_count());
    if (fixed_.holds_all(node_count_)) {
      if (!share_or_copy(groups.leaders(), new_IDs)) return out_of_memory;
      return merged;
    }
    if (!set_identity(new_IDs, node_count_)) return out_of_memory;
    for (std::uint64_t rank = 0; rank < fixed_.count; ++rank) new_IDs[fixed_[rank]] = fixed_[groups.leaders()[rank]];
    return merged;
  }

  int merge_near(dense1D<unsigned>& new_IDs) {
    ranked_positions<Dim> positions;
    if (!rank_nodes() || !positions.gather(coords_, ranked_.nodes())) return out_of_memory;
    if (!set_identity(new_IDs, node_count_)) return out_of_memory;
    near_nodes<Dim> near(positions, static_cast<unsigned>(fixed_.count), tol_);
    if (one_list_ && fixed_.ids == nullptr) {  // ranks are nodes
      return near.find(new_IDs.data()) ? resolved(new_IDs, static_cast<int>(near.found_count())) : out_of_memory;
    }
    dense1D<unsigned> found;
    if (!found.resize(positions.count(), none) || !near.find(found.data())) return out_of_memory;
    int merged = 0;
    for (std::uint64_t i = 0; i < moving_.count; ++i) {
      const unsigned rank = found[ranked_.rank_of(moving_[i])];
      if (rank == none) continue;
      new_IDs[moving_[i]] = fixed_[rank];
      ++merged;
    }
    return resolved(new_IDs, merged);
  }

  [[nodiscard]] bool rank_nodes() {
    return one_list_ ? ranked_.build(fixed_, node_count_) : ranked_.build(fixed_, moving_, node_count_);
  }

  /// Resolves chains once there can be any.
  int resolved(dense1D<unsigned>& new_IDs, int merged) {
    if (merged <= 1) return merged;
    index_flags done;
    return done.reset(node_count_) ? resolve_chains(moving_, ranked_, new_IDs, done) : out_of_memory;
  }

  const dense2D<double>& coords_;
  std::uint64_t node_count_;
  node_list moving_;
  node_list fixed_;
  double tol_;
  bool one_list_;
  ranked_nodes ranked_;
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

int resolve_chains(dense1D<unsigned>& new_IDs) {
  index_flags resolved;
  if (!resolved.reset(new_IDs.size())) return out_of_memory;
  return resolve_chains(node_list::all(new_IDs.size()), ranked_nodes(), new_IDs, resolved);
}

}  // namespace qel::gridwork::detail
