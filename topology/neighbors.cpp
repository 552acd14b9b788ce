// Elements across boundaries.
//
// Two slots are neighbours when their boundaries hold the same nodes in the same cyclic order, either way round: a join of
// all slots with themselves, by a key that neither start nor direction changes. One hash table for all of them would miss
// the caches at every slot, so the work is done in three steps:
// 1. A sample of the elements chooses ranges of boundaries, about 1000 slots each, by the smallest node of a boundary
//    (boundary_ranges.h). Slots of one boundary fall into one range; in most meshes, slots of near elements do so, too.
// 2. One pass over the elements appends every slot to the list of its range, in increasing order (slot_lists.h).
// 3. List by list, slots of equal keys are gathered in groups that fit the first cache (slot_groups.h), and linked when
//    the list ends: the first slot with the last one, and those between as the caller wishes. A list that is too long for
//    the groups there is room for takes several rounds, each with the slots that the one before left.
// Slots of a group come in increasing order whatever the ranges are, so the result does not depend on them.
#include <algorithm>
#include <cstddef>

#include "core/check.h"
#include "core/elements.h"
#include "core/limits.h"
#include "core/outputs.h"
#include "core/position_table.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/topology.h"
#include "topology/boundary_ranges.h"
#include "topology/slot_groups.h"
#include "topology/slot_lists.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// Gives elements with the same boundary to each other as neighbours.
template <class Columns>
class boundary_matcher {
 public:
  boundary_matcher(const dense2D<unsigned>& connectivity, bool pair_non_manifold, dense2D<unsigned>& neighbors) noexcept
      : nodes_(connectivity.data()),
        ld_(connectivity.ld()),
        neighbors_(neighbors.data()),
        pair_non_manifold_(pair_non_manifold) {}

  /// Room for lists of up to `most` slots out of `all`. The groups of a very long list must not take more memory than
  /// the slots themselves, so such a list is matched in several rounds.
  [[nodiscard]] bool prepare(std::uint64_t most, std::uint64_t all) {
    return list_.resize(most) &&
           groups_.prepare(std::min(most, std::max(all / limits::slots_per_group, limits::fewest_groups)));
  }

  /// Matches the slots of a list, which come in increasing order.
  void match(const slot_lists& lists, std::uint64_t list) noexcept {
    unsigned* end = list_.end();
    unsigned* begin = lists.copy_backward(list, end);
    while (begin != end) end = match_some(begin, end);
  }

 private:
  static constexpr unsigned boundaries = Columns::largest.boundaries;
  static constexpr std::ptrdiff_t chunk = limits::slot_chunk;

  boundary_key<Columns> key(unsigned slot) const noexcept {
    const unsigned* nodes = nodes_ + ld_ * (slot / boundaries);
    return key_of<Columns>(boundary_of<Columns>(Columns::of(nodes), nodes, slot % boundaries));
  }

  void prefetch_nodes(unsigned slot) const noexcept { prefetch(nodes_ + ld_ * (slot / boundaries)); }

  /// One round. Slots whose group finds no room are moved to the front, and the end of these is returned.
  unsigned* match_some(unsigned* begin, unsigned* end) noexcept {
    groups_.reset(static_cast<std::uint64_t>(end - begin));
    unsigned* postponed = begin;
    for (const unsigned* it = begin; it != end;) {
      const unsigned* chunk_end = end - it > chunk ? it + chunk : end;
      read_keys(it, chunk_end);
      for (const auto* next_key = keys_; it != chunk_end; ++it, ++next_key) {
        prefetch_nodes(end - it > chunk ? it[chunk] : *it);
        if (!join_group(*next_key, *it)) *postponed++ = *it;
      }
    }
    for (const auto& group : groups_) {
      if (group.first != group.last && group.first != none) link(group.first, group.last);
    }
    return postponed;
  }

  /// Keys are read before any of their groups is searched for: a search often goes another way than the processor
  /// predicts, and then throws away whatever work was still on its way.
  void read_keys(const unsigned* begin, const unsigned* end) noexcept {
    auto* next_key = keys_;
    for (const unsigned* it = begin; it != end; ++it) {
      prefetch(neighbors_ + *it);
      *next_key++ = key(*it);
    }
  }

  /// False if there is no room for the group of a slot.
  bool join_group(const boundary_key<Columns>& boundary, unsigned slot) noexcept {
    auto* group = groups_.find_or_begin(boundary, slot);
    if (group == nullptr) return false;
    if (group->first != group->last) pair_middle_slot(*group);
    group->last = slot;
    return true;
  }

  /// Of three or more elements at a boundary, neither the first slot nor the last: another one is to take its place.
  void pair_middle_slot(typename slot_groups<Columns>::group& group) const noexcept {
    if (pair_non_manifold_) {
      neighbors_[group.last] = group.first / boundaries;
    } else {
      group.first = none;  // nothing is linked
    }
  }

  void link(unsigned a, unsigned b) const noexcept {
    neighbors_[a] = b / boundaries;
    neighbors_[b] = a / boundaries;
  }

  const unsigned* nodes_;
  std::uint64_t ld_;
  unsigned* neighbors_;
  bool pair_non_manifold_;
  dense1D<unsigned> list_;
  slot_groups<Columns> groups_;
  boundary_key<Columns> keys_[chunk];
};

template <class Columns>
void distribute_slots(const dense2D<unsigned>& connectivity, const boundary_ranges<Columns>& range_of,
                      slot_lists& lists) {
  const unsigned* first = connectivity.data();
  const std::uint64_t ld = connectivity.ld(), count = connectivity.cols();
  unsigned first_slot = 0;
  for (std::uint64_t e = 0; e < count; ++e, first_slot += Columns::largest.boundaries) {
    visit_boundaries<Columns>(first + e * ld, [&](const boundary_nodes& boundary, unsigned k) {
      lists.push_back(range_of(boundary), first_slot + k);
    });
  }
}

template <class Columns>
int find_neighbors(const dense2D<unsigned>& connectivity, bool pair_non_manifold, dense2D<unsigned>& neighbors) {
  constexpr unsigned boundaries = Columns::largest.boundaries;
  if (!neighbors.resize(boundaries, connectivity.cols(), none)) return out_of_memory;
  if (!slot_codes_fit(connectivity.cols(), boundaries)) return out_of_memory;
  const std::uint64_t slots = neighbors.size();
  const auto ranges = std::clamp<std::uint64_t>(slots / limits::slots_per_range, 1, limits::most_ranges);
  slot_lists lists;
  boundary_ranges<Columns> range_of(ranges);
  if (!lists.prepare(ranges, slots) || !range_of.prepare(connectivity)) return out_of_memory;
  distribute_slots(connectivity, range_of, lists);
  boundary_matcher<Columns> matcher(connectivity, pair_non_manifold, neighbors);
  std::uint64_t most = 0;
  for (std::uint64_t i = 0; i < ranges; ++i) most = std::max(most, lists.size(i));
  if (!matcher.prepare(most, slots)) return out_of_memory;
  for (std::uint64_t i = 0; i < ranges; ++i) matcher.match(lists, i);
  return 0;
}

int find_neighbors(const dense2D<unsigned>& connectivity, element_type type, bool pair_non_manifold,
                   dense2D<unsigned>& neighbors) {
  neighbors.clear();
  if (connectivity.empty()) return 0;
  type = resolve_type(type, connectivity.rows());
  if (!check_IDs(connectivity, type, none)) return -1;
  return visit_shape(type, -2, [&](auto columns) {
    return find_neighbors<decltype(columns)>(connectivity, pair_non_manifold, neighbors);
  });
}

}  // namespace

int get_neighbors(const dense2D<unsigned>& connectivity, element_type type, bool pair_non_manifold,
                  dense2D<unsigned>& neighbors) {
  return find_neighbors(connectivity, type, pair_non_manifold, output(neighbors, connectivity));
}

}  // namespace qel::gridwork
