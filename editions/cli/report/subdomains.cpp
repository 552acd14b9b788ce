#include "subdomains.h"

#include <algorithm>

namespace report {

namespace {

// Walls have the rows of the largest side; faces that are no side of an element are no walls.
bool find_walls(const mesh& m, const block& elements, qel::dense2D<unsigned>& walls) {
  const unsigned dim = element_dim(elements.type);
  const unsigned rows = dim == 2 ? 2 : elements.type == gw::ELT_TETRA4 ? 3 : 4;
  for (const block& b : m.blocks) {
    const unsigned vertices = nbr_base_nodes(b.type);
    if (element_dim(b.type) + 1 != dim || vertices > rows) continue;
    for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e) {
      unsigned wall[] = {~0U, ~0U, ~0U, ~0U};
      std::copy_n(b.connectivity.column(e), vertices, wall);
      if (!walls.resize(rows, walls.cols() + 1)) return false;
      std::copy_n(wall, rows, walls.begin_column(walls.cols() - 1));
    }
  }
  return true;
}

outcome find_colors(const mesh& m, const subdomain_options& options, qel::dense1D<unsigned>& colors) {
  block elements;
  qel::dense2D<unsigned> neighbors, walls;
  if (!linear_elements(m, mesh_dim(m), elements) || (options.walls && !find_walls(m, elements, walls)))
    return outcome::of_memory(false);
  const int found = get_neighbors(elements.connectivity, elements.type, !options.sheets, neighbors);
  if (found < 0) return {gw::operation::get_neighbors, found};
  return {gw::operation::get_subdomains_walls,
          get_subdomains(elements.connectivity, neighbors, elements.type, walls, colors)};
}

bool set_references(const qel::dense1D<unsigned>& colors, mesh& m) {
  std::uint64_t at = 0;
  for (block& b : m.blocks) {
    b.references.clear();
    for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e, ++at) {
      if (!b.references.push_back(colors[at] + 1)) return false;
    }
  }
  return true;
}

bool add_element(const block& from, std::uint64_t e, mesh& part) {
  if (part.blocks.empty() || part.blocks.back().type != from.type) part.blocks.push_back({from.type, {}});
  return append_element(from.connectivity.column(e), part.blocks.back());
}

// The place in its part of each node that was met there; parts are looked at one after the other.
struct node_places {
  std::vector<std::size_t> part;
  std::vector<unsigned> place;
};

bool take_nodes(const mesh& m, std::size_t number, node_places& known, mesh& part) {
  for (block& b : part.blocks) {
    for (unsigned& node : b.connectivity.as_vector()) {
      if (known.part[node] != number) {
        known.part[node] = number;
        known.place[node] = static_cast<unsigned>(part.coords.cols());
        if (!part.coords.resize(m.coords.rows(), part.coords.cols() + 1)) return false;
        std::copy_n(m.coords.begin_column(node), m.coords.rows(), part.coords.begin_column(known.place[node]));
      }
      node = known.place[node];
    }
  }
  return true;
}

}  // namespace

outcome color_subdomains(mesh& m, const subdomain_options& options) {
  qel::dense1D<unsigned> colors;
  const unsigned dim = mesh_dim(m);
  const outcome found = find_colors(m, options, colors);
  if (found.failed()) return found;
  std::erase_if(m.blocks, [&](const block& b) { return element_dim(b.type) != dim; });
  return set_references(colors, m) ? found : outcome::of_memory(false);
}

outcome split_by_reference(const mesh& m, std::vector<mesh>& parts) {
  for (const block& b : m.blocks) {
    for (std::uint64_t e = 0; e < b.connectivity.cols(); ++e) {
      parts.resize(std::max<std::size_t>(parts.size(), b.references[e]));
      if (!add_element(b, e, parts[b.references[e] - 1])) return outcome::of_memory(false);
    }
  }
  node_places known{std::vector<std::size_t>(m.coords.cols(), parts.size()), std::vector<unsigned>(m.coords.cols())};
  for (std::size_t k = 0; k < parts.size(); ++k) {
    if (!take_nodes(m, k, known, parts[k])) return outcome::of_memory(false);
  }
  return {};
}

}  // namespace report
