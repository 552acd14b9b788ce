#include "merging/cell_directory.h"

#include <algorithm>

#include "communication/exchange.h"
#include "core/limits.h"
#include "search/geometry.h"

namespace qel::gridwork::detail::parallel {
namespace {

int owner_of(std::uint64_t cell, const team& ranks) noexcept {
  return static_cast<int>(mix_bits(cell) % static_cast<std::uint64_t>(ranks.size()));
}

/// Cells of a coarse grid that hold a node of the sample, which is every `step`-th node.
template <unsigned Dim>
bool count_cells(const cell_grid<Dim>& grid, const dense2D<double>& coords, std::uint64_t step, std::uint64_t& count) {
  dense1D<unsigned char> holds;
  if (!holds.resize(grid.cell_count(), 0)) return false;
  for (std::uint64_t j = 0; j < coords.cols(); j += step) {
    if (!is_finite<Dim>(coords.column(j))) continue;
    grid.for_each_cell(coords.column(j), [&](unsigned cell, bool at_home) {
      count += at_home && holds[cell] == 0 ? 1 : 0;
      holds[cell] |= at_home ? 1 : 0;
    });
  }
  return true;
}

template <unsigned Dim>
bool meet(const bounding_box<Dim>& one, const bounding_box<Dim>& other) noexcept {
  bool do_meet = true;
  for (unsigned a = 0; a < Dim; ++a) do_meet &= one.lower[a] <= other.upper[a] && other.lower[a] <= one.upper[a];
  return do_meet;
}

/// How many cells to part the box into, so that those that hold nodes hold as many as they should. From one coarse grid to
/// one of eight times as many cells, the number that hold nodes grows by a factor that tells curves, surfaces and volumes
/// apart.
std::uint64_t cells_wanted(std::uint64_t nodes, std::uint64_t fine, std::uint64_t coarse) noexcept {
  constexpr std::uint64_t most = std::uint64_t{1} << 60;
  const double factor =
      std::max(2.0, static_cast<double>(fine) / static_cast<double>(std::max<std::uint64_t>(1, coarse)));
  const auto enough = static_cast<double>(limits::positions_per_cell);
  double in_cell = static_cast<double>(nodes) / static_cast<double>(std::max<std::uint64_t>(1, fine));
  std::uint64_t cells = limits::counted_cells;
  for (; in_cell >= factor * enough && cells < most; cells *= 8) in_cell /= factor;
  for (; in_cell < enough && cells > 1; cells /= 8) in_cell *= factor;
  return cells;
}

}  // namespace

/// Boxes around this rank's nodes, those that are finite, and the number of these. False when memory ran out.
template <unsigned Dim>
bool cell_directory<Dim>::find_boxes(const dense2D<double>& coords, std::uint64_t& finite) {
  for (std::uint64_t first = 0; first < coords.cols(); first += limits::nodes_per_box) {
    bounding_box<Dim> box;
    const std::uint64_t last = std::min(coords.cols(), first + limits::nodes_per_box), before = finite;
    for (std::uint64_t j = first; j < last; ++j) {
      if (!is_finite<Dim>(coords.column(j))) continue;
      box.include(coords.column(j));
      ++finite;
    }
    if (!boxes_.push_back(box)) return false;
    if (finite == before) continue;
    own_box_.include(box.lower);
    own_box_.include(box.upper);
  }
  return true;
}

template <unsigned Dim>
int cell_directory<Dim>::choose_grid(team& ranks, int code, const dense2D<double>& coords, double tol) {
  std::uint64_t counts[3] = {};  // nodes, cells of the fine and of the coarse grid
  if (!find_boxes(coords, counts[0])) code = out_of_memory;
  bounding_box<Dim> box;
  double corners[2 * Dim];
  for (unsigned a = 0; a < Dim; ++a) corners[a] = own_box_.lower[a], corners[Dim + a] = -own_box_.upper[a];
  ranks.lower(corners, 2 * Dim);
  for (unsigned a = 0; a < Dim; ++a) box.lower[a] = corners[a], box.upper[a] = -corners[Dim + a];

  const std::uint64_t step = coords.cols() / limits::counted_positions + 1;
  const cell_grid<Dim> fine(box, 0, limits::counted_cells);
  const cell_grid<Dim> coarse(box, 0, limits::counted_cells / 8);
  const bool counted = count_cells(fine, coords, step, counts[1]) && count_cells(coarse, coords, step, counts[2]);
  ranks.add(counts, 3);
  grid_ = grid(box, tol, cells_wanted(counts[0], counts[1], counts[2]));
  return code == 0 && !counted ? out_of_memory : code;
}

/// Boxes around the nodes of other ranks, wider by what two nodes that touch one cell are apart at most: less than two
/// cells, as a tolerance reaches no further than a quarter of one.
template <unsigned Dim>
int cell_directory<Dim>::find_close_boxes(team& ranks, int code) {
  static_assert(limits::smallest_cell_in_tols >= 4);
  const auto size = static_cast<std::uint64_t>(ranks.size());
  dense1D<double> ends;
  if (code == 0 && (!ends.resize(2 * Dim * size) || !close_boxes_.reserve(size))) code = out_of_memory;
  code = ranks.agree(code);
  if (code < 0) return code;
  double own[2 * Dim];
  std::copy_n(own_box_.upper, Dim, std::copy_n(own_box_.lower, Dim, own));
  ranks.gather(own, 2 * Dim, ends.data());
  for (std::uint64_t r = 0; r < size; ++r) {
    bounding_box<Dim> box;
    for (unsigned a = 0; a < Dim; ++a) {
      box.lower[a] = ends[2 * Dim * r + a] - 2 * grid_.cell_length(a);
      box.upper[a] = ends[2 * Dim * r + Dim + a] + 2 * grid_.cell_length(a);
    }
    const bool is_other = r != static_cast<std::uint64_t>(ranks.rank());
    if (is_other && meet(box, own_box_) && !close_boxes_.push_back(box)) return out_of_memory;
  }
  return 0;
}

/// True when no other rank touches a cell that a node in this box touches: most nodes need not be entered anywhere.
template <unsigned Dim>
bool cell_directory<Dim>::is_apart(const bounding_box<Dim>& box) const noexcept {
  return std::none_of(close_boxes_.begin(), close_boxes_.end(),
                      [&](const bounding_box<Dim>& close) { return meet(close, box); });
}

/// The place of a cell among those of this rank, `none` when memory ran out.
template <unsigned Dim>
unsigned cell_directory<Dim>::enter(std::uint64_t cell) {
  const std::uint64_t count = cells_.size();
  if (count + 1 >= none || !table_.make_room()) return none;
  const auto next = static_cast<unsigned>(count);
  const unsigned place =
      table_.find_or_insert(mix_bits(cell), next, [&](unsigned held) { return cells_[held] == cell; });
  return place != next || cells_.push_back(cell) ? place : none;
}

/// False when memory ran out.
template <unsigned Dim>
bool cell_directory<Dim>::enter_node(unsigned node, const double* p) {
  bool entered = true;
  unsigned place = touches_.empty() ? none : touches_[touches_.size() - 1].cell;  // often the same
  grid_.for_each_cell(p, [&](std::uint64_t cell, bool) {
    if (place == none || cells_[place] != cell) place = enter(cell);
    entered = entered && place != none && touches_.push_back({node, place});
  });
  return entered;
}

template <unsigned Dim>
bool cell_directory<Dim>::enter_nodes(const dense2D<double>& coords) {
  if (!table_.reset(0)) return false;
  for (std::uint64_t b = 0; b < boxes_.size(); ++b) {
    if (is_apart(boxes_[b])) continue;
    const std::uint64_t first = b * limits::nodes_per_box;
    const std::uint64_t last = std::min(coords.cols(), first + limits::nodes_per_box);
    for (std::uint64_t j = first; j < last; ++j) {
      const double* p = coords.column(j);
      bounding_box<Dim> place;
      place.include(p);
      if (!is_finite<Dim>(p) || is_apart(place)) continue;
      if (!enter_node(static_cast<unsigned>(j), p)) return false;
    }
  }
  return true;
}

/// Each cell's owner is told who touches it, and tells whether several do.
template <unsigned Dim>
int cell_directory<Dim>::find_shared(team& ranks, int code) {
  outbox<std::uint64_t> out;
  inbox<std::uint64_t> in;
  dense1D<unsigned char> given;
  dense1D<unsigned char> answers;
  const auto walk = [&](auto visit) {
    for (const std::uint64_t cell : cells_) visit(owner_of(cell, ranks), cell);
  };
  if (code == 0 && (!out.fill(ranks, walk) || !shared_.resize(cells_.size()))) code = out_of_memory;
  code = exchange(ranks, code, out, in);
  if (code < 0) return code;

  position_table first_places;
  const dense1D<std::uint64_t>& asked = in.items;
  if (asked.size() >= none || !first_places.reset(asked.size()) || !given.resize(asked.size(), 0)) code = out_of_memory;
  for (unsigned i = 0; code == 0 && i < asked.size(); ++i) {
    const unsigned first =
        first_places.find_or_insert(mix_bits(asked[i]), i, [&](unsigned held) { return asked[held] == asked[i]; });
    if (first != i) given[first] = 1;
    given[i] = first != i ? 1 : 0;
  }
  code = reply(ranks, code, in, given, out, answers);
  if (code < 0) return code;
  out.rewind();
  for (std::uint64_t i = 0; i < cells_.size(); ++i) shared_[i] = answers[out.next_place(owner_of(cells_[i], ranks))];
  return 0;
}

template <unsigned Dim>
int cell_directory<Dim>::handler_of(const team& ranks, unsigned cell) const noexcept {
  return shared_[cell] != 0 ? owner_of(cells_[cell], ranks) : linked_node::alone;
}

/// Takes a node, with the cells that it touches, as an outer one if others touch one of them.
template <unsigned Dim>
bool cell_directory<Dim>::place_node(const team& ranks, const touch* first, const touch* last) {
  const auto shared = std::count_if(first, last, [this](const touch& t) { return shared_[t.cell] != 0; });
  if (shared == 0) return true;
  const auto rank_of = [&](int handler) { return handler == linked_node::alone ? ranks.rank() : handler; };
  const int handler_at_home = handler_of(ranks, first->cell), home = rank_of(handler_at_home);
  const std::uint64_t before = copies_.size();
  for (const touch* t = first + 1; t != last; ++t) {
    const int handler = rank_of(handler_of(ranks, t->cell));
    const bool is_there = handler == home || std::any_of(copies_.begin() + before, copies_.end(),
                                                         [=](const copy& c) { return c.handler == handler; });
    if (!is_there && !copies_.push_back({t->node, home, handler})) return false;
  }
  return outer_nodes_.push_back({first->node, handler_at_home, shared == last - first});
}

template <unsigned Dim>
bool cell_directory<Dim>::place_nodes(const team& ranks) {
  const touch* next = touches_.begin();
  bool room = true;
  while (room && next != touches_.end()) {
    const touch* first = next;
    next = std::find_if(first, static_cast<const touch*>(touches_.end()),
                        [=](const touch& t) { return t.node != first->node; });
    room = place_node(ranks, first, next);
  }
  return room;
}

template <unsigned Dim>
int cell_directory<Dim>::build(team& ranks, int code, const dense2D<double>& coords, double tol) {
  code = find_close_boxes(ranks, choose_grid(ranks, code, coords, tol));
  if (code == 0 && !enter_nodes(coords)) code = out_of_memory;
  code = find_shared(ranks, code);
  return code == 0 && !place_nodes(ranks) ? out_of_memory : code;
}

template class cell_directory<2>;
template class cell_directory<3>;

}  // namespace qel::gridwork::detail::parallel
