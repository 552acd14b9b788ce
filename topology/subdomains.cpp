// Connected parts of a mesh.
//
// Union-find in one pass over the neighbours: every element points at a lower one of its part, or at itself while it is
// the lowest. As that one comes first, a second pass in the order of the elements turns the pointers into colours.
#include <algorithm>
#include <climits>
#include <utility>

#include "core/elements.h"
#include "core/identity_map.h"
#include "core/limits.h"
#include "core/outputs.h"
#include "core/position_table.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/topology.h"
#include "topology/boundary_set.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork {

using namespace detail;

namespace {

constexpr auto everywhere = [](unsigned, unsigned) { return true; };

/// The lowest element of a part, as far as it is known. Every second step of the way is made shorter.
unsigned lowest_of(unsigned* lower, unsigned e) noexcept {
  while (lower[e] != e) e = lower[e] = lower[lower[e]];
  return e;
}

void prefetch_neighbors(const dense2D<unsigned>& neighbors, std::uint64_t e, const unsigned* lower) noexcept {
  if (e >= neighbors.cols()) return;
  for (const unsigned* n = neighbors.begin_column(e); n != neighbors.end_column(e); ++n) {
    if (*n != none) prefetch(lower + *n);
  }
}

/// Joins the parts of neighbours for which is_open(k, e) is true.
template <class IsOpen>
void join_neighbors(const dense2D<unsigned>& neighbors, IsOpen is_open, unsigned* lower) {
  for (unsigned e = 0; e < neighbors.cols(); ++e) {
    prefetch_neighbors(neighbors, e + limits::elements_ahead, lower);
    unsigned lowest = lowest_of(lower, e);
    const unsigned* across = neighbors.column(e);
    for (unsigned k = 0; k < neighbors.rows(); ++k) {
      if (across[k] == none || lower[across[k]] == lowest || !is_open(k, e)) continue;
      const unsigned other = lowest_of(lower, across[k]);
      lower[std::max(lowest, other)] = std::min(lowest, other);
      lowest = std::min(lowest, other);
    }
  }
}

/// Replaces the pointers by colours and returns their number.
unsigned color_parts(dense1D<unsigned>& lower) noexcept {
  unsigned count = 0;
  for (unsigned e = 0; e < lower.size(); ++e) lower[e] = lower[e] == e ? count++ : lower[lower[e]];
  return count;
}

template <class IsOpen>
int color_subdomains(const dense2D<unsigned>& neighbors, IsOpen is_open, dense1D<unsigned>& colors) {
  dense1D<unsigned> parts;
  if (!set_identity(parts, neighbors.cols())) return out_of_memory;
  join_neighbors(neighbors, is_open, parts.data());
  const unsigned count = color_parts(parts);
  if (count > INT_MAX) return out_of_memory;
  colors = std::move(parts);
  return static_cast<int>(count);
}

template <class Columns>
void insert_walls(const dense1D<unsigned>& walls, const dense2D<unsigned>& connectivity, boundary_set& closed) {
  constexpr unsigned boundaries = Columns::largest.boundaries;
  for (const unsigned slot : walls) {
    if (slot == none) continue;
    const unsigned* nodes = connectivity.column(slot / boundaries);
    const shape& s = Columns::of(nodes);
    if (slot % boundaries < s.boundaries) closed.insert(boundary_of<Columns>(s, nodes, slot % boundaries));
  }
}

template <class Columns>
void insert_walls(const dense2D<unsigned>& walls, const dense2D<unsigned>&, boundary_set& closed) {
  for (std::uint64_t j = 0; j < walls.cols(); ++j) closed.insert(given_boundary(walls, j));
}

std::uint64_t count_of(const dense1D<unsigned>& walls) noexcept { return walls.size(); }
std::uint64_t count_of(const dense2D<unsigned>& walls) noexcept { return walls.empty() ? 0 : walls.cols(); }

template <class Columns, class Walls>
int color_between_walls(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors, const Walls& walls,
                        dense1D<unsigned>& colors) {
  if (walls.empty()) return color_subdomains(neighbors, everywhere, colors);
  boundary_set closed;
  if (count_of(walls) >= none || !closed.reset(count_of(walls))) return out_of_memory;
  insert_walls<Columns>(walls, connectivity, closed);
  const auto is_open = [&](unsigned k, unsigned e) {
    const unsigned* nodes = connectivity.column(e);
    const shape& s = Columns::of(nodes);
    return k >= s.boundaries || !closed.contains(boundary_of<Columns>(s, nodes, k));
  };
  return color_subdomains(neighbors, is_open, colors);
}

bool are_walls(const dense1D<unsigned>& walls, element_type type, std::uint64_t elements) {
  const std::uint64_t slots = elements * nbr_boundaries(type);
  return std::all_of(walls.begin(), walls.end(), [slots](unsigned slot) { return slot == none || slot < slots; });
}

bool are_walls(const dense2D<unsigned>& walls, element_type type, std::uint64_t) noexcept {
  return walls.empty() || walls.rows() == nbr_boundary_nodes(type);
}

template <class Walls>
int find_subdomains(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors, element_type type,
                    const Walls& walls, dense1D<unsigned>& colors) {
  if (connectivity.empty()) return 0;
  type = resolve_type(type, connectivity.rows());
  if (const int result = check_neighbors(connectivity, neighbors, type); result != 0) return result;
  if (!are_walls(walls, type, connectivity.cols())) return -4;
  if (!slot_codes_fit(connectivity.cols(), nbr_boundaries(type))) return out_of_memory;
  return visit_shape(type, -3, [&](auto columns) {
    return color_between_walls<decltype(columns)>(connectivity, neighbors, walls, colors);
  });
}

}  // namespace

int get_subdomains(const dense2D<unsigned>& neighbors, dense1D<unsigned>& colors) {
  colors.clear();
  if (neighbors.empty()) return 0;
  if (!holds_elements(neighbors)) return -1;
  return color_subdomains(neighbors, everywhere, colors);
}

int get_subdomains(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors, element_type type,
                   const dense1D<unsigned>& walls, dense1D<unsigned>& colors) {
  output<dense1D<unsigned>> out(colors, walls);
  dense1D<unsigned>& found = out;
  found.clear();
  return find_subdomains(connectivity, neighbors, type, walls, found);
}

int get_subdomains(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors, element_type type,
                   const dense2D<unsigned>& walls, dense1D<unsigned>& colors) {
  colors.clear();
  return find_subdomains(connectivity, neighbors, type, walls, colors);
}

}  // namespace qel::gridwork
