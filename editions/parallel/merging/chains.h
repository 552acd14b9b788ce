// Chains of near nodes, followed across ranks.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_CHAINS_H
#define QEL_GRIDWORK_PARALLEL_MERGING_CHAINS_H

#include <cstdint>

#include "merging/handled_nodes.h"

namespace qel::gridwork::detail::parallel {

/// Each node points at its target, the first other one that is near. The serial merge goes through the nodes in order: from
/// a node to its target, and on as long as what that node points at *now* lies earlier than it. Nodes before the one at
/// work already point at their survivors, the others still at their targets.
///
/// The same as a forest. From a node, targets are followed until the first one that does not lie behind it: its parent.
/// (Nearly always the target itself or, as being near is mutual but for rounding, the target's target.) The survivor is the
/// root. Where the way ends at a node behind, because that points at none or at a later one, that is the survivor, and the
/// node a root for those that point at it.
template <unsigned Dim>
class chains {
 public:
  using reference = node_reference<Dim>;

  explicit chains(const handled_nodes<Dim>& nodes) noexcept : nodes_(nodes) {}

  /// Collective. `targets` has an entry for each node, itself where nothing is near; those of copies do not matter. The code
  /// of all ranks.
  int resolve(team& ranks, int code, const dense1D<unsigned>& targets);

  /// What a node at home is merged to; itself, if it survives.
  reference survivor(unsigned i) const noexcept { return known(survivors_[i]); }

  /// Collective: finds out where survivors come to lie. One whose way ends at a node behind takes that one's position. The
  /// code of the ranks so far; this one's own may be added.
  int settle(team& ranks, int code);

  /// True when there is any such survivor.
  bool are_moved() const noexcept { return are_moved_; }

  /// Where the survivor of a node at home comes to lie.
  position<Dim> place(unsigned i) const noexcept { return are_moved_ ? settled_[i] : place_of(survivors_[i]); }

 private:
  /// A node whose way goes on at another rank.
  struct open_end {
    unsigned node, at;
  };
  struct answer {
    reference node;
    bool is_end;
  };

  static constexpr std::uint64_t nowhere = ~std::uint64_t{0};

  reference known(unsigned i) const noexcept {
    return i < nodes_.count() ? nodes_.reference(i) : learned_[i - nodes_.count()];
  }
  std::uint64_t id(unsigned i) const noexcept {
    return i < nodes_.count() ? nodes_.id(i) : learned_[i - nodes_.count()].id;
  }
  position<Dim> place_of(unsigned i) const noexcept {
    position<Dim> at;
    std::copy_n(known(i).p, Dim, at.p);
    return at;
  }
  bool is_here(unsigned i) const noexcept { return i < nodes_.count() && nodes_.is_at_home(i); }
  bool is_root(unsigned i) const noexcept { return parents_[i] == i; }

  [[nodiscard]] bool start();
  [[nodiscard]] bool walk(unsigned node, unsigned at);
  [[nodiscard]] bool stop_behind(unsigned node, unsigned at);
  [[nodiscard]] unsigned learn(const team& ranks, const reference& r);
  template <class Tell, class Follow>
  int close_ends(team& ranks, int code, Tell tell, Follow follow);
  int find_parents(team& ranks, int code);
  int find_roots(team& ranks, int code);
  [[nodiscard]] bool climb();
  answer target_of(std::uint64_t id) const noexcept;
  answer root_of(std::uint64_t id) const noexcept;
  void name_survivors() noexcept;

  const handled_nodes<Dim>& nodes_;
  const dense1D<unsigned>* targets_ = nullptr;
  dense1D<unsigned> parents_;
  dense1D<unsigned> tops_;        // the last node of the way to the root that is handled here
  dense1D<unsigned char> ended_;  // a top's parent, on another rank, is a root
  dense1D<unsigned> survivors_;
  dense1D<reference> learned_;  // nodes that only answers told of; numbered on from those that are handled
  dense1D<open_end> open_;
  dense1D<open_end> stopped_;  // nodes that end at a node behind
  bool are_moved_ = false;
  dense1D<position<Dim>> settled_;  // of survivors, if any rank has such nodes
};

extern template class chains<2>;
extern template class chains<3>;

}  // namespace qel::gridwork::detail::parallel

#endif
