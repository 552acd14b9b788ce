// Edges of cut elements that cross the plane: each gets one node, whichever elements share it.
#ifndef QEL_GRIDWORK_TRANSFORMS_CUT_EDGES_H
#define QEL_GRIDWORK_TRANSFORMS_CUT_EDGES_H

#include <algorithm>
#include <cstdint>

#include "core/position_table.h"
#include "core/result.h"
#include "qel/dense.h"

namespace qel::gridwork::detail {

/// An edge as one number: the order of such numbers is the lexicographic order of edges (lower end, higher end).
using edge_key = std::uint64_t;
constexpr edge_key no_edge = ~edge_key{0};

constexpr edge_key key_of(unsigned a, unsigned b) noexcept {
  return a < b ? edge_key{a} << 32 | b : edge_key{b} << 32 | a;
}
constexpr unsigned low_end(edge_key edge) noexcept { return static_cast<unsigned>(edge >> 32); }
constexpr unsigned high_end(edge_key edge) noexcept { return static_cast<unsigned>(edge); }

/// While elements are cut, nodes are numbered in the order in which their edges appear; sort() brings them into the
/// order of edges.
class cut_edges {
 public:
  explicit cut_edges(std::uint64_t first_node) noexcept : first_node_(first_node), complete_(table_.reset(0)) {}

  /// The new node of an edge. Any number when memory ran out, then and ever after.
  unsigned node_of(edge_key edge) noexcept {
    const std::uint64_t hash = mix_bits(edge);
    const auto same = [&](unsigned k) { return edges_[k].key == edge; };
    const unsigned known = complete_ ? table_.find(hash, same) : 0;
    return first_node() + (known == none ? add(edge, hash) : known);
  }

  /// False when memory, or the 32-bit indices for the nodes, ran out.
  bool complete() const noexcept { return complete_; }

  std::uint64_t count() const noexcept { return edges_.size(); }
  edge_key operator[](std::uint64_t k) const noexcept { return edges_[k].key; }

  /// Brings the edges into order and renumbers their nodes in `elements`.
  [[nodiscard]] bool sort(dense2D<unsigned>& elements) noexcept {
    dense1D<unsigned> place;
    if (!place.resize(count())) return false;
    std::sort(edges_.begin(), edges_.end(), [](const entry& a, const entry& b) { return a.key < b.key; });
    for (unsigned k = 0; k < edges_.size(); ++k) place[edges_[k].number] = k;
    for (unsigned *node = elements.data(), *end = node + elements.size(); node != end; ++node) {
      if (*node >= first_node() && *node != none) *node = first_node() + place[*node - first_node()];
    }
    return true;
  }

 private:
  struct entry {
    edge_key key;
    unsigned number;  // of appearance
  };

  unsigned first_node() const noexcept { return static_cast<unsigned>(first_node_); }

  unsigned add(edge_key edge, std::uint64_t hash) noexcept {
    const auto number = static_cast<unsigned>(edges_.size());
    complete_ = first_node_ + number < none && table_.make_room() && edges_.push_back({edge, number});
    return complete_ ? table_.find_or_insert(hash, number, [](unsigned) { return false; }) : 0;
  }

  std::uint64_t first_node_;
  position_table table_;
  dense1D<entry> edges_;
  bool complete_;
};

}  // namespace qel::gridwork::detail

#endif
