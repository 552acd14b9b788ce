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

template <unsigned Dim>
int cell_directory<Dim>::choose_grid(team& ranks, int code, const dense2D<double>& coords, double tol) {
  bounding_box<Dim> box;
  std::uint64_t counts[3] = {};  // nodes, cells of the fine and of the coarse grid
  for (std::uint64_t j = 0; j < coords.cols(); ++j) {
    if (!is_finite<Dim>(coords.column(j))) continue;
    box.include(coords.column(j));
    ++counts[0];
  }
  own_box_ = box;
  double corners[2 * Dim];
  for (unsigned a = 0; a < Dim; ++a) corners[a] = box.lower[a], corners[Dim + a] = -box.upper[a];
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
    bool is_close = r != static_cast<std::uint64_t>(ranks.rank());
    for (unsigned a = 0; a < Dim; ++a) {
      box.lower[a] = ends[2 * Dim * r + a] - 2 * grid_.cell_length(a);
      box.upper[a] = ends[2 * Dim * r + Dim + a] + 2 * grid_.cell_length(a);
      is_close = is_close && box.lower[a] <= own_box_.upper[a] && own_box_.lower[a] <= box.upper[a];
    }
    if (is_close && !close_boxes_.push_back(box)) return out_of_memory;
  }
  return 0;
}

/// True when no other rank touches a cell that the node touches: most nodes need not be entered anywhere.
template <unsigned Dim>
bool cell_directory<Dim>::is_apart(const double* p) const noexcept {
  return std::none_of(close_boxes_.begin(), close_boxes_.end(), [p](const bounding_box<Dim>& box) {
    bool is_inside = true;
    for (unsigned a = 0; a < Dim; ++a) is_inside &= box.lower[a] <= p[a] && p[a] <= box.upper[a];
    return is_inside;
  });
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

template <unsigned Dim>
bool cell_directory<Dim>::enter_nodes(const dense2D<double>& coords) {
  const std::uint64_t count = coords.cols();
  if (!table_.reset(count / limits::positions_per_cell) || !home_cells_.resize(count, none)) return false;
  std::uint64_t last_cell = ~std::uint64_t{0};
  unsigned last_place = none;
  bool entered = true;
  for (std::uint64_t j = 0; j < count && entered; ++j) {
    if (!is_finite<Dim>(coords.column(j)) || is_apart(coords.column(j))) continue;
    grid_.for_each_cell(coords.column(j), [&](std::uint64_t cell, bool at_home) {
      if (cell != last_cell || last_place == none) last_place = enter(last_cell = cell);
      entered = entered && last_place != none;
      if (at_home)
        home_cells_[j] = last_place;
      else
        entered = entered && touches_.push_back({static_cast<unsigned>(j), last_place});
    });
  }
  return entered;
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
  return shared_[cell] != 0 ? owner_of(cells_[cell], ranks) : alone;
}

template <unsigned Dim>
bool cell_directory<Dim>::place_nodes(const team& ranks) {
  if (!homes_.resize(home_cells_.size(), alone)) return false;
  for (std::uint64_t j = 0; j < homes_.size(); ++j) {
    if (home_cells_[j] != none) homes_[j] = handler_of(ranks, home_cells_[j]);
  }
  const auto rank_of = [&](int handler) { return handler == alone ? ranks.rank() : handler; };
  for (const touch& t : touches_) {
    const int handler = rank_of(handler_of(ranks, t.cell));
    const bool is_there =
        handler == rank_of(homes_[t.node]) ||
        std::any_of(copies_.end() - std::min<std::ptrdiff_t>(copies_.end() - copies_.begin(), 1 << Dim), copies_.end(),
                    [&](const copy& c) { return c.node == t.node && c.handler == handler; });
    if (!is_there && !copies_.push_back({t.node, handler})) return false;
  }
  return true;
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
