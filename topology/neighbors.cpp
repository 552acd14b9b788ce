// Elements across boundaries. Slots are put into buckets by their smallest node; equal boundaries meet in one bucket.
#include <algorithm>

#include "core/distribute.h"
#include "core/elements.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/topology.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork {
namespace {

/// A slot beside the hash of its nodes, which tells nearly all different boundaries apart.
struct hashed_slot {
  unsigned hash, slot;
};

/// Gives slots of one bucket that hold the same boundary to each other as neighbours.
template <class Columns>
class slot_matcher {
 public:
  slot_matcher(const dense2D<unsigned>& connectivity, bool pair_non_manifold, dense2D<unsigned>& neighbors) noexcept
      : connectivity_(connectivity), neighbors_(neighbors.data()), pair_non_manifold_(pair_non_manifold) {}

  /// Matches the slots of a bucket, which come in increasing order. They are overwritten.
  void match(hashed_slot* begin, hashed_slot* end) const {
    constexpr std::ptrdiff_t few = 48;
    if (end - begin <= few) {
      match_pairwise(begin, end);
      return;
    }
    std::sort(begin, end, [](const hashed_slot& a, const hashed_slot& b) {
      return a.hash != b.hash ? a.hash < b.hash : a.slot < b.slot;
    });
    while (begin != end) {
      hashed_slot* next = begin;
      while (next != end && next->hash == begin->hash) ++next;
      match_pairwise(begin, next);
      begin = next;
    }
  }

 private:
  static constexpr unsigned boundaries = Columns::largest.boundaries;

  boundary_nodes boundary(unsigned slot) const noexcept {
    const unsigned* nodes = connectivity_.column(slot / boundaries);
    return boundary_of(Columns::of(nodes), nodes, slot % boundaries);
  }

  /// Visits each slot that no earlier one has taken, and takes those that match it.
  void match_pairwise(hashed_slot* begin, hashed_slot* end) const noexcept {
    for (hashed_slot* first = begin; first != end; ++first) {
      if (first->slot != none) match_first(*first, first + 1, end);
    }
  }

  void match_first(const hashed_slot& first, hashed_slot* rest, hashed_slot* end) const noexcept {
    unsigned matches = 0;
    unsigned last = none;
    for (hashed_slot* it = rest; it != end; ++it) {
      if (it->hash != first.hash || it->slot == none || !are_equal(first.slot, it->slot)) continue;
      ++matches;
      last = it->slot;
      if (pair_non_manifold_) neighbors_[last] = first.slot / boundaries;
      it->slot = none;  // taken
    }
    if (matches == 1) neighbors_[last] = first.slot / boundaries;
    if (matches == 1 || (matches > 1 && pair_non_manifold_)) neighbors_[first.slot] = last / boundaries;
  }

  bool are_equal(unsigned a, unsigned b) const noexcept {
    return compare_boundaries(boundary(a), boundary(b)) != direction::different;
  }

  const dense2D<unsigned>& connectivity_;
  unsigned* neighbors_;
  bool pair_non_manifold_;
};

/// Calls visit(element's nodes, its shape, slot code, local boundary) for every slot in order.
template <class Columns, class Visit>
void visit_slots(const dense2D<unsigned>& connectivity, Visit visit) {
  for (std::uint64_t e = 0; e < connectivity.cols(); ++e) {
    const unsigned* nodes = connectivity.column(e);
    const shape& s = Columns::of(nodes);
    const auto first_slot = static_cast<unsigned>(e * Columns::largest.boundaries);
    for (unsigned k = 0; k < s.boundaries; ++k) visit(boundary_of(s, nodes, k), first_slot + k);
  }
}

/// Buckets are the nodes themselves or, where indices are too large for a table, hashes of them.
class node_buckets {
 public:
  node_buckets(const dense2D<unsigned>& connectivity, std::uint64_t slots) {
    unsigned bound = 0;  // `none`, the filling of mixed elements, wraps to 0
    for (std::uint64_t e = 0; e < connectivity.cols(); ++e) {
      for (const unsigned* p = connectivity.begin_column(e); p != connectivity.end_column(e); ++p) {
        bound = std::max(bound, *p + 1);
      }
    }
    count_ = std::uint64_t{bound} + 1;
    if (count_ <= slots + 1024) return;
    hashed_ = true;
    count_ = 1024;
    while (2 * count_ < slots) count_ *= 2;
  }

  std::uint64_t count() const noexcept { return count_; }

  std::uint64_t operator()(unsigned node) const noexcept {
    return hashed_ ? mix_bits(node) & (count_ - 1) : std::min<std::uint64_t>(node, count_ - 1);
  }

 private:
  std::uint64_t count_ = 0;
  bool hashed_ = false;
};

template <class Columns>
int find_neighbors(const dense2D<unsigned>& connectivity, bool pair_non_manifold, dense2D<unsigned>& neighbors) {
  constexpr unsigned boundaries = Columns::largest.boundaries;
  if (!neighbors.resize(boundaries, connectivity.cols(), none)) return out_of_memory;
  if (!slot_codes_fit(connectivity.cols(), boundaries)) return out_of_memory;
  const node_buckets bucket_of(connectivity, neighbors.size());
  dense1D<unsigned> offsets;
  dense1D<hashed_slot> slots;
  const auto walk = [&](auto visit) {
    visit_slots<Columns>(connectivity, [&](const boundary_nodes& boundary, unsigned slot) {
      visit(bucket_of(boundary.smallest()), std::pair(slot, &boundary));
    });
  };
  const bool distributed = distribute(
      bucket_of.count(), offsets, walk, [&](unsigned total) { return slots.resize(total); },
      [&](unsigned position, const auto& item) {
        slots.data()[position] = {hash_boundary(*item.second), item.first};
      });
  if (!distributed) return out_of_memory;
  const slot_matcher<Columns> matcher(connectivity, pair_non_manifold, neighbors);
  for (std::uint64_t b = 0; b < bucket_of.count(); ++b) {
    matcher.match(slots.data() + offsets[b], slots.data() + offsets[b + 1]);
  }
  return 0;
}

}  // namespace

int get_neighbors(const dense2D<unsigned>& connectivity, element_type type, bool pair_non_manifold,
                  dense2D<unsigned>& neighbors) {
  neighbors.clear();
  if (connectivity.empty()) return 0;
  type = resolve_type(type, connectivity.rows());
  if (!check_IDs(connectivity, type, none)) return -1;
  return visit_shape(type, -2, [&](auto columns) {
    return find_neighbors<decltype(columns)>(connectivity, pair_non_manifold, neighbors);
  });
}

}  // namespace qel::gridwork
