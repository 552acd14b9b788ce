// Free boundaries of a part.
#include "adjacency/global_boundary.h"
#include "core/elements.h"
#include "core/linear_shapes.h"
#include "parts/checks.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::out_of_memory;

namespace {

/// Calls visit(element, boundary, nodes) for each boundary without a neighbour.
template <class Columns, class Visit>
void visit_free(const mesh_part& part, const dense2D<std::uint64_t>& neighbors, Visit visit) {
  for (std::uint64_t e = 0; e < part.connectivity.cols(); ++e) {
    const unsigned* nodes = part.connectivity.column(e);
    const detail::shape& s = Columns::of(nodes);
    for (unsigned k = 0; k < s.boundaries; ++k) {
      if (neighbors(k, e) == no_ID) visit(e, k, detail::boundary_of<Columns>(s, nodes, k));
    }
  }
}

template <class Columns>
int list_free(const mesh_part& part, const dense2D<std::uint64_t>& neighbors, dense2D<std::uint64_t>& boundaries,
              dense1D<std::uint64_t>& slots) {
  constexpr std::uint64_t rows = Columns::largest.boundary_nodes;
  std::uint64_t count = 0;
  visit_free<Columns>(part, neighbors, [&count](std::uint64_t, unsigned, const auto&) { ++count; });
  if (!boundaries.resize(rows, count) || !slots.resize(count)) return out_of_memory;
  std::uint64_t j = 0;
  visit_free<Columns>(part, neighbors, [&](std::uint64_t e, unsigned k, const detail::boundary_nodes& boundary) {
    for (std::uint64_t i = 0; i < rows; ++i) {
      boundaries(i, j) = i < boundary.size ? part.node_IDs[boundary.nodes[i]] : no_ID;
    }
    slots[j++] = part.element_IDs[e] * Columns::largest.boundaries + k;
  });
  return 0;
}

int find_boundaries(const mesh_part& part, element_type type, const dense2D<std::uint64_t>& neighbors,
                    dense2D<std::uint64_t>& boundaries, dense1D<std::uint64_t>& slots) {
  if (check_part(part) != 0) return -1;
  if (part.connectivity.empty()) return 0;
  if (check_type(part, type) == -1) return -1;
  if (!fits(neighbors, part, type)) return -2;
  return detail::visit_shape(detail::resolve_type(type, part.connectivity.rows()), -3, [&](auto columns) {
    return list_free<decltype(columns)>(part, neighbors, boundaries, slots);
  });
}

}  // namespace

int get_mesh_boundaries(const mesh_part& part, element_type type, const dense2D<std::uint64_t>& neighbors,
                        dense2D<std::uint64_t>& boundaries, dense1D<std::uint64_t>& slots) {
  boundaries.clear();
  slots.clear();
  const int code = find_boundaries(part, type, neighbors, boundaries, slots);
  if (code < 0) boundaries.clear(), slots.clear();
  return code;
}

}  // namespace qel::gridwork::mpi
