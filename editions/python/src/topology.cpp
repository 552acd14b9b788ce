#include "arrays.h"
#include "core.h"
#include "failure.h"

namespace core {

namespace {

using gw::element_type;
using gw::operation;

cells get_neighbors(const cells& connectivity, element_type type, bool pair_non_manifold) {
  cells neighbors;
  checked(operation::get_neighbors, gw::get_neighbors(connectivity, type, pair_non_manifold, neighbors));
  return shaped(std::move(neighbors), gw::nbr_boundaries(type));
}

/// Rows of the boundaries of a matrix: nodes of an edge's end, a face's edge, a solid's face.
std::uint64_t boundary_rows(const cells& connectivity, element_type type) {
  if (gw::element_dim(type) < 3) return gw::element_dim(type);
  return connectivity.rows() == 4 ? 3 : 4;
}

cells get_element_boundaries(const cells& connectivity, element_type type) {
  cells boundaries;
  checked(operation::get_element_boundaries, gw::get_element_boundaries(connectivity, type, boundaries));
  return shaped(std::move(boundaries), boundary_rows(connectivity, type));
}

cells get_mesh_boundaries(const cells& connectivity, const cells& neighbors, element_type type) {
  cells boundaries;
  checked(operation::get_mesh_boundaries, gw::get_mesh_boundaries(connectivity, neighbors, type, boundaries));
  return shaped(std::move(boundaries), boundary_rows(connectivity, type));
}

std::pair<indices, unsigned> get_mesh_bounding_elements(const cells& connectivity, const cells& neighbors,
                                                        element_type type) {
  indices slots;
  unsigned nbr_bound = 0;
  checked(operation::get_mesh_bounding_elements,
          gw::get_mesh_bounding_elements(connectivity, neighbors, type, slots, nbr_bound));
  return {std::move(slots), nbr_bound};
}

std::pair<indices, unsigned> get_elements_on_boundaries(const cells& boundaries, const cells& connectivity,
                                                        const cells& neighbors, const indices& ancestors,
                                                        element_type type) {
  indices slots;
  unsigned nbr_bound = 0;
  checked(operation::get_elements_on_boundaries,
          gw::get_elements_on_boundaries(boundaries, connectivity, neighbors, ancestors, type, slots, nbr_bound));
  return {std::move(slots), nbr_bound};
}

std::pair<int, indices> get_subdomains(const cells& neighbors) {
  indices colors;
  const int parts = checked(operation::get_subdomains, gw::get_subdomains(neighbors, colors));
  return {parts, std::move(colors)};
}

/// Walls are slot codes or boundaries.
template <class Walls>
std::pair<int, indices> get_subdomains_walls(const cells& connectivity, const cells& neighbors, element_type type,
                                             const Walls& walls) {
  indices colors;
  const int parts =
      checked(operation::get_subdomains_walls, gw::get_subdomains(connectivity, neighbors, type, walls, colors));
  return {parts, std::move(colors)};
}

std::pair<indices, cells> get_colors_slots(const cells& connectivity, const cells& neighbors, element_type type,
                                           const indices& colors, unsigned mode) {
  indices slots;
  cells pairs;
  checked(operation::get_colors_boundaries,
          gw::get_colors_boundaries(connectivity, neighbors, type, colors, mode, slots, pairs));
  return {std::move(slots), shaped(std::move(pairs), 2)};
}

std::pair<cells, cells> get_colors_boundaries(const cells& connectivity, const cells& neighbors, element_type type,
                                              const indices& colors, unsigned mode) {
  cells boundaries;
  cells pairs;
  checked(operation::get_colors_boundaries,
          gw::get_colors_boundaries(connectivity, neighbors, type, colors, mode, boundaries, pairs));
  return {shaped(std::move(boundaries), boundary_rows(connectivity, type)), shaped(std::move(pairs), 2)};
}

std::tuple<indices, indices, cells, indices> sort_elfes(const cells& neighbors, const indices& colors,
                                                        const indices& given) {
  indices slots = copied(given);
  indices order;
  cells pairs;
  indices offsets;
  checked(operation::sort_elfes, gw::sort_elfes(neighbors, colors, slots, order, pairs, offsets));
  return {std::move(slots), std::move(order), shaped(std::move(pairs), 2), std::move(offsets)};
}

indices get_ancestors(const cells& connectivity) {
  indices ancestors;
  checked(operation::get_ancestors, gw::get_ancestors(connectivity, ancestors));
  return ancestors;
}

std::pair<indices, indices> get_connected_elements(const cells& connectivity) {
  std::pair<indices, indices> rows;
  checked(operation::get_connected_elements, gw::get_connected_elements(connectivity, rows.first, rows.second));
  return rows;
}

std::pair<indices, indices> get_node_graph(const cells& connectivity) {
  std::pair<indices, indices> rows;
  checked(operation::get_node_graph, gw::get_node_graph(connectivity, rows.first, rows.second));
  return rows;
}

cells copy_edges(const blocks& all, const std::vector<int>& types) {
  cells edges;
  checked(operation::copy_edges_range, gw::copy_edges(all.data(), all.data() + all.size(), type_list(types), edges));
  return shaped(std::move(edges), 2);
}

}  // namespace

void bind_topology(py::module_& m) {
  def(m, "get_neighbors", get_neighbors);
  def(m, "get_element_boundaries", get_element_boundaries);
  def(m, "get_mesh_boundaries", get_mesh_boundaries);
  def(m, "get_mesh_bounding_elements", get_mesh_bounding_elements);
  def(m, "get_elements_on_boundaries", get_elements_on_boundaries);
  def(m, "get_subdomains", get_subdomains);
  def(m, "get_subdomains", get_subdomains_walls<indices>);
  def(m, "get_subdomains", get_subdomains_walls<cells>);
  def(m, "get_colors_slots", get_colors_slots);
  def(m, "get_colors_boundaries", get_colors_boundaries);
  def(m, "sort_elfes", sort_elfes);
  def(m, "get_ancestors", get_ancestors);
  def(m, "get_connected_elements", get_connected_elements);
  def(m, "get_node_graph", get_node_graph);
  def(m, "copy_edges", copy_edges);
}

}  // namespace core
