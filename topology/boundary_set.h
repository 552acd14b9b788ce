// A set of boundaries, asked for very many that are not in it.
#ifndef QEL_GRIDWORK_TOPOLOGY_BOUNDARY_SET_H
#define QEL_GRIDWORK_TOPOLOGY_BOUNDARY_SET_H

#include <algorithm>
#include <bit>
#include <cstdint>

#include "core/limits.h"
#include "core/position_table.h"
#include "topology/boundary_key.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork::detail {

/// Boundaries that coincide count as one. Marks on the nodes, found by a hash as nodes may have any number, tell for most
/// boundaries that they are not in the set.
class boundary_set {
  /// For comparisons with what the table holds.
  auto same_as(const boundary_nodes& boundary) const noexcept {
    return
        [this, &boundary](unsigned i) { return compare_boundaries(boundary, boundaries_[i]) != direction::different; };
  }

 public:
  /// Empties the set and makes room for `count` boundaries.
  [[nodiscard]] bool reset(std::uint64_t count) {
    const std::uint64_t marks = std::bit_ceil(limits::marks_per_boundary * count + 2);
    shift_ = 64 - static_cast<unsigned>(std::countr_zero(marks));
    boundaries_.clear();
    marks_.clear();
    return table_.reset(count) && boundaries_.reserve(count) && marks_.resize(marks, 0);
  }

  bool empty() const noexcept { return boundaries_.empty(); }

  void insert(const boundary_nodes& boundary) noexcept {
    const auto next = static_cast<unsigned>(boundaries_.size());
    if (table_.find_or_insert(hash_of(boundary), next, same_as(boundary)) != next) return;
    (void)boundaries_.push_back(boundary);  // there is room
    std::for_each(boundary.nodes, boundary.nodes + boundary.size, [this](unsigned node) { marks_[mark_of(node)] = 1; });
  }

  bool contains(const boundary_nodes& boundary) const noexcept {
    const auto is_marked = [this](unsigned node) { return marks_[mark_of(node)] != 0; };
    return std::all_of(boundary.nodes, boundary.nodes + boundary.size, is_marked) &&
           table_.find(hash_of(boundary), same_as(boundary)) != none;
  }

 private:
  std::uint64_t mark_of(unsigned node) const noexcept { return node * 0x9e3779b97f4a7c15U >> shift_; }

  position_table table_;
  dense1D<boundary_nodes> boundaries_;
  dense1D<unsigned char> marks_;
  unsigned shift_ = 0;
};

}  // namespace qel::gridwork::detail

#endif
