// Cells of VTK files, and the elements that they make.
#ifndef QEL_GRIDWORK_IO_VTK_CELLS_H
#define QEL_GRIDWORK_IO_VTK_CELLS_H

#include <cstdint>

#include "io/element_collector.h"
#include "qel/dense.h"

namespace qel::gridwork::detail::io::vtk {

/// Cells in the order of a file, in matrices that grow while it is read; of one row, if nothing else is said.
struct cell_list {
  dense2D<unsigned> nodes{};  // of all cells; `none` for a number that no node has. A column a cell where all may fit
  dense2D<unsigned> ends{};   // where the nodes of each cell end
  dense2D<unsigned char> types{};
  bool is_there = false;

  std::uint64_t size() const noexcept { return ends.cols(); }
};

/// Turns cells into elements of the types that a collector keeps.
class cell_converter {
 public:
  cell_converter(element_collector& out, std::uint64_t nbr_nodes) noexcept : out_(out), nbr_nodes_(nbr_nodes) {}

  /// Appends the elements of a list, as many types as cells, numbered from first_ID on; the list may be empty then. Returns
  /// 0, or the code of what is wrong.
  int convert(cell_list& cells, std::uint64_t first_ID) noexcept;

  /// Cells that the library has no element for.
  std::uint64_t left_out() const noexcept { return left_out_; }

 private:
  struct cell {
    unsigned type;
    const unsigned* nodes;
    std::uint64_t size;
  };

  bool may_take(const cell_list& cells) const noexcept;
  int take(cell_list& cells, std::uint64_t first_ID) noexcept;
  int append_each(const cell_list& cells, std::uint64_t first_ID) noexcept;
  static cell cell_at(const cell_list& cells, std::uint64_t i) noexcept;
  std::uint64_t append_run(const cell_list& cells, std::uint64_t i, std::uint64_t first_ID) noexcept;
  int append_joined(element_type type, const cell& first, const cell& second) noexcept;
  int append_cell(const cell& c) noexcept;
  int append_plain(element_type type, const unsigned char* order, const cell& c) noexcept;
  int append_edges(const cell& line) noexcept;
  int append_polygon(const cell& face) noexcept;
  int append_strip(const cell& strip) noexcept;
  int append(element_type type, const unsigned* nodes) noexcept;

  element_collector& out_;
  std::uint64_t nbr_nodes_;
  std::uint64_t left_out_ = 0;
  unsigned ID_ = 0;               // of the cell at hand
  file_progress progress_{0, 0};  // of the list, as if a cell took some bytes
};

}  // namespace qel::gridwork::detail::io::vtk

#endif
