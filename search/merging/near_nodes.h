// The first of a list's nodes that lies within a tolerance of a point.
#ifndef QEL_GRIDWORK_SEARCH_MERGING_NEAR_NODES_H
#define QEL_GRIDWORK_SEARCH_MERGING_NEAR_NODES_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "core/limits.h"
#include "search/merging/coincident_nodes.h"
#include "search/merging/crowd_tree.h"

namespace qel::gridwork::detail {

/// A hashed grid over nodes. A node lies in one cell; a query looks into the cells that its box touches, nearly always
/// one. The nodes of a cell form a chain in the order of their ranks, so the first hit is the answer. All cell numbers
/// come from one monotonic function, so rounding cannot hide a node. Where nodes crowd in cells of any size, a tree
/// takes their place.
template <unsigned Dim>
class near_nodes {
 public:
  near_nodes(const ranked_positions<Dim>& positions, double tol) noexcept : positions_(positions), tol_(tol) {}

  /// Uses the memory of a table that has served.
  void reuse(position_table&& table) noexcept { heads_ = std::move(table); }

  /// Enters all nodes that have finite positions, coincident ones too, in cells of a size that suits a sample of them.
  /// Gives up where they crowd: then is_crowded() holds, and build() is to be called. The square of `tol` must be finite.
  [[nodiscard]] bool build_of_all() {
    constexpr double most_steps_per_node = limits::most_steps_with_coincident;
    const auto is_entered = [&](std::uint64_t rank) { return is_finite<Dim>(positions_[rank]); };
    for (const limits::cell_choice& choice : limits::cell_choices) {
      set_cell_size(choice.cell_in_tols);
      if (!enter_some(sample, is_entered, most_steps_per_node)) return false;
      if (is_crowded_) continue;
      return positions_.count() <= sample || enter_some(positions_.count(), is_entered, most_steps_per_node);
    }
    return true;
  }

  bool is_crowded() const noexcept { return is_crowded_; }

  /// Enters the leaders of `groups` that have finite positions. The square of `tol` must be finite.
  [[nodiscard]] bool build(const coincident_nodes<Dim>& groups) {
    const auto is_entered = [&](std::uint64_t rank) {
      return groups.leader(rank) == rank && is_finite<Dim>(positions_[rank]);
    };
    for (const limits::cell_choice& choice : limits::cell_choices) {
      set_cell_size(choice.cell_in_tols);
      if (!enter_some(groups.leader_count(), is_entered, choice.most_steps_per_node)) return false;
      if (!is_crowded_) return true;
    }
    return crowd_.build(positions_, is_entered);
  }

  /// False when a node that was entered certainly has no other one within the tolerance: it is alone in its cell and
  /// its box does not reach into another one.
  bool may_have_company(std::uint64_t rank) const noexcept { return !crowd_.empty() || lonely_[rank] == 0; }

  /// The cells that hold what may be near a position.
  class surroundings {
   private:
    friend near_nodes;
    std::uint64_t hashes[1U << Dim];
    unsigned count = 0;
  };

  /// Calls for what first_near() is to look at.
  surroundings approach(const double* p) const {
    const surroundings around = cells_around(p);
    for (unsigned i = 0; i < around.count; ++i) heads_.prefetch(around.hashes[i]);
    return around;
  }

  /// The first node within the tolerance of the finite `p` among those that were entered, other than `self`; `none`
  /// when there is none.
  unsigned first_near(const double* p, unsigned self) const {
    if (!crowd_.empty()) return crowd_.first_near(p, tol_, self);
    return first_near(cells_around(p), p, self);
  }

  /// As first_near() of `p`, which approach() was called for. The nodes must not be crowded.
  ///
  /// The chains of all cells are walked side by side, by rank: the walk of one chain up to its own first hit may be
  /// long where only a corner of its cell is near.
  unsigned first_near(const surroundings& around, const double* p, unsigned self) const {
    unsigned chains[1U << Dim];
    for (unsigned i = 0; i < around.count; ++i) chains[i] = heads_.find(around.hashes[i], any);
    for (;;) {
      unsigned* first = std::min_element(chains, chains + around.count);
      if (*first == none || is_hit(*first, p, self)) return *first;
      *first = chains_[*first].next;
    }
  }

 private:
  /// Cell numbers as doubles, which hold any of them.
  struct cell {
    double k[Dim];
  };

  struct chain_link {
    unsigned next, depth;
  };

  void set_cell_size(double cell_in_tols) noexcept {
    const double size = std::clamp(cell_in_tols * tol_, 1e-280, std::numeric_limits<double>::max());
    cells_per_length_ = 1 / size;
  }

  cell cell_of(const double* p) const noexcept {
    cell result;
    for (unsigned a = 0; a < Dim; ++a) result.k[a] = floor_of(std::clamp(p[a] * cells_per_length_, -1e300, 1e300));
    return result;
  }

  /// std::floor as inline code where a 64-bit integer holds the number.
  static double floor_of(double x) noexcept {
    if (!(x > -limits::inline_floor && x < limits::inline_floor)) return std::floor(x);
    const auto truncated = static_cast<double>(static_cast<std::int64_t>(x));
    return truncated > x ? truncated - 1 : truncated;
  }

  static std::uint64_t hash_cell(const cell& c) noexcept { return hash_values<Dim>(c.k); }

  // Cells whose hashes agree in the bits that the table looks at share a chain. That costs time, not correctness.
  static bool any(unsigned) noexcept { return true; }

  /// Where a node goes, and whether the box around it certainly lies in its cell. The margin of that test makes up for
  /// the rounding of moderate numbers.
  struct location {
    std::uint64_t hash;
    bool keeps_to_cell;
  };

  location locate(const double* p) const noexcept {
    constexpr double moderate = limits::moderate_cell;
    const double margin = tol_ * cells_per_length_ + 1e-6;
    const cell c = cell_of(p);
    bool keeps = true;
    for (unsigned a = 0; a < Dim; ++a) {
      const double inside = p[a] * cells_per_length_ - c.k[a];
      keeps &= c.k[a] > -moderate && c.k[a] < moderate && inside > margin && inside < 1 - margin;
    }
    return {hash_cell(c), keeps};
  }

  /// Enters up to `count` nodes for which belongs(rank) in an empty grid, until they are found to crowd. False when
  /// memory ran out.
  template <class Belongs>
  [[nodiscard]] bool enter_some(std::uint64_t count, Belongs belongs, double most_steps_per_node) {
    const std::uint64_t all = positions_.count();
    if (!heads_.reset(std::min(count, all)) || !chains_.resize(all) || !lonely_.resize(all, 0)) return false;
    is_crowded_ = enter_last(count, belongs, most_steps_per_node) > most_steps_per_node;
    return true;
  }

  /// Walks backwards and puts each node that belongs(rank), up to `count`, before the chain of its cell. Returns the
  /// mean of the places in their chains, as soon as it is found to exceed `most_steps_per_node`.
  template <class Belongs>
  double enter_last(std::uint64_t count, Belongs belongs, double most_steps_per_node) {
    std::uint64_t steps = 0;
    std::uint64_t entered = 0;
    const auto mean = [&] { return static_cast<double>(steps) / static_cast<double>(std::max(entered, sample)); };
    location locations[ahead] = {};
    const auto call_for = [&](std::uint64_t rank) {
      location& later = locations[rank % ahead];
      later = locate(positions_[rank]);
      heads_.prefetch(later.hash);
    };
    const std::uint64_t end = positions_.count();
    for (std::uint64_t rank = end; rank-- > 0 && rank + ahead >= end;) call_for(rank);
    for (std::uint64_t rank = end; rank-- > 0 && entered < count;) {
      const location here = locations[rank % ahead];
      if (rank >= ahead) call_for(rank - ahead);
      if (!belongs(rank)) continue;
      steps += enter(static_cast<unsigned>(rank), here);
      if (++entered % sample == 0 && mean() > most_steps_per_node) break;
    }
    return mean();
  }

  /// Returns the place of the node in the chain, counted from its end.
  unsigned enter(unsigned rank, const location& here) {
    unsigned* head = heads_.find_or_insert_slot(here.hash, rank, any);
    const bool first = *head == rank;
    const chain_link link = first ? chain_link{none, 1} : chain_link{*head, chains_[*head].depth + 1};
    lonely_[rank] = first && here.keeps_to_cell ? 1 : 0;
    lonely_[*head] &= lonely_[rank];
    chains_[rank] = link;
    *head = rank;
    return link.depth;
  }

  bool is_hit(unsigned rank, const double* p, unsigned self) const noexcept {
    return rank != self && is_near<Dim>(p, positions_[rank], tol_);
  }

  /// The cells that the box around `p` touches. A cell is larger than the box, which thus touches two of an axis at
  /// most.
  surroundings cells_around(const double* p) const {
    constexpr double largest = std::numeric_limits<double>::max();
    double lower[Dim];
    double upper[Dim];
    for (unsigned a = 0; a < Dim; ++a) {
      lower[a] = std::max(p[a] - tol_, -largest);
      upper[a] = std::min(p[a] + tol_, largest);
    }
    const cell low = cell_of(lower);
    const cell high = cell_of(upper);
    unsigned split = 0;  // the axes of which there are two
    for (unsigned a = 0; a < Dim; ++a) split |= low.k[a] != high.k[a] ? 1U << a : 0;
    surroundings around;
    for (unsigned corner = 0; corner < 1U << Dim; ++corner) {
      if ((corner & ~split) != 0) continue;
      cell c = low;
      for (unsigned a = 0; a < Dim; ++a) c.k[a] = (corner >> a & 1U) != 0 ? high.k[a] : low.k[a];
      around.hashes[around.count++] = hash_cell(c);
    }
    return around;
  }

  static constexpr std::uint64_t ahead = limits::nodes_ahead;
  static constexpr std::uint64_t sample = limits::crowding_sample;

  const ranked_positions<Dim>& positions_;
  double tol_;
  double cells_per_length_ = 0;
  position_table heads_;
  dense1D<chain_link> chains_;
  dense1D<unsigned char> lonely_;
  crowd_tree<Dim> crowd_;  // when it holds nodes, it answers instead of the grid
  bool is_crowded_ = false;
};

}  // namespace qel::gridwork::detail

#endif
