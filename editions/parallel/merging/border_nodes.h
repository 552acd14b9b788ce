// The nodes of a rank that nodes of other ranks may be near to, few for each position.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_BORDER_NODES_H
#define QEL_GRIDWORK_PARALLEL_MERGING_BORDER_NODES_H

#include <cstdint>

#include "communication/team.h"
#include "merging/node_set.h"
#include "qel/dense.h"
#include "search/merging/cell_grid.h"

namespace qel::gridwork::detail::parallel {

/// How far a node lies in the boxes around the nodes of other ranks. Each zone reaches further than the next one by what two
/// near nodes are apart at most.
enum class zone : unsigned char {
  apart,   // near to nodes of this rank that lie beside the boxes, at most
  beside,  // near to nodes of this rank alone, which may be near to others
  near,    // may be near to nodes of others
  within   // in a box: near to no node of this rank that lies apart or beside
};

/// Finite nodes that do not lie apart. Of those at one position the first one stands for all without a tolerance, else the
/// first two: all others are merged to the first near node of all, being another one, and so to where the second one is.
template <unsigned Dim>
class border_nodes {
 public:
  /// Collective. The code of the ranks so far; this one's own may be added.
  int find(team& ranks, int code, const dense2D<double>& coords, double tol);

  /// Increasing.
  const dense1D<unsigned>& nodes() const noexcept { return nodes_; }

  /// Where the k-th of them lies.
  zone where(std::uint64_t k) const noexcept { return zones_[k]; }

  /// The others at their positions, increasing.
  const dense1D<follower>& followers() const noexcept { return followers_; }

 private:
  /// The box around the nodes of another rank, from the outermost zone on.
  struct close_rank {
    bounding_box<Dim> boxes[3];
  };

  [[nodiscard]] bool find_boxes(const dense2D<double>& coords);
  int find_close_ranks(team& ranks, int code, double tol);
  zone zone_of(const bounding_box<Dim>& box) const noexcept;
  [[nodiscard]] bool list_nodes(const dense2D<double>& coords);
  [[nodiscard]] bool part_followers(const dense2D<double>& coords, bool keep_second);

  bounding_box<Dim> own_box_;
  dense1D<bounding_box<Dim>> boxes_;  // around so many of this rank's nodes in a row
  dense1D<close_rank> close_ranks_;
  dense1D<unsigned> nodes_;
  dense1D<zone> zones_;
  dense1D<follower> followers_;
};

extern template class border_nodes<2>;
extern template class border_nodes<3>;

}  // namespace qel::gridwork::detail::parallel

#endif
