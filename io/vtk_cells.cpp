#include "io/vtk_cells.h"

#include <algorithm>
#include <utility>

#include "core/columns.h"
#include "core/limits.h"
#include "io/distinct_nodes.h"
#include "io/input_result.h"
#include "io/vtk.h"
#include "qel/gridwork/elements.h"

namespace qel::gridwork::detail::io::vtk {
namespace {

/// The quadratic type that the writer makes of a cell with so many nodes and a poly-vertex of so many more; ELT_UNKNOWN
/// when there is none.
element_type joined_type(unsigned vtk_type, std::uint64_t vertices, std::uint64_t others) noexcept {
  for (int code = ELT_EDGE2; code <= ELT_HEXA27; ++code) {
    const auto type = static_cast<element_type>(code);
    const bool fits = vtk_types[type] == vtk_type && nbr_base_nodes(type) == vertices;
    if (fits && others != 0 && nbr_nodes(type) == vertices + others) return type;
  }
  return ELT_UNKNOWN;
}

cell_form form_of(unsigned vtk_type) noexcept {
  return vtk_type < std::size(cell_forms) ? cell_forms[vtk_type] : no_cell;
}

/// How many cells from the one at `i` on are of its type, have `size` nodes, and do not stand before a poly-vertex; no more
/// than are looked at at once.
std::uint64_t run_length(const cell_list& cells, std::uint64_t i, unsigned size) noexcept {
  const unsigned char* const types = cells.types.data();
  const unsigned* const ends = cells.ends.data();
  const std::uint64_t last = std::min(cells.size(), i + limits::cells_at_once);
  unsigned begin = i == 0 ? 0 : ends[i - 1];
  std::uint64_t k = i;
  for (; k != last && types[k] == types[i] && ends[k] - begin == size; ++k) begin = ends[k];
  const bool before_points = k != i && k != cells.size() && types[k] == poly_vertex;
  return k - i - (before_points ? 1 : 0);
}

/// The first of some nodes that a mesh of so many does not have, or their end.
const unsigned* first_unknown(const unsigned* nodes, const unsigned* end, std::uint64_t nbr_nodes) noexcept {
  if (all_below(nodes, end, nbr_nodes)) return end;
  return std::find_if(nodes, end, [=](unsigned node) { return node >= nbr_nodes; });
}

/// True when each cell is a column of the matrix of nodes, and all are of the first one's type.
bool are_alike(const cell_list& cells) noexcept {
  const std::uint64_t rows = cells.nodes.rows(), count = cells.size();
  if (cells.nodes.cols() != count) return false;
  const unsigned* const ends = cells.ends.data();
  const unsigned char* const types = cells.types.data();
  bool alike = true;
  for (std::uint64_t i = 0; i < count; ++i) alike &= ends[i] == (i + 1) * rows && types[i] == types[0];
  return alike;
}

/// Moves row k of some columns to row order[k], for all k.
void move_rows(unsigned* columns, std::uint64_t count, unsigned rows, const unsigned char* order) noexcept {
  unsigned char place[27];
  std::copy_n(order, rows, place);
  for (unsigned k = 0; k < rows; ++k) {
    while (place[k] != k) {
      const unsigned to = place[k];
      for (std::uint64_t j = 0; j < count; ++j) std::swap(columns[j * rows + k], columns[j * rows + to]);
      std::swap(place[k], place[to]);
    }
  }
}

}  // namespace

cell_converter::cell cell_converter::cell_at(const cell_list& cells, std::uint64_t i) noexcept {
  const unsigned* const ends = cells.ends.data();
  const unsigned begin = i == 0 ? 0 : ends[i - 1];
  return {cells.types.data()[i], cells.nodes.data() + begin, ends[i] - begin};
}

int cell_converter::convert(cell_list& cells, std::uint64_t first_ID) noexcept {
  return may_take(cells) ? take(cells, first_ID) : append_each(cells, first_ID);
}

/// True when the matrix of nodes is one of elements, but for their order.
bool cell_converter::may_take(const cell_list& cells) const noexcept {
  if (cells.size() == 0) return false;
  const element_type type = form_of(cells.types.data()[0]).type;
  return type != ELT_UNKNOWN && cells.nodes.rows() == nbr_nodes(type) && out_.may_take(type) && are_alike(cells);
}

int cell_converter::take(cell_list& cells, std::uint64_t first_ID) noexcept {
  const cell_form form = form_of(cells.types.data()[0]);
  const unsigned rows = nbr_nodes(form.type);
  const std::uint64_t count = cells.size();
  for (std::uint64_t j = 0; j < count; j += limits::cells_at_once) {
    unsigned* const columns = cells.nodes.column(j);
    const std::uint64_t some = std::min(count - j, limits::cells_at_once);
    if (!all_below(columns, columns + some * rows, nbr_nodes_)) return unknown_node;
    if (form.order != nullptr) move_rows(columns, some, rows, form.order);
  }
  return out_.take(form.type, std::move(cells.nodes), static_cast<unsigned>(first_ID)) ? 0 : out_of_memory;
}

int cell_converter::append_each(const cell_list& cells, std::uint64_t first_ID) noexcept {
  constexpr std::uint64_t bytes_per_cell = 16;
  const std::uint64_t count = cells.size();
  int result = 0;
  for (std::uint64_t i = 0; i < count && result == 0;) {
    progress_ = {bytes_per_cell * i, bytes_per_cell * count};
    const std::uint64_t run = append_run(cells, i, first_ID);
    i += run;
    if (run != 0) continue;
    ID_ = static_cast<unsigned>(first_ID + i);
    const cell c = cell_at(cells, i);
    const bool before_points = i + 1 < count && cells.types.data()[i + 1] == poly_vertex;
    const cell next = before_points ? cell_at(cells, i + 1) : cell{};
    const element_type joined = before_points ? joined_type(c.type, c.size, next.size) : ELT_UNKNOWN;
    // both lie behind one another in the list of nodes
    const bool is_joined = joined != ELT_UNKNOWN && are_distinct(c.nodes, nbr_nodes(joined));
    result = is_joined ? append_joined(joined, c, next) : append_cell(c);
    i += is_joined ? 2 : 1;
  }
  return result;
}

/// Appends cells from the one at `i` on while they are of its type, have all nodes of its element and no more, and there is
/// memory for them. Returns their number; what stopped them is for others to decide.
std::uint64_t cell_converter::append_run(const cell_list& cells, std::uint64_t i, std::uint64_t first_ID) noexcept {
  const cell_form form = form_of(cells.types.data()[i]);
  if (form.type == ELT_UNKNOWN || !out_.keeps(form.type)) return 0;
  const unsigned size = nbr_nodes(form.type);
  const unsigned* const nodes = cell_at(cells, i).nodes;
  const unsigned* const end = nodes + size * run_length(cells, i, size);
  const auto count = static_cast<std::uint64_t>(first_unknown(nodes, end, nbr_nodes_) - nodes) / size;
  const auto ID = static_cast<unsigned>(first_ID + i);
  return count != 0 && out_.append_run(form.type, nodes, form.order, count, ID, progress_) ? count : 0;
}

int cell_converter::append_joined(element_type type, const cell& first, const cell& second) noexcept {
  if (!out_.keeps(type)) return 0;
  const unsigned char* const order = form_of(first.type).order;
  unsigned nodes[27];
  for (unsigned k = 0; k < first.size; ++k) nodes[order != nullptr ? order[k] : k] = first.nodes[k];
  std::copy_n(second.nodes, second.size, nodes + first.size);
  return append(type, nodes);
}

int cell_converter::append_cell(const cell& c) noexcept {
  switch (c.type) {
    case poly_line:
      return append_edges(c);
    case polygon:
      return append_polygon(c);
    case triangle_strip:
      return append_strip(c);
    default:
      const cell_form form = form_of(c.type);
      if (form.type != ELT_UNKNOWN) return append_plain(form.type, form.order, c);
      ++left_out_;
      return 0;
  }
}

/// Nodes that the type does not have are dropped.
int cell_converter::append_plain(element_type type, const unsigned char* order, const cell& c) noexcept {
  if (!out_.keeps(type)) return 0;
  const unsigned size = nbr_nodes(type);
  if (c.size < size) return malformed;
  unsigned nodes[27];
  for (unsigned k = 0; k < size; ++k) nodes[order != nullptr ? order[k] : k] = c.nodes[k];
  return append(type, nodes);
}

int cell_converter::append_edges(const cell& line) noexcept {
  if (!out_.keeps(ELT_EDGE2)) return 0;
  if (line.size < 2) return malformed;
  int result = 0;
  for (std::uint64_t k = 1; k < line.size && result == 0; ++k) result = append(ELT_EDGE2, line.nodes + k - 1);
  return result;
}

int cell_converter::append_polygon(const cell& face) noexcept {
  if (face.size <= 4) return append_plain(face.size == 4 ? ELT_QUAD4 : ELT_TRIA3, nullptr, face);
  ++left_out_;
  return 0;
}

/// Every second triangle of a strip is turned, so that all have one orientation.
int cell_converter::append_strip(const cell& strip) noexcept {
  if (!out_.keeps(ELT_TRIA3)) return 0;
  if (strip.size < 3) return malformed;
  int result = 0;
  for (std::uint64_t k = 2; k < strip.size && result == 0; ++k) {
    const unsigned turned = k % 2;
    const unsigned triangle[] = {strip.nodes[k - 2 + turned], strip.nodes[k - 1 - turned], strip.nodes[k]};
    result = append(ELT_TRIA3, triangle);
  }
  return result;
}

int cell_converter::append(element_type type, const unsigned* nodes) noexcept {
  const unsigned size = nbr_nodes(type);
  if (std::any_of(nodes, nodes + size, [this](unsigned node) { return node >= nbr_nodes_; })) return unknown_node;
  return out_.append(type, nodes, &ID_, progress_) ? 0 : out_of_memory;
}

}  // namespace qel::gridwork::detail::io::vtk
