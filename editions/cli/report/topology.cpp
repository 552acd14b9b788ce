#include "topology.h"

#include <algorithm>
#include <utility>

namespace report {

namespace {

// The sides without a neighbour, sorted: those of one element, and those of three or more, which come once for each of
// them; and how many slots have a neighbour.
outcome unpaired_sides(const block& elements, qel::dense2D<unsigned>& neighbors, std::vector<side>& sides,
                       std::uint64_t& slots) {
  qel::dense2D<unsigned> boundaries;
  const int result = get_neighbors(elements.connectivity, elements.type, false, neighbors);
  if (result < 0) return {gw::operation::get_neighbors, result};
  const int listed = get_mesh_boundaries(elements.connectivity, neighbors, elements.type, boundaries);
  for (std::uint64_t e = 0; e < neighbors.cols(); ++e) {
    slots +=
        static_cast<std::uint64_t>(neighbors.rows() - static_cast<std::uint64_t>(std::count(
                                                          neighbors.begin_column(e), neighbors.end_column(e), ~0U)));
  }
  sides.assign(boundaries.cols(), side{~0U, ~0U, ~0U, ~0U});
  for (std::uint64_t b = 0; b < boundaries.cols(); ++b) {
    std::copy(boundaries.begin_column(b), boundaries.end_column(b), sides[b].begin());
    std::sort(sides[b].begin(), sides[b].end());
  }
  std::sort(sides.begin(), sides.end());
  return {gw::operation::get_mesh_boundaries, listed};
}

// The vertices of a face; the places that a triangle among quadrangles leaves hold none.
std::uint64_t count_vertices(const block& faces, std::uint64_t e) {
  const unsigned* first = faces.connectivity.begin_column(e);
  return static_cast<std::uint64_t>(std::find(first, faces.connectivity.end_column(e), ~0U) - first);
}

// True when a face goes from node a straight to b.
bool has_edge(const block& faces, std::uint64_t e, unsigned a, unsigned b) {
  const unsigned* nodes = faces.connectivity.column(e);
  const std::uint64_t count = count_vertices(faces, e);
  for (std::uint64_t k = 0; k < count; ++k) {
    if (nodes[k] == a && nodes[(k + 1) % count] == b) return true;
  }
  return false;
}

// Neighbours that look to one side go along their edge in different directions.
void find_turned(const block& faces, const qel::dense2D<unsigned>& neighbors, std::vector<side>& turned) {
  for (std::uint64_t e = 0; e < neighbors.cols(); ++e) {
    const unsigned* nodes = faces.connectivity.column(e);
    const std::uint64_t count = count_vertices(faces, e);
    for (std::uint64_t k = 0; k < count; ++k) {
      const unsigned a = nodes[k], b = nodes[(k + 1) % count];
      const bool is_turned = std::any_of(neighbors.begin_column(e), neighbors.end_column(e), [&](unsigned other) {
        return other != ~0U && other > e && has_edge(faces, other, a, b);
      });
      if (is_turned && a != b) turned.push_back({std::min(a, b), std::max(a, b), ~0U, ~0U});
    }
  }
}

unsigned root_of(std::vector<unsigned>& parent, unsigned node) {
  for (; parent[node] != node; node = parent[node]) parent[node] = parent[parent[node]];
  return node;
}

// Joins the nodes of an element; returns how many pieces became one.
unsigned join(std::vector<unsigned>& parent, const unsigned* nodes, std::uint64_t count) {
  unsigned joined = 0;
  for (std::uint64_t k = 1; k < count; ++k) {
    const unsigned a = root_of(parent, nodes[0]), b = root_of(parent, nodes[k]);
    if (a == b) continue;
    parent[std::max(a, b)] = std::min(a, b);
    ++joined;
  }
  return joined;
}

}  // namespace

outcome measure_topology(const mesh& m, topology& found, bool with_turned) {
  found.dim = mesh_dim(m) >= 2 ? mesh_dim(m) : 0;
  block elements;
  std::uint64_t paired_slots = 0;
  std::vector<side> sides;
  qel::dense2D<unsigned> neighbors;
  if (found.dim == 0) return {};
  if (!linear_elements(m, found.dim, elements)) return outcome::of_memory(false);
  const outcome done = unpaired_sides(elements, neighbors, sides, paired_slots);
  if (done.failed()) return done;
  if (with_turned && found.dim == 2) find_turned(elements, neighbors, found.turned);
  for (auto first = sides.begin(); first != sides.end();) {
    const auto last = std::find_if(first, sides.end(), [&](const side& s) { return s != *first; });
    (last - first == 1 ? found.open : found.non_manifold).push_back(*first);
    first = last;
  }
  found.elements = elements.connectivity.cols();
  found.sides = paired_slots / 2 + found.open.size() + found.non_manifold.size();
  return {};
}

node_use measure_node_use(const mesh& m) {
  std::vector<unsigned> parent(m.coords.cols());
  for (unsigned node = 0; node < parent.size(); ++node) parent[node] = node;
  std::vector<bool> used(parent.size());
  std::uint64_t joined = 0;
  for (const block& b : m.blocks) {
    for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e) {
      const unsigned* nodes = b.connectivity.column(e);
      joined += join(parent, nodes, b.connectivity.rows());
      for (std::uint64_t k = 0; k < b.connectivity.rows(); ++k) used[nodes[k]] = true;
    }
  }
  node_use found;
  found.used = static_cast<std::uint64_t>(std::count(used.begin(), used.end(), true));
  found.pieces = found.used - joined;
  if (found.used != used.size()) {
    found.first_unused = static_cast<std::uint64_t>(std::find(used.begin(), used.end(), false) - used.begin());
  }
  // No parent lies behind its node.
  for (unsigned& first : parent) first = parent[first];
  found.piece = std::move(parent);
  return found;
}

}  // namespace report
