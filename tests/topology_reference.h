/// @file
/// Meshes of every shape, and their neighbours, boundaries, node lists and edges, transcribed from the definitions.
#ifndef QEL_TESTS_TOPOLOGY_REFERENCE_H
#define QEL_TESTS_TOPOLOGY_REFERENCE_H

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <vector>

#include "qel/gridwork.h"
#include "tests/random_meshes.h"
#include "tests/reference.h"

namespace reference {

using random_meshes::below;
using id_lists = std::vector<id_list>;
using part_table = std::map<element_type, id_lists>;

inline const part_table local_boundaries = {
    {ELT_EDGE2, {{1}, {0}}},
    {ELT_TRIA3, {{1, 2}, {2, 0}, {0, 1}}},
    {ELT_QUAD4, {{0, 1}, {1, 2}, {2, 3}, {3, 0}}},
    {ELT_TETRA4, {{1, 2, 3}, {2, 0, 3}, {1, 3, 0}, {2, 1, 0}}},
    {ELT_PYRAMID5, {{0, 4, 1}, {1, 4, 2}, {2, 4, 3}, {3, 4, 0}, {0, 1, 2, 3}}},
    {ELT_WEDGE6, {{0, 1, 2}, {3, 5, 4}, {2, 1, 4, 5}, {0, 2, 5, 3}, {1, 0, 3, 4}}},
    {ELT_HEXA8, {{0, 3, 7, 4}, {1, 5, 6, 2}, {0, 4, 5, 1}, {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 7, 6, 5}}}};

inline const part_table local_edges = {
    {ELT_EDGE2, {{0, 1}}},
    {ELT_TRIA3, {{1, 2}, {2, 0}, {0, 1}}},
    {ELT_QUAD4, {{0, 1}, {1, 2}, {2, 3}, {3, 0}}},
    {ELT_TETRA4, {{1, 2}, {2, 0}, {0, 1}, {0, 3}, {1, 3}, {2, 3}}},
    {ELT_PYRAMID5, {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}}},
    {ELT_WEDGE6, {{0, 1}, {1, 2}, {2, 0}, {3, 4}, {4, 5}, {5, 3}, {0, 3}, {1, 4}, {2, 5}}},
    {ELT_HEXA8, {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}, {5, 6}, {6, 7}, {7, 4}, {0, 4}, {1, 5}, {2, 6}, {3, 7}}}};

inline const std::map<element_type, element_type> linear_type = {
    {ELT_EDGE3, ELT_EDGE2},    {ELT_TRIA6, ELT_TRIA3},        {ELT_QUAD8, ELT_QUAD4},    {ELT_QUAD9, ELT_QUAD4},
    {ELT_TETRA10, ELT_TETRA4}, {ELT_PYRAMID14, ELT_PYRAMID5}, {ELT_WEDGE18, ELT_WEDGE6}, {ELT_HEXA27, ELT_HEXA8}};

// Nodes of a boundary, for each type.
constexpr unsigned boundary_rows[] = {0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 3, 6, 4, 8, 9, 4, 8, 9, 4, 8, 9};

inline element_type shape_of(const id_list& c, element_type type) {
  if (type == ELT_FACE_MIX) return c[3] == none ? ELT_TRIA3 : ELT_QUAD4;
  if (type != ELT_SOLID_MIX) return type;
  if (c[3] != none && c[4] == none) return ELT_TETRA4;
  if (c[4] != none && c[5] == none) return ELT_PYRAMID5;
  if (c[5] != none && c[6] == none) return ELT_WEDGE6;
  return ELT_HEXA8;
}

/// Nodes of the parts of an element, which a table of local nodes names for its shape.
inline id_lists parts(const id_list& element, element_type type, const part_table& table) {
  id_lists all;
  const auto entry = table.find(shape_of(element, type));
  if (entry == table.end()) return all;
  for (const id_list& local : entry->second) {
    all.emplace_back();
    for (unsigned i : local) all.back().push_back(element[i]);
  }
  return all;
}

inline dense2D<unsigned> to_matrix(const id_lists& lists, unsigned rows) {
  dense2D<unsigned> m(rows, lists.size());
  for (std::size_t j = 0; j < lists.size(); ++j) std::copy(lists[j].begin(), lists[j].end(), m.column(j));
  return m;
}

// Elements of a cell with corners 0 to 7, numbered as a hexahedron, and centre 8.
inline const part_table in_a_cell = {
    {ELT_EDGE2, {{0, 1}, {3, 0}, {0, 4}}},
    {ELT_TRIA3, {{0, 1, 2}, {0, 2, 3}}},
    {ELT_QUAD4, {{0, 1, 2, 3}}},
    {ELT_TETRA4, {{0, 1, 2, 6}, {0, 2, 3, 6}, {0, 3, 7, 6}, {0, 7, 4, 6}, {0, 4, 5, 6}, {0, 5, 1, 6}}},
    {ELT_PYRAMID5,
     {{0, 1, 2, 3, 8}, {4, 5, 6, 7, 8}, {0, 1, 5, 4, 8}, {1, 2, 6, 5, 8}, {3, 2, 6, 7, 8}, {0, 3, 7, 4, 8}}},
    {ELT_WEDGE6, {{0, 1, 2, 4, 5, 6}, {0, 2, 3, 4, 6, 7}}},
    {ELT_HEXA8, {{0, 1, 2, 3, 4, 5, 6, 7}}}};

inline std::vector<element_type> members(element_type type) {
  if (type == ELT_FACE_MIX) return {ELT_TRIA3, ELT_QUAD4};
  if (type == ELT_SOLID_MIX) return {ELT_TETRA4, ELT_PYRAMID5, ELT_WEDGE6, ELT_HEXA8};
  return {type};
}

/// A lattice of cells, one layer for faces, each split into elements of a random member of the type.
inline dense2D<unsigned> grid(element_type type, unsigned cells, random_meshes::generator& random) {
  const unsigned n = cells + 1, corner_steps[] = {0, 1, n + 1, n};
  const std::vector<element_type> choice = members(type);
  id_lists elements;
  for (unsigned c = 0; c < cells * cells * (element_dim(type) == 3 ? cells : 1); ++c) {
    id_list nodes;
    for (const unsigned z : {c / cells / cells, c / cells / cells + 1}) {
      for (unsigned step : corner_steps) nodes.push_back((z * n + c / cells % cells) * n + c % cells + step);
    }
    nodes.push_back(n * n * n + c);
    for (const id_list& local : in_a_cell.at(choice[below(random, choice.size())])) {
      elements.emplace_back(nbr_nodes(type), none);
      for (std::size_t i = 0; i < local.size(); ++i) elements.back()[i] = nodes[local[i]];
    }
  }
  std::shuffle(elements.begin(), elements.end(), random);
  return to_matrix(elements, nbr_nodes(type));
}

/// 1 for boundaries that are the same, -1 for the opposite direction, 0 for others.
inline int compare(id_list f, id_list g) {
  if (f.size() != g.size()) return 0;
  if (f.size() > 2) {
    for (id_list* list : {&f, &g})
      std::rotate(list->begin(), std::min_element(list->begin(), list->end()), list->end());
  }
  if (f == g) return 1;
  std::reverse(g.begin() + (g.size() > 2 ? 1 : 0), g.end());
  return f == g ? -1 : 0;
}

/// A column of boundary nodes without its padding.
inline id_list without_padding(id_list boundary) {
  if (boundary.size() == 4 && boundary[3] == none) boundary.pop_back();
  return boundary;
}

/// Boundaries between colours: code, nodes, and colours on both sides.
struct color_boundary {
  unsigned slot;
  id_list nodes, colors;
};

/// A mesh with what the definitions make of it.
struct mesh_model {
  mesh_model(const dense2D<unsigned>& m, element_type given)
      : connectivity(m), type(resolve(given, m.rows())), B(nbr_boundaries(type)), elements(columns(m)) {
    for (const id_list& element : elements) boundaries.push_back(parts(element, type, local_boundaries));
  }

  id_lists neighbors(bool pair_non_manifold) const {
    struct slot {
      unsigned e, k;
      bool present;
    };
    id_lists result(elements.size(), id_list(B, none));
    std::map<std::set<unsigned>, std::vector<slot>> groups;
    for (unsigned e = 0; e < elements.size(); ++e) {
      for (unsigned k = 0; k < boundaries[e].size(); ++k) {
        groups[{boundaries[e][k].begin(), boundaries[e][k].end()}].push_back({e, k, true});
      }
    }
    for (auto& [nodes, group] : groups) {
      for (auto f = group.begin(); f != group.end(); ++f) {
        if (!f->present) continue;
        std::vector<slot> matches;
        for (auto g = f + 1; g != group.end(); ++g) {
          if (!g->present || compare(boundaries[f->e][f->k], boundaries[g->e][g->k]) == 0) continue;
          matches.push_back(*g);
          g->present = false;
        }
        if (!pair_non_manifold && matches.size() > 1) continue;
        for (const slot& g : matches) {
          result[f->e][f->k] = g.e;
          result[g.e][g.k] = f->e;
        }
      }
    }
    return result;
  }

  /// Boundaries, padded, of which only the free ones if neighbours are given.
  id_lists list_boundaries(const id_lists* neighbors) const {
    id_lists result;
    for (unsigned e = 0; e < elements.size(); ++e) {
      for (unsigned k = 0; k < boundaries[e].size(); ++k) {
        if (neighbors != nullptr && (*neighbors)[e][k] != none) continue;
        result.push_back(boundaries[e][k]);
        result.back().resize(boundary_rows[type], none);
      }
    }
    return result;
  }

  id_list free_slots(const id_lists& neighbors) const {
    id_list result;
    for (unsigned slot = 0; slot < neighbors.size() * B; ++slot) {
      if (neighbors[slot / B][slot % B] == none) result.push_back(slot);
    }
    return result;
  }

  id_list ancestors(id_list result) const {
    for (unsigned e = 0; e < elements.size(); ++e) {
      for (unsigned n : elements[e]) {
        if (n < result.size()) result[n] = e;
      }
    }
    return result;
  }

  bool holds(unsigned e, unsigned node) const { return std::count(elements[e].begin(), elements[e].end(), node) != 0; }

  id_list around(unsigned node, unsigned ancestor, const id_lists& neighbors) const {
    id_list found;
    if (ancestor != none && holds(ancestor, node)) found.push_back(ancestor);
    for (std::size_t i = 0; i < found.size(); ++i) {
      const unsigned e = found[i];
      for (unsigned k = 0; k < boundaries[e].size(); ++k) {
        const unsigned next = neighbors[e][k];
        if (std::count(boundaries[e][k].begin(), boundaries[e][k].end(), node) == 0 || next == none) continue;
        if (holds(next, node) && std::count(found.begin(), found.end(), next) == 0) found.push_back(next);
      }
    }
    return found;
  }

  unsigned slot_of(id_list boundary, const id_lists& neighbors, const id_list& ancestors) const {
    boundary = without_padding(boundary);
    const unsigned a = boundary[0];
    unsigned reversed = none;
    for (unsigned e : around(a, a < ancestors.size() ? ancestors[a] : none, neighbors)) {
      for (unsigned k = 0; k < boundaries[e].size(); ++k) {
        const int direction = compare(boundary, boundaries[e][k]);
        if (direction == 1) return e * B + k;
        if (direction == -1) reversed = e * B + k;
      }
    }
    return reversed;
  }

  /// Colours by repeated passes, in which linked elements take the lower of their two; then numbered as they come.
  id_list subdomains(const id_lists& neighbors, const id_lists& walls) const {
    id_list colors(neighbors.size());
    std::iota(colors.begin(), colors.end(), 0U);
    for (bool changed = true; changed;) {
      changed = false;
      for (unsigned slot = 0; slot < neighbors.size() * B; ++slot) {
        const unsigned e = slot / B, k = slot % B, across = neighbors[e][k];
        const auto coincides = [&](const id_list& wall) { return compare(wall, boundaries[e][k]) != 0; };
        const bool closed = k < boundaries[e].size() && std::any_of(walls.begin(), walls.end(), coincides);
        if (across == none || closed || colors[e] == colors[across]) continue;
        colors[e] = colors[across] = std::min(colors[e], colors[across]);
        changed = true;
      }
    }
    std::map<unsigned, unsigned> names;
    for (unsigned& color : colors) color = names.try_emplace(color, names.size()).first->second;
    return colors;
  }

  bool is_returned(unsigned e, unsigned k, const id_lists& neighbors) const {
    const unsigned across = neighbors[e][k];
    for (unsigned j = 0; j < boundaries[across].size(); ++j) {
      if (neighbors[across][j] == e && compare(boundaries[e][k], boundaries[across][j]) != 0) return true;
    }
    return false;
  }

  std::vector<color_boundary> color_boundaries(const id_lists& neighbors, const id_list& colors, unsigned mode) const {
    std::vector<color_boundary> result;
    for (unsigned e = 0; e < elements.size(); ++e) {
      for (unsigned k = 0; k < boundaries[e].size(); ++k) {
        const unsigned n = neighbors[e][k], across = n == none ? none : colors[n];
        if (colors[e] == none || colors[e] == across) continue;
        const bool outer = across == none, lower = !outer && colors[e] < across;
        if (outer ? mode == 0 : mode < 2 && !lower && is_returned(e, k, neighbors)) continue;
        result.push_back({e * B + k, boundaries[e][k], {colors[e], across}});
        result.back().nodes.resize(boundary_rows[type], none);
      }
    }
    return result;
  }

  id_lists node_lists(std::uint64_t n) const {
    id_lists lists(n);
    for (unsigned e = 0; e < elements.size(); ++e) {
      for (unsigned node : elements[e]) {
        if (node != none) lists[node].push_back(e);
      }
    }
    return lists;
  }

  id_lists graph(std::uint64_t n) const {
    id_lists lists = node_lists(n);
    for (unsigned node = 0; node < n; ++node) {
      id_list others;
      for (unsigned e : lists[node]) others.insert(others.end(), elements[e].begin(), elements[e].end());
      lists[node] = unique(others, {node});
    }
    return lists;
  }

  std::set<id_list> edges() const {
    std::set<id_list> all;
    const auto linear = linear_type.find(type);
    for (const id_list& element : elements) {
      for (const id_list& p : parts(element, linear != linear_type.end() ? linear->second : type, local_edges)) {
        all.insert({std::min(p[0], p[1]), std::max(p[0], p[1])});
      }
    }
    return all;
  }

  dense2D<unsigned> connectivity;
  element_type type;
  unsigned B;
  id_lists elements;
  std::vector<id_lists> boundaries;  // of each element
};

/// Positions of slots, stably sorted by their colours; those that are `none` come last.
inline id_list order_of(const id_list& slots, unsigned B, const id_lists& neighbors, const id_list& colors) {
  const auto key = [&](unsigned i) -> id_list {
    if (slots[i] == none) return {1};
    const unsigned across = neighbors[slots[i] / B][slots[i] % B];
    return {0, colors[slots[i] / B], across == none ? none : colors[across]};
  };
  id_list order(slots.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](unsigned a, unsigned b) { return key(a) < key(b); });
  return order;
}

}  // namespace reference

#endif
