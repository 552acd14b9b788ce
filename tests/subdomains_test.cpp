// Sub-domains, boundaries between colours and groups of slots: codes, constructed cases, and what holds for all of them.
#include <gtest/gtest.h>

#include <set>

#include "tests/facts.h"
#include "tests/topology_reference.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;
using ids = dense1D<unsigned>;
using matrix = dense2D<unsigned>;

matrix neighbors_of(const matrix& m, element_type type, bool pair_non_manifold = true) {
  matrix neighbors;
  EXPECT_EQ(get_neighbors(m, type, pair_non_manifold, neighbors), 0);
  return neighbors;
}

/// Slots of boundaries between colours, with the colours; `code` is the result.
struct between {
  between(const matrix& m, const matrix& neighbors, element_type type, const ids& colors, unsigned mode)
      : code(get_colors_boundaries(m, neighbors, type, colors, mode, slots, pairs)) {}

  ids slots;
  matrix pairs;
  int code;
};

/// A lattice of hexahedra with the colour color_of(x, y, z) for each.
template <class Color>
ids colored_cells(unsigned cells, Color color_of, matrix& m) {
  const unsigned n = cells + 1;
  m = matrix(8, cells * cells * cells);
  ids colors(m.cols());
  for (unsigned c = 0; c < m.cols(); ++c) {
    const unsigned x = c % cells, y = c / cells % cells, z = c / cells / cells, a = (z * n + y) * n + x;
    const unsigned bottom[4] = {a, a + 1, a + 1 + n, a + n};
    for (unsigned i = 0; i < 8; ++i) m(i, c) = bottom[i % 4] + i / 4 * n * n;
    colors[c] = color_of(x, y, z);
  }
  return colors;
}

TEST(subdomains, result_codes_in_their_order) {
  const matrix m(3, 2, {0, 1, 2, 2, 1, 3}), neighbors = neighbors_of(m, ELT_TRIA3), high(4, 2, 0U), strange(3, 2, 2U),
                                            quadratic(6, 2, 0U), three(3, 1, 0U), two(2, 1, 0U);
  const struct {
    matrix mesh, neighbors;
    element_type type;
    ids slots;
    matrix walls;
    int by_slots, by_nodes;
  } calls[] = {
      {high, strange, ELT_TRIA3, {6}, three, -1, -1},        {m, high, ELT_TRIA3, {6}, three, -2, -2},
      {m, strange, ELT_TRIA3, {6}, three, -2, -2},           {quadratic, strange, ELT_TRIA6, {6}, three, -2, -2},
      {quadratic, neighbors, ELT_TRIA6, {6}, three, -3, -3}, {m, neighbors, ELT_TRIA3, {0, none, 6}, three, -4, -4},
      {m, neighbors, ELT_TRIA3, {5, none}, two, 2, 1},       {m, neighbors, ELT_FACE_MIX, {0}, matrix(), 2, 1},
      {m, neighbors, ELT_TRIA3, {}, matrix(3, 0), 1, 1}};
  for (const auto& c : calls) {
    SCOPED_TRACE(&c - calls);
    ids colors{7}, others{7};
    EXPECT_EQ(get_subdomains(c.mesh, c.neighbors, c.type, c.slots, colors), c.by_slots);
    EXPECT_EQ(get_subdomains(c.mesh, c.neighbors, c.type, c.walls, others), c.by_nodes);
    EXPECT_EQ(colors.size(), c.by_slots < 0 ? 0 : 2);
    EXPECT_EQ(others.size(), c.by_nodes < 0 ? 0 : 2);
  }
  ids colors{7};
  EXPECT_EQ(get_subdomains(strange, colors), -1);
  EXPECT_TRUE(colors.empty());
  EXPECT_EQ(get_subdomains(neighbors, colors), 1);
}

TEST(colors_boundaries, result_codes_in_their_order) {
  const matrix m(3, 2, {0, 1, 2, 2, 1, 3}), neighbors = neighbors_of(m, ELT_TRIA3), high(4, 2, 0U), strange(3, 2, 2U),
                                            quadratic(6, 2, 0U);
  const struct {
    matrix mesh, neighbors;
    element_type type;
    ids colors;
    unsigned mode;
    std::uint64_t rows, pair_rows;
    int by_slots, by_nodes;
  } calls[] = {
      {high, strange, ELT_TRIA3, {1}, 3, 3, 3, -1, -1},   {m, strange, ELT_TRIA6, {1}, 3, 3, 3, -1, -1},
      {m, strange, ELT_TRIA3, {1}, 3, 3, 3, -2, -2},      {quadratic, neighbors, ELT_TRIA6, {1}, 3, 3, 3, -3, -3},
      {m, neighbors, ELT_TRIA3, {1}, 3, 3, 3, -4, -4},    {m, neighbors, ELT_TRIA3, {1, 2}, 3, 3, 3, -5, -5},
      {m, neighbors, ELT_TRIA3, {1, 2}, 2, 3, 3, -7, -6}, {m, neighbors, ELT_TRIA3, {1, 2}, 2, 2, 3, -7, -7},
      {m, neighbors, ELT_TRIA3, {1, 2}, 2, 2, 2, 0, 0},   {m, neighbors, ELT_TRIA3, {1, 1}, 0, 3, 2, 0, -6}};
  for (const auto& c : calls) {
    SCOPED_TRACE(&c - calls);
    ids slots{9};
    matrix boundaries(c.rows, 1, 6U), pairs(c.pair_rows, 1, 5U), more(c.pair_rows, 1, 5U);
    EXPECT_EQ(get_colors_boundaries(c.mesh, c.neighbors, c.type, c.colors, c.mode, slots, pairs), c.by_slots);
    EXPECT_EQ(get_colors_boundaries(c.mesh, c.neighbors, c.type, c.colors, c.mode, boundaries, more), c.by_nodes);
    EXPECT_EQ(slots.size(), c.by_slots == 0 && c.mode == 2 ? 7 : 1);
    EXPECT_EQ(pairs.cols(), slots.size());
    EXPECT_EQ(boundaries.cols(), c.by_nodes == 0 ? 7 : 1);
    EXPECT_EQ(more.cols(), boundaries.cols());
  }
}

TEST(elfes, result_codes_in_their_order) {
  const matrix neighbors(3, 2, {none, 1, 2, 0, none, 7});
  const struct {
    ids colors, slots;
    int code;
  } calls[] = {{{1}, {6}, -2},     {{1, 2, 3}, {}, -2}, {{1, 2}, {2, 6}, -3}, {{1, 2}, {0, none, 2}, -1},
               {{1, 2}, {5}, -1},  {{1, 2}, {}, 0},     {{1, 2}, {none}, 0},  {{1, 2}, {0, 4, 1}, 3},
               {{none, 2}, {0}, 1}};
  for (const auto& c : calls) {
    SCOPED_TRACE(&c - calls);
    ids slots(c.slots), order{7, 7}, offsets{7, 7, 7};
    matrix pairs(1, 1, 7U);
    EXPECT_EQ(sort_elfes(neighbors, c.colors, slots, order, pairs, offsets), c.code);
    EXPECT_EQ(order.size(), c.code < 0 ? 2U : c.slots.size());
    EXPECT_EQ(offsets.size(), c.code < 0 ? 3U : unsigned(c.code) + 1);
    EXPECT_TRUE(c.code < 0 ? pairs == matrix(1, 1, 7U) : pairs.rows() == 2 && pairs.cols() == unsigned(c.code));
  }
}

TEST(subdomains, empty_meshes) {
  for (const auto& m : {matrix(), matrix(3, 0), matrix(0, 3)}) {
    ids colors{7}, slots{9};
    matrix pairs(5, 1, 5U), boundaries(7, 1, 7U);
    EXPECT_EQ(get_subdomains(m, colors), 0);
    EXPECT_TRUE(colors.empty());
    EXPECT_EQ(get_subdomains(m, boundaries, ELT_TRIA6, ids{5}, colors = ids{7}), 0);
    EXPECT_TRUE(colors.empty());
    EXPECT_EQ(get_subdomains(m, boundaries, ELT_TRIA6, boundaries, colors = ids{7}), 0);
    EXPECT_TRUE(colors.empty());
    EXPECT_EQ(get_colors_boundaries(m, boundaries, ELT_TRIA6, colors, 9, slots, pairs), 0);
    EXPECT_EQ(get_colors_boundaries(m, boundaries, ELT_TRIA6, colors, 9, boundaries, pairs), 0);
    EXPECT_ALL(slots.size() == 1, pairs.size() == 5, boundaries.size() == 7);
  }
}

// Three triangles on an edge: nobody is linked there, or the first with the last, and the others one way to the first.
TEST(subdomains, boundaries_of_three_elements) {
  const matrix m(3, 3, {0, 1, 2, 1, 0, 3, 0, 1, 4});
  ids colors;
  EXPECT_EQ(get_subdomains(neighbors_of(m, ELT_TRIA3, false), colors), 3);
  const matrix paired = neighbors_of(m, ELT_TRIA3);
  EXPECT_EQ(get_subdomains(paired, colors), 1);
  EXPECT_EQ(get_subdomains(m, paired, ELT_TRIA3, ids{5}, colors), 3);
  for (const auto& [given, listed] : {std::pair<ids, ids>{{1, 2, 3}, {2, 5}}, {{3, 2, 1}, {5, 8}}, {{1, 2, 1}, {5}}}) {
    EXPECT_TRUE(between(m, paired, ELT_TRIA3, given, 0).slots == listed);
  }
}

TEST(subdomains, paddings_and_missing_boundaries_of_mixed_elements) {
  const matrix faces(4, 3, {0, 1, 2, 3, 1, 4, 2, none, 5, 4, 1, none}), across = neighbors_of(faces, ELT_FACE_MIX);
  ids colors;
  EXPECT_EQ(get_subdomains(faces, across, ELT_FACE_MIX, ids{7, 11, none}, colors), 1);  // rows that triangles lack
  EXPECT_EQ(get_subdomains(faces, across, ELT_FACE_MIX, ids{1, 6}, colors), 3);
  EXPECT_EQ(get_subdomains(faces, across, ELT_FACE_MIX, matrix(2, 2, {2, 1, 2, none}), colors), 2);
  EXPECT_TRUE(between(faces, across, ELT_FACE_MIX, ids{none, 5, 6}, 2).slots == (ids{4, 5, 6, 8, 9, 10}));
  // a wedge between two pyramids, and a tetrahedron upon one of these
  const matrix solids(8, 4, {0, 1, 2, 3, 4, 5,    none, none, 2, 1, 4, 5, 6,    none, none, none,
                             0, 2, 5, 3, 7, none, none, none, 2, 1, 6, 8, none, none, none, none});
  const matrix linked = neighbors_of(solids, ELT_SOLID_MIX);
  EXPECT_EQ(get_subdomains(linked, colors), 1);
  const matrix walls(4, 3, {5, 4, 1, 2, 6, 2, 1, none, 0, 2, 3, 5});  // the last one is no boundary: another order
  EXPECT_EQ(get_subdomains(solids, linked, ELT_SOLID_MIX, walls, colors), 3);
  EXPECT_TRUE(colors == (ids{0, 1, 0, 2}));
}

TEST(subdomains, walls_do_not_depend_on_who_names_them) {
  generator random(3);
  for (const element_type type : {ELT_TRIA3, ELT_FACE_MIX, ELT_TETRA4, ELT_SOLID_MIX, ELT_HEXA8}) {
    const matrix m = grid(type, 4, random), neighbors = neighbors_of(m, type);
    const unsigned B = nbr_boundaries(type);
    const mesh_model model(m, type);
    const id_lists across = columns(neighbors);
    ids here, there, by_here, by_there, by_nodes;
    id_lists turned;
    for (unsigned e = 0; e < m.cols(); ++e) {
      for (unsigned k = 0; k < model.boundaries[e].size(); ++k) {
        const unsigned n = across[e][k];
        if (n == none || n < e || below(random, 3) != 0) continue;
        const auto back = std::find(across[n].begin(), across[n].end(), e) - across[n].begin();
        ASSERT_ALL(here.push_back(e * B + k), there.push_back(n * B + unsigned(back)));
        id_list nodes = model.boundaries[e][k];
        std::rotate(nodes.begin(), nodes.begin() + 1, nodes.end());
        std::reverse(nodes.begin(), nodes.end());
        nodes.resize(boundary_rows[type], none);
        turned.push_back(nodes);
      }
    }
    const int count = get_subdomains(m, neighbors, type, here, by_here);
    EXPECT_GT(count, 1);
    EXPECT_EQ(get_subdomains(m, neighbors, type, there, by_there), count);
    EXPECT_EQ(get_subdomains(m, neighbors, type, to_matrix(turned, boundary_rows[type]), by_nodes), count);
    EXPECT_ALL(by_here == by_there, by_here == by_nodes);
  }
}

TEST(subdomains, orders_of_elements_change_no_part_and_no_interface) {
  generator random(5);
  matrix m = grid(ELT_TETRA4, 5, random), walls;
  const auto parts_and_interfaces = [](const matrix& mesh, const matrix& walls_of_mesh) {
    const matrix neighbors = neighbors_of(mesh, ELT_TETRA4);
    ids colors, by_node(mesh.cols());
    EXPECT_GT(get_subdomains(mesh, neighbors, ELT_TETRA4, walls_of_mesh, colors), 1);
    const id_lists elements = columns(mesh);
    std::map<unsigned, std::set<id_list>> parts;
    for (unsigned e = 0; e < mesh.cols(); ++e) {
      parts[colors[e]].insert(elements[e]);
      by_node[e] = mesh(0, e) % 4;
    }
    std::set<std::set<id_list>> all;
    for (const auto& part : parts) all.insert(part.second);
    matrix boundaries, pairs;
    EXPECT_EQ(get_colors_boundaries(mesh, neighbors, ELT_TETRA4, by_node, 1, boundaries, pairs), 0);
    const id_lists nodes = columns(boundaries), colors_of_nodes = columns(pairs);
    std::multiset<std::pair<id_list, id_list>> interfaces;
    for (unsigned j = 0; j < pairs.cols(); ++j) interfaces.emplace(nodes[j], colors_of_nodes[j]);
    return std::pair{all, interfaces};
  };
  ASSERT_EQ(get_element_boundaries(m.sub_matrix(0, 0, 4, m.cols() / 3), ELT_TETRA4, walls), 0);
  id_lists shuffled = columns(m);
  std::shuffle(shuffled.begin(), shuffled.end(), random);
  EXPECT_TRUE(parts_and_interfaces(m, walls) == parts_and_interfaces(to_matrix(shuffled, 4), walls));
}

// A chain of 200 000 elements grows from its end, and then as many ask for its lowest one.
TEST(subdomains, long_ways_to_the_lowest_element) {
  constexpr unsigned n = 200000;
  matrix neighbors(2, 3 * n, none);
  for (unsigned e = n; e < 2 * n; ++e) {
    neighbors(0, e) = 2 * n - 1 - e;
    neighbors(1, e) = e + 1 < 2 * n ? 2 * n - 2 - e : none;
  }
  for (unsigned e = 2 * n; e < 3 * n; ++e) neighbors(0, e) = n - 1;
  ids colors;
  EXPECT_EQ(get_subdomains(neighbors, colors), 1);
}

// Two cubes inside a body: their interfaces with it are one group of slots, and two patches of the boundary mesh.
TEST(elfes, groups_and_then_connected_patches) {
  matrix m, boundaries, pairs, group_pairs, of_groups;
  const auto is_cube = [](unsigned x, unsigned y, unsigned z) {
    const auto inside = [=](unsigned a) { return std::min({x, y, z}) >= a && std::max({x, y, z}) < a + 2; };
    return inside(1) || inside(4) ? 1U : 0U;
  };
  const ids colors = colored_cells(7, is_cube, m);
  const matrix neighbors = neighbors_of(m, ELT_HEXA8);
  ids parts, order, offsets, slots = between(m, neighbors, ELT_HEXA8, colors, 1).slots;
  EXPECT_EQ(get_subdomains(m, neighbors, ELT_HEXA8, slots, parts), 3);
  ASSERT_EQ(sort_elfes(neighbors, colors, slots, order, pairs, offsets), 2);
  EXPECT_TRUE(pairs == matrix(2, 2, {0, 1, 0, none}));
  EXPECT_TRUE(offsets == (ids{0, 2 * 24, 2 * 24 + 6 * 49}));

  ASSERT_EQ(get_colors_boundaries(m, neighbors, ELT_HEXA8, colors, 1, boundaries, group_pairs), 0);
  matrix surface(4, boundaries.cols());
  ids groups(boundaries.cols()), patches;
  for (unsigned i = 0; i < order.size(); ++i) {
    std::copy_n(boundaries.column(order[i]), 4, surface.column(i));
    groups[i] = i < offsets[1] ? 0 : 1;
  }
  const matrix linked = neighbors_of(surface, ELT_QUAD4, false);
  const ids ridges = between(surface, linked, ELT_QUAD4, groups, 0).slots;
  EXPECT_EQ(get_subdomains(surface, linked, ELT_QUAD4, ridges, patches), 3);
  for (unsigned i = 0; i < patches.size(); ++i) EXPECT_EQ(patches[i] == 2, groups[i] == 1);

  const between whole(m, neighbors, ELT_HEXA8, colors, 2);
  EXPECT_EQ(whole.slots.size(), 2 * 2 * 24 + 6 * 49);
  ids both = whole.slots;
  ASSERT_EQ(sort_elfes(neighbors, colors, both, order, pairs, offsets), 3);
  EXPECT_TRUE(pairs == matrix(2, 3, {0, 1, 0, none, 1, 0}));
}

}  // namespace
}  // namespace qel::gridwork
