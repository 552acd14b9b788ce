// Which rank handles which nodes, so that all that is near to a node is there, and most nodes stay where they are.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_CELL_DIRECTORY_H
#define QEL_GRIDWORK_PARALLEL_MERGING_CELL_DIRECTORY_H

#include <cstdint>

#include "communication/team.h"
#include "core/position_table.h"
#include "merging/border_nodes.h"
#include "qel/dense.h"
#include "search/merging/cell_grid.h"

namespace qel::gridwork::detail::parallel {

/// The space where nodes of one rank may be near to those of another is parted into cells. A rank handles the cells that it
/// alone touches by its nodes and the tolerance around them; cells that several touch are handled by one of these. A node is
/// at home with the handler of its cell, but with its own rank where it is near to nodes of that one alone; it is copied to
/// the handlers of the other cells that it touches: so every node is found by all that are near.
template <unsigned Dim>
class cell_directory {
 public:
  /// A node that is copied.
  struct copy {
    unsigned node;
    int home, handler;  // ranks
  };

  /// Collective. The code of all ranks.
  int build(team& ranks, int code, const dense2D<double>& coords, const border_nodes<Dim>& border, double tol);

  /// Those of the border nodes that touch a cell that other ranks touch, too, in their order.
  const dense1D<linked_node>& outer_nodes() const noexcept { return outer_nodes_; }

  /// Those that follow them, in their order.
  const dense1D<follower>& followers() const noexcept { return followers_; }
  const dense1D<copy>& copies() const noexcept { return copies_; }

 private:
  using grid = cell_grid<Dim, std::uint64_t>;

  /// A border node, by its place among these, and a cell, by its place among those that this rank touches.
  struct touch {
    unsigned place, cell;
  };

  int choose_grid(team& ranks, int code, const dense2D<double>& coords, const border_nodes<Dim>& border, double tol);
  [[nodiscard]] bool enter_nodes(const dense2D<double>& coords, const border_nodes<Dim>& border, bool beside_too);
  [[nodiscard]] unsigned enter(std::uint64_t cell);
  [[nodiscard]] bool enter_node(unsigned place, const double* p, bool beside_too);
  int find_handlers(team& ranks, int code);
  [[nodiscard]] bool place_nodes(const team& ranks, const border_nodes<Dim>& border);
  [[nodiscard]] bool place_node(int rank, unsigned node, zone where, const touch* first, const touch* last);
  [[nodiscard]] bool list_followers(const dense1D<follower>& followers, std::uint64_t nodes);

  grid grid_{bounding_box<Dim>(), 0, 1};
  dense1D<std::uint64_t> cells_;  // that this rank touches
  position_table table_;          // of them
  dense1D<int> handlers_;         // of cells that others touch, too, else linked_node::alone
  dense1D<touch> touches_;        // of one node after the other, that of its home cell first
  dense1D<linked_node> outer_nodes_;
  dense1D<follower> followers_;
  dense1D<copy> copies_;
};

extern template class cell_directory<2>;
extern template class cell_directory<3>;

}  // namespace qel::gridwork::detail::parallel

#endif
