// Which rank handles which nodes, so that all that is near to a node is there, and most nodes stay where they are.
#ifndef QEL_GRIDWORK_PARALLEL_MERGING_CELL_DIRECTORY_H
#define QEL_GRIDWORK_PARALLEL_MERGING_CELL_DIRECTORY_H

#include <cstdint>

#include "communication/team.h"
#include "core/position_table.h"
#include "qel/dense.h"
#include "search/merging/cell_grid.h"

namespace qel::gridwork::detail::parallel {

/// Space is parted into cells. A rank handles the cells that it alone touches by its nodes and the tolerance around them;
/// cells that several touch are handled by a rank that follows from the cell's number. A node is at home with the handler of
/// its cell, and copied to those of the other cells that it touches: so every node is found by all that are near.
template <unsigned Dim>
class cell_directory {
 public:
  static constexpr int alone = -1;  // this rank, and no other touches the cell

  /// A node that is copied.
  struct copy {
    unsigned node;
    int handler;
  };

  /// Collective. The code of all ranks.
  int build(team& ranks, int code, const dense2D<double>& coords, double tol);

  /// Where each node is at home. Nodes with a coordinate that is not finite are alone.
  const dense1D<int>& homes() const noexcept { return homes_; }
  const dense1D<copy>& copies() const noexcept { return copies_; }

 private:
  using grid = cell_grid<Dim, std::uint64_t>;

  struct touch {
    unsigned node, cell;
  };

  int choose_grid(team& ranks, int code, const dense2D<double>& coords, double tol);
  int find_close_boxes(team& ranks, int code);
  bool is_apart(const double* p) const noexcept;
  [[nodiscard]] bool enter_nodes(const dense2D<double>& coords);
  [[nodiscard]] unsigned enter(std::uint64_t cell);
  int find_shared(team& ranks, int code);
  [[nodiscard]] bool place_nodes(const team& ranks);
  int handler_of(const team& ranks, unsigned cell) const noexcept;

  grid grid_{bounding_box<Dim>(), 0, 1};
  bounding_box<Dim> own_box_;
  dense1D<bounding_box<Dim>> close_boxes_;  // where other ranks may touch the same cells as this one
  dense1D<std::uint64_t> cells_;            // that this rank touches
  position_table table_;                    // of them
  dense1D<unsigned char> shared_;
  dense1D<unsigned> home_cells_;
  dense1D<touch> touches_;  // beside the home cells
  dense1D<int> homes_;
  dense1D<copy> copies_;
};

extern template class cell_directory<2>;
extern template class cell_directory<3>;

}  // namespace qel::gridwork::detail::parallel

#endif
