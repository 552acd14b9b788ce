#include "search/merging/near_nodes.h"

#include "core/result.h"
#include "search/geometry.h"

namespace qel::gridwork::detail {
namespace {

std::uint64_t cells_wanted(std::uint64_t nodes) noexcept {
  return std::clamp<std::uint64_t>(nodes / limits::nodes_per_cell, 1, limits::most_cells);
}

}  // namespace

/// Parts the nodes of the list, which are not placed yet. Even a single cell is filled, for choose_way().
template <unsigned Dim>
bool near_nodes<Dim>::subdivide_all() {
  bounding_box<Dim> box;
  std::uint64_t finite = 0;
  for (std::uint64_t rank = 0; rank < positions_.count(); ++rank) {
    if (!is_finite<Dim>(positions_[rank])) continue;
    box.include(positions_[rank]);
    ++finite;
  }
  const auto for_each_node = [&](auto use) {
    for (std::uint64_t rank = 0; rank < positions_.count(); ++rank) {
      const double* p = positions_[rank];
      if (is_finite<Dim>(p)) use(p, static_cast<unsigned>(rank), true);
    }
  };
  return distribute(cell_grid<Dim>(box, tol_, cells_wanted(finite)), for_each_node, subdivisions_[0]);
}

template <unsigned Dim>
bool near_nodes<Dim>::subdivide(const cell& divided, const cell_grid<Dim>& grid, subdivision& into) {
  const auto for_each_node = [&](auto use) {
    for (const node& n : divided) use(n.p, n.rank, n.at_home);
  };
  return distribute(grid, for_each_node, into);
}

/// Sorts nodes into cells by counting, so that those of a cell keep their order.
template <unsigned Dim>
template <class ForEachNode>
bool near_nodes<Dim>::distribute(const cell_grid<Dim>& grid, ForEachNode for_each_node, subdivision& into) {
  const unsigned cells = grid.cell_count();
  into.ends.clear();
  into.nodes.clear();
  if (!into.ends.resize(cells + 1, 0)) return false;
  std::uint64_t* ends = into.ends.data();
  for_each_node(
      [&](const double* p, unsigned, bool) { grid.for_each_cell(p, [&](unsigned c, bool) { ++ends[c + 1]; }); });
  for (unsigned c = 0; c < cells; ++c) ends[c + 1] += ends[c];
  if (!into.nodes.resize(ends[cells])) return false;
  node* nodes = into.nodes.data();
  for_each_node([&](const double* p, unsigned rank, bool at_home) {
    node placed;
    std::copy_n(p, Dim, placed.p);
    placed.rank = rank;
    grid.for_each_cell(p, [&](unsigned c, bool in_cell) {
      placed.at_home = at_home && in_cell;
      nodes[ends[c]++] = placed;
    });
  });
  return true;
}

template <unsigned Dim>
bool near_nodes<Dim>::answer_cells(unsigned depth) {
  const subdivision& divided = subdivisions_[depth];
  std::uint64_t begin = 0;
  for (std::uint64_t c = 0; c + 1 < divided.ends.size(); ++c) {
    const std::uint64_t end = divided.ends[c];
    if (!choose_way({divided.nodes.data() + begin, end - begin}, depth + 1)) return false;
    begin = end;
  }
  return true;
}

/// Chooses the way to answer for the nodes of one cell.
template <unsigned Dim>
bool near_nodes<Dim>::choose_way(const cell& asked, unsigned depth) {
  if (asked.count <= limits::pairwise_nodes) return answer_by_pairs(asked), true;
  bounding_box<Dim> box;
  for (const node& n : asked) box.include(n.p);
  if (is_near<Dim>(box.lower, box.upper, tol_)) return answer_by_pairs(asked), true;  // the first pairs will do
  if (depth == limits::most_subdivisions) return answer_by_tree(asked);
  const cell_grid<Dim> grid(box, tol_, cells_wanted(asked.count));
  if (grid.cell_count() == 1) return answer_by_tree(asked);
  return subdivide(asked, grid, subdivisions_[depth]) && answer_cells(depth);
}

template <unsigned Dim>
void near_nodes<Dim>::answer_by_pairs(const cell& asked) noexcept {
  for (const node& n : asked) {
    if (!n.at_home) continue;
    for (const node& other : asked) {
      if (other.rank >= rank_bound_) break;
      if (&other == &n || !is_near<Dim>(n.p, other.p, tol_)) continue;
      record_match(n.rank, other.rank);
      break;
    }
  }
}

template <unsigned Dim>
bool near_nodes<Dim>::answer_by_tree(const cell& asked) {
  if (!tree_.build(asked, rank_bound_)) return false;
  for (const node& n : asked) {
    if (!n.at_home) continue;
    const unsigned first = tree_.first_near(n.p, tol_, n.rank);
    if (first != none) record_match(n.rank, first);
  }
  return true;
}

template <unsigned Dim>
void near_nodes<Dim>::record_match(unsigned rank, unsigned first_near) noexcept {
  found_[rank] = first_near;
  ++found_count_;
}

template class near_nodes<2>;
template class near_nodes<3>;

}  // namespace qel::gridwork::detail
