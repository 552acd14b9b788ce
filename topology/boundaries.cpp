// Boundaries of elements and of meshes.
#include <algorithm>

#include "core/append_columns.h"
#include "core/elements.h"
#include "core/outputs.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/topology.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// Calls visit(nodes, shape, local boundary) for every boundary of every element for which wanted(k, e) is true.
template <class Columns, class Wanted, class Visit>
void visit_wanted_boundaries(const dense2D<unsigned>& connectivity, Wanted wanted, Visit visit) {
  for (std::uint64_t e = 0; e < connectivity.cols(); ++e) {
    const unsigned* nodes = connectivity.column(e);
    const shape& s = Columns::of(nodes);
    for (unsigned k = 0; k < s.boundaries; ++k) {
      if (wanted(k, e)) visit(nodes, s, k);
    }
  }
}

template <class Columns, class Wanted>
int append_boundaries(const dense2D<unsigned>& connectivity, Wanted wanted, appended<dense2D<unsigned>>&& list) {
  constexpr unsigned rows = Columns::largest.boundary_nodes;
  std::uint64_t count = 0;
  visit_wanted_boundaries<Columns>(connectivity, wanted, [&](const unsigned*, const shape&, unsigned) { ++count; });
  if (count == 0) return 0;
  if (!list.keep_entries() || !append_columns<unsigned>(list, rows, count)) return out_of_memory;
  dense2D<unsigned>& boundaries = list;
  unsigned* out = boundaries.column(boundaries.cols() - count);
  visit_wanted_boundaries<Columns>(connectivity, wanted, [&](const unsigned* nodes, const shape& s, unsigned k) {
    std::copy_n(boundary_of<Columns>(s, nodes, k).nodes, rows, out);
    out += rows;
  });
  return 0;
}

/// How many boundaries of elements no other element has.
std::uint64_t count_free(const dense2D<unsigned>& neighbors) noexcept {
  std::uint64_t count = 0;
  for (std::uint64_t e = 0; e < neighbors.cols(); ++e) {
    count += static_cast<std::uint64_t>(std::count(neighbors.begin_column(e), neighbors.end_column(e), none));
  }
  return count;
}

/// Writes the slot codes of these boundaries.
void write_free_slots(const dense2D<unsigned>& neighbors, unsigned nbr_bound, unsigned* out) noexcept {
  for (std::uint64_t e = 0; e < neighbors.cols(); ++e) {
    for (unsigned k = 0; k < nbr_bound; ++k) {
      if (neighbors(k, e) == none) *out++ = static_cast<unsigned>(e * nbr_bound + k);
    }
  }
}

bool has_other_rows(const dense2D<unsigned>& boundaries, element_type type) noexcept {
  return !boundaries.empty() && boundaries.rows() != nbr_boundary_nodes(type);
}

}  // namespace

int get_element_boundaries(const dense2D<unsigned>& connectivity, element_type type, dense2D<unsigned>& boundaries) {
  if (connectivity.empty()) return 0;
  type = resolve_type(type, connectivity.rows());
  if (!check_IDs(connectivity, type, none)) return -1;
  if (!has_shape(type) || has_other_rows(boundaries, type)) return -2;
  return visit_shape(type, -2, [&](auto columns) {
    const auto every = [](unsigned, std::uint64_t) { return true; };
    return append_boundaries<decltype(columns)>(connectivity, every, appended(boundaries, connectivity));
  });
}

int get_mesh_boundaries(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors, element_type type,
                        dense2D<unsigned>& boundaries) {
  if (connectivity.empty()) return 0;
  type = resolve_type(type, connectivity.rows());
  if (connectivity.rows() != nbr_nodes(type)) return -1;
  const std::uint64_t elements = connectivity.cols();
  if (!fits_elements(neighbors, type, elements) || !check_IDs(neighbors, static_cast<unsigned>(elements))) return -2;
  if (has_other_rows(boundaries, type)) return -4;
  return visit_shape(type, -3, [&](auto columns) {
    const auto is_free = [&](unsigned k, std::uint64_t e) { return neighbors(k, e) == none; };
    return append_boundaries<decltype(columns)>(connectivity, is_free, appended(boundaries, connectivity, neighbors));
  });
}

int get_mesh_bounding_elements(const dense2D<unsigned>& connectivity, const dense2D<unsigned>& neighbors,
                               element_type type, dense1D<unsigned>& slots, unsigned& nbr_bound) {
  nbr_bound = 0;
  if (connectivity.empty()) return 0;
  type = resolve_type(type, connectivity.rows());
  if (!check_IDs(connectivity, type, none)) return -1;
  nbr_bound = nbr_boundaries(type);
  const std::uint64_t elements = connectivity.cols();
  if (!has_shape(type) || !fits_elements(neighbors, type, elements)) return -2;
  if (!slot_codes_fit(elements, nbr_bound)) return out_of_memory;

  const std::uint64_t count = count_free(neighbors);
  appended list(slots, connectivity, neighbors);
  if (!list.keep_entries()) return out_of_memory;
  dense1D<unsigned>& codes = list;
  if (!codes.resize(codes.size() + count)) return out_of_memory;
  write_free_slots(neighbors, nbr_bound, codes.end() - count);
  return 0;
}

}  // namespace qel::gridwork
