// Which rank handles which nodes, so that all that is near to a node is there, and most nodes stay where they are.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_CELL_DIRECTORY_H
#define QEL_GRIDWORK_PARALLEL_MERGING_CELL_DIRECTORY_H

#include <cstdint>

#include "communication/team.h"
#include "core/position_table.h"
#include "merging/node_set.h"
#include "qel/dense.h"
#include "search/merging/cell_grid.h"

namespace qel::gridwork::detail::parallel {

/// Space is parted into cells. A rank handles the cells that it alone touches by its nodes and the tolerance around them;
/// cells that several touch are handled by a rank that follows from the cell's number. A node is at home with the handler of
/// its cell, and copied to those of the other cells that it touches: so every node is found by all that are near.
template <unsigned Dim>
class cell_directory {
 public:
  /// A node that is copied.
  struct copy {
    unsigned node;
    int home, handler;  // ranks
  };

  /// Collective. The code of all ranks.
  int build(team& ranks, int code, const dense2D<double>& coords, double tol);

  /// The nodes that touch a cell that other ranks touch, too, in their order; none with a coordinate that is not finite.
  const dense1D<linked_node>& outer_nodes() const noexcept { return outer_nodes_; }
  const dense1D<copy>& copies() const noexcept { return copies_; }

 private:
  using grid = cell_grid<Dim, std::uint64_t>;

  struct touch {
    unsigned node, cell;
  };

  [[nodiscard]] bool find_boxes(const dense2D<double>& coords, std::uint64_t& finite);
  int choose_grid(team& ranks, int code, const dense2D<double>& coords, double tol);
  int find_close_boxes(team& ranks, int code);
  bool is_apart(const bounding_box<Dim>& box) const noexcept;
  [[nodiscard]] bool enter_nodes(const dense2D<double>& coords);
  [[nodiscard]] unsigned enter(std::uint64_t cell);
  [[nodiscard]] bool enter_node(unsigned node, const double* p);
  int find_shared(team& ranks, int code);
  [[nodiscard]] bool place_nodes(const team& ranks);
  [[nodiscard]] bool place_node(const team& ranks, const touch* first, const touch* last);
  int handler_of(const team& ranks, unsigned cell) const noexcept;

  grid grid_{bounding_box<Dim>(), 0, 1};
  bounding_box<Dim> own_box_;
  dense1D<bounding_box<Dim>> boxes_;        // around so many of this rank's nodes in a row
  dense1D<bounding_box<Dim>> close_boxes_;  // where other ranks may touch the same cells as this one
  dense1D<std::uint64_t> cells_;            // that this rank touches
  position_table table_;                    // of them
  dense1D<unsigned char> shared_;
  dense1D<touch> touches_;  // of one node after the other, that of its home cell first
  dense1D<linked_node> outer_nodes_;
  dense1D<copy> copies_;
};

extern template class cell_directory<2>;
extern template class cell_directory<3>;

}  // namespace qel::gridwork::detail::parallel

#endif
