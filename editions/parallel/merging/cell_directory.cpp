#include "merging/cell_directory.h"

#include <algorithm>

#include "communication/exchange.h"
#include "core/index_flags.h"
#include "core/limits.h"

namespace qel::gridwork::detail::parallel {
namespace {

int owner_of(std::uint64_t cell, const team& ranks) noexcept {
  return static_cast<int>(mix_bits(cell) % static_cast<std::uint64_t>(ranks.size()));
}

/// Cells of a coarse grid that hold a node of the sample, which is every `step`-th one of these nodes.
template <unsigned Dim>
bool count_cells(const cell_grid<Dim>& grid, const dense2D<double>& coords, const dense1D<unsigned>& nodes,
                 std::uint64_t step, std::uint64_t& count) {
  dense1D<unsigned char> holds;
  if (!holds.resize(grid.cell_count(), 0)) return false;
  for (std::uint64_t k = 0; k < nodes.size(); k += step) {
    grid.for_each_cell(coords.column(nodes[k]), [&](unsigned cell, bool at_home) {
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
int cell_directory<Dim>::choose_grid(team& ranks, int code, const dense2D<double>& coords,
                                     const border_nodes<Dim>& border, double tol) {
  const dense1D<unsigned>& nodes = border.nodes();
  bounding_box<Dim> box;
  for (const unsigned node : nodes) box.include(coords.column(node));
  double corners[2 * Dim];
  for (unsigned a = 0; a < Dim; ++a) corners[a] = box.lower[a], corners[Dim + a] = -box.upper[a];
  ranks.lower(corners, 2 * Dim);
  for (unsigned a = 0; a < Dim; ++a) box.lower[a] = corners[a], box.upper[a] = -corners[Dim + a];

  std::uint64_t counts[] = {nodes.size(), 0, 0};  // of nodes, cells of the fine and of the coarse grid
  const std::uint64_t step = nodes.size() / limits::counted_positions + 1;
  const cell_grid<Dim> fine(box, 0, limits::counted_cells);
  const cell_grid<Dim> coarse(box, 0, limits::counted_cells / 8);
  const bool counted =
      count_cells(fine, coords, nodes, step, counts[1]) && count_cells(coarse, coords, nodes, step, counts[2]);
  ranks.add(counts, 3);
  grid_ = grid(box, tol, cells_wanted(counts[0], counts[1], counts[2]));
  return code == 0 && !counted ? out_of_memory : code;
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
bool cell_directory<Dim>::enter_node(unsigned place, const double* p, bool beside_too) {
  bool entered = true;
  unsigned cell = touches_.empty() ? none : touches_[touches_.size() - 1].cell;  // often the same
  grid_.for_each_cell(p, [&](std::uint64_t number, bool at_home) {
    if (!at_home && !beside_too) return;
    if (cell == none || cells_[cell] != number) cell = enter(number);
    entered = entered && cell != none && touches_.push_back({place, cell});
  });
  return entered;
}

/// Nodes at one position have one cell in common, where they are at home: others are entered with a tolerance only.
template <unsigned Dim>
bool cell_directory<Dim>::enter_nodes(const dense2D<double>& coords, const border_nodes<Dim>& border, bool beside_too) {
  bool room = table_.reset(0);
  for (unsigned k = 0; room && k < border.nodes().size(); ++k) {
    room = enter_node(k, coords.column(border.nodes()[k]), beside_too);
  }
  return room;
}

/// Each cell's owner is told who touches it. Where several do, it picks one of these by chance, so that none has to handle
/// more than others.
template <unsigned Dim>
int cell_directory<Dim>::find_handlers(team& ranks, int code) {
  outbox<std::uint64_t> out;
  inbox<std::uint64_t> in;
  dense1D<int> given;
  dense1D<int> answers;
  dense1D<int> handlers;     // by the first question about a cell
  dense1D<unsigned> firsts;  // by question
  position_table table;
  const auto walk = [&](auto visit) {
    for (const std::uint64_t cell : cells_) visit(owner_of(cell, ranks), cell);
  };
  if (code == 0 && (!out.fill(ranks, walk) || !handlers_.resize(cells_.size()))) code = out_of_memory;
  code = exchange(ranks, code, out, in);
  if (code < 0) return code;

  const dense1D<std::uint64_t>& asked = in.items;
  const bool room = asked.size() < none && table.reset(asked.size()) && given.resize(asked.size()) &&
                    firsts.resize(asked.size()) && handlers.resize(asked.size());
  const auto lot = [](std::uint64_t cell, int rank) { return mix_bits(cell ^ mix_bits(static_cast<unsigned>(rank))); };
  unsigned i = 0;
  if (room)
    in.for_each([&](std::uint64_t cell, int source) {
      const unsigned first =
          table.find_or_insert(mix_bits(cell), i, [&](unsigned held) { return asked[held] == cell; });
      if (first == i || lot(cell, source) < lot(cell, handlers[first])) handlers[first] = source;
      given[i] = given[first] = first == i ? linked_node::alone : 0;
      firsts[i++] = first;
    });
  for (i = 0; room && i < given.size(); ++i) {
    if (given[i] != linked_node::alone) given[i] = handlers[firsts[i]];
  }
  code = reply(ranks, room ? 0 : out_of_memory, in, given, out, answers);
  if (code < 0) return code;
  out.rewind();
  for (std::uint64_t c = 0; c < cells_.size(); ++c) handlers_[c] = answers[out.next_place(owner_of(cells_[c], ranks))];
  return 0;
}

/// Takes a node, with the cells that it touches, as an outer one if others touch one of them.
template <unsigned Dim>
bool cell_directory<Dim>::place_node(int rank, unsigned node, zone where, const touch* first, const touch* last) {
  const auto is_shared = [this](const touch& t) { return handlers_[t.cell] != linked_node::alone; };
  const auto shared = std::count_if(first, last, is_shared);
  if (shared == 0) return true;
  const int handler_at_home = where == zone::beside ? linked_node::alone : handlers_[first->cell];
  const int home = handler_at_home == linked_node::alone ? rank : handler_at_home;
  const std::uint64_t before = copies_.size();
  const auto copy_to = [&](int handler) {
    const bool is_there = handler == home || std::any_of(copies_.begin() + before, copies_.end(),
                                                         [=](const copy& c) { return c.handler == handler; });
    return is_there || copies_.push_back({node, home, handler});
  };
  bool room = where != zone::near || copy_to(rank);
  for (const touch* t = first; room && t != last; ++t) room = copy_to(is_shared(*t) ? handlers_[t->cell] : rank);
  return room && outer_nodes_.push_back({node, handler_at_home, where == zone::within && shared == last - first});
}

template <unsigned Dim>
bool cell_directory<Dim>::place_nodes(const team& ranks, const border_nodes<Dim>& border) {
  const touch* next = touches_.begin();
  bool room = true;
  while (room && next != touches_.end()) {
    const touch* first = next;
    next = std::find_if(first, static_cast<const touch*>(touches_.end()),
                        [=](const touch& t) { return t.place != first->place; });
    room = place_node(ranks.rank(), border.nodes()[first->place], border.where(first->place), first, next);
  }
  return room;
}

template <unsigned Dim>
bool cell_directory<Dim>::list_followers(const dense1D<follower>& followers, std::uint64_t nodes) {
  if (outer_nodes_.empty() || followers.empty()) return true;
  index_flags are_outer;
  if (!are_outer.reset(nodes)) return false;
  for (const linked_node& l : outer_nodes_) are_outer.insert(l.node);
  bool room = true;
  for (const follower& f : followers) room = room && (!are_outer.contains(f.followed) || followers_.push_back(f));
  return room;
}

template <unsigned Dim>
int cell_directory<Dim>::build(team& ranks, int code, const dense2D<double>& coords, const border_nodes<Dim>& border,
                               double tol) {
  code = choose_grid(ranks, code, coords, border, tol);
  if (code == 0 && !enter_nodes(coords, border, tol > 0)) code = out_of_memory;
  code = find_handlers(ranks, code);
  return code < 0 || (place_nodes(ranks, border) && list_followers(border.followers(), coords.cols())) ? code
                                                                                                       : out_of_memory;
}

template class cell_directory<2>;
template class cell_directory<3>;

}  // namespace qel::gridwork::detail::parallel
