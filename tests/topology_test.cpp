// Neighbours, boundaries, node lists and edges, held against their definitions.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/limits.h"
#include "tests/facts.h"
#include "tests/faults.h"
#include "tests/topology_reference.h"
#include "topology/boundary_ranges.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;
using reference::resolve;

constexpr element_type accepted[] = {ELT_EDGE2,  ELT_FACE_MIX, ELT_TRIA3,  ELT_QUAD4, ELT_SOLID_MIX,
                                     ELT_TETRA4, ELT_PYRAMID5, ELT_WEDGE6, ELT_HEXA8};

struct shape_check {
  element_type given, type;
  dense2D<unsigned> m;
  bool fits, known;
};

/// Codes of the functions that look at neighbours and at a matrix of boundaries, with the right row count or not.
void expect_codes(const shape_check& c, const dense2D<unsigned>& before, const dense2D<unsigned>& neighbors) {
  const unsigned B = nbr_boundaries(c.type);
  const bool sized = neighbors.rows() == B && neighbors.cols() == 2, good = sized && check_IDs(neighbors, 2);
  const bool high = before.rows() == boundary_rows[c.type], none_given = before.empty();
  dense2D<unsigned> out = deep_copy(before);
  const int code = get_mesh_boundaries(c.m, neighbors, c.given, out);
  EXPECT_EQ(code, !c.fits ? -1 : !good ? -2 : !high && !none_given ? -4 : !c.known ? -3 : 0);
  EXPECT_TRUE(code == 0 || out == before);
  dense1D<unsigned> slots{5};
  unsigned bound = 77;
  const int slot_code = get_mesh_bounding_elements(c.m, neighbors, c.given, slots, bound);
  EXPECT_EQ(slot_code, !c.fits ? -1 : !c.known || !sized ? -2 : 0);
  EXPECT_EQ(bound, c.fits ? B : 0);
  EXPECT_TRUE(slot_code == 0 || slots == (dense1D<unsigned>{5}));
  for (const auto& ancestors : {dense1D<unsigned>{none, 1}, dense1D<unsigned>{2}, dense1D<unsigned>()}) {
    const int found = get_elements_on_boundaries(before, c.m, neighbors, ancestors, c.given, slots, bound);
    const int last = !good ? -3 : !check_IDs(ancestors, 2) ? -4 : !c.known ? -5 : 0;
    EXPECT_EQ(found, none_given ? 0 : !high ? -1 : !c.fits ? -2 : last);
    EXPECT_EQ(slots.size(), found == 0 ? before.cols() : 0);
    EXPECT_EQ(bound, found == 0 && !none_given ? B : 0);
  }
}

TEST(topology, result_codes_of_every_type_and_row_count) {
  for (int t = ELT_UNKNOWN; t <= ELT_HEXA27; ++t) {
    for (unsigned rows = 1; rows <= 28; ++rows) {
      SCOPED_TRACE(testing::Message() << "type " << t << ", rows " << rows);
      shape_check c{static_cast<element_type>(t), {}, dense2D<unsigned>(rows, 2, 1U), false, false};
      c.type = resolve(c.given, rows);
      c.fits = rows == nbr_nodes(c.type);
      c.known = std::count(std::begin(accepted), std::end(accepted), c.type) != 0;
      dense2D<unsigned> out(1, 1, 1U);
      EXPECT_EQ(get_neighbors(c.m, c.given, true, out), !c.fits ? -1 : !c.known ? -2 : 0);
      EXPECT_EQ(out.rows(), c.fits && c.known ? nbr_boundaries(c.type) : 0);
      for (const unsigned height : {0U, 1U, 2U, 3U, 4U, 6U}) {
        const dense2D<unsigned> before(height, height != 0 ? 1 : 0, 5U);
        dense2D<unsigned> all = deep_copy(before), edges = deep_copy(before);
        const bool high = height == 0 || height == boundary_rows[c.type], paired = height == 0 || height == 2;
        EXPECT_EQ(get_element_boundaries(c.m, c.given, all), !c.fits ? -1 : !c.known || !high ? -2 : 0);
        EXPECT_TRUE((c.fits && c.known && high) || all == before);
        EXPECT_EQ(copy_edges(c.m, c.given, edges), !c.fits ? -1 : !paired ? -3 : 0);
        EXPECT_TRUE((c.fits && paired) || edges == before);
        const unsigned B = nbr_boundaries(c.type);
        for (const auto& size : {id_list{B, 2}, id_list{B, 1}, id_list{B + 1, 2}, id_list{0, 0}}) {
          for (const unsigned entry : {none, 1U, 2U}) expect_codes(c, before, {size[0], size[1], entry});
        }
      }
    }
  }
}

TEST(topology, result_codes_of_edges_of_ranges) {
  const dense2D<unsigned> pair[] = {dense2D<unsigned>(3, 1, {0, 1, 2}), dense2D<unsigned>(4, 1, 3U)};
  const struct {
    int first, last, code;
    unsigned old_rows;
    dense1D<int> types;
  } calls[] = {{1, 0, -2, 3, {}},
               {0, 2, -3, 3, {ELT_TRIA3}},
               {0, 2, -4, 3, {ELT_TRIA3, ELT_TRIA3}},
               {0, 0, -4, 3, {}},
               {0, 2, -1, 2, {ELT_TRIA3, ELT_TRIA3}},
               {0, 2, 0, 2, {ELT_FACE_MIX, ELT_QUAD4}},
               {0, 0, 0, 2, {}}};
  for (const auto& call : calls) {
    dense2D<unsigned> edges(call.old_rows, 1, 4U);
    EXPECT_EQ(copy_edges(pair + call.first, pair + call.last, call.types, edges), call.code);
    EXPECT_EQ(edges.cols(), call.code == 0 && call.last == 2 ? 5U : 1U);
  }
}

TEST(topology, empty_meshes) {
  for (const auto& m : {dense2D<unsigned>(), dense2D<unsigned>(3, 0), dense2D<unsigned>(0, 3)}) {
    dense2D<unsigned> out(7, 1, 7U);
    dense1D<unsigned> list{7}, offsets{7, 7};
    unsigned B = 77;
    EXPECT_ALL(get_element_boundaries(m, ELT_TRIA6, out) == 0, get_mesh_boundaries(m, out, ELT_TRIA6, out) == 0,
               copy_edges(m, ELT_TRIA3, out) == 0, out == dense2D<unsigned>(7, 1, 7U));
    EXPECT_ALL(get_mesh_bounding_elements(m, out, ELT_TRIA6, list, B) == 0, get_ancestors(m, list) == 0, B == 0,
               list == (dense1D<unsigned>{7}));
    EXPECT_ALL(get_neighbors(m, ELT_TRIA6, true, out) == 0, out.rows() + out.cols() == 0);
    for (const auto get : {&get_connected_elements, &get_node_graph}) {
      EXPECT_ALL(get(m, offsets, list) == 0, offsets == (dense1D<unsigned>{0}), list.empty());
    }
  }
}

// Meshes on which a search that compares slots pair by pair never ends: element i holds base + i * step.
TEST(topology, fans_and_copies) {
  constexpr unsigned n = detail::limits::limit(300000U, 30000U);
  const struct {
    element_type type;
    id_list base, step;
    std::int64_t free, free_if_paired;
    std::uint64_t edges;
  } meshes[] = {{ELT_EDGE2, {0, 1}, {0, 1}, 2 * n, n, n},
                {ELT_TRIA3, {0, 1, 2}, {0, 1, 1}, n + 2, n + 2, 2 * n + 1},
                {ELT_TRIA3, {1, 0, 2}, {0, 0, 1}, 3 * n, 2 * n, 2 * n + 1},
                {ELT_TRIA3, {7, 9, 8}, {0, 0, 0}, 3 * n, 0, 3},
                {ELT_TETRA4, {3, 0, 2, 1}, {1, 0, 0, 0}, 4 * n, 3 * n, 3 * n + 3},
                {ELT_TETRA4, {0, 1, 2, 3}, {0, 0, 1, 1}, 2 * n + 2, 2 * n + 2, 3 * n + 3},
                {ELT_HEXA8, {8, 1, 5, 3, 4, 7, 6, 2}, {0, 0, 0, 0, 0, 0, 0, 0}, 6 * n, 0, 12}};
  for (const auto& mesh : meshes) {
    SCOPED_TRACE(&mesh - meshes);
    dense2D<unsigned> m(nbr_nodes(mesh.type), n), neighbors, edges;
    for (unsigned i = 0; i < m.size(); ++i) {
      m.data()[i] = mesh.base[i % m.rows()] + i / static_cast<unsigned>(m.rows()) * mesh.step[i % m.rows()];
    }
    for (const bool pair : {false, true}) {
      ASSERT_EQ(get_neighbors(m, mesh.type, pair, neighbors), 0);
      const id_list all = to_list(neighbors.as_vector());
      EXPECT_EQ(std::count(all.begin(), all.end(), none), pair ? mesh.free_if_paired : mesh.free);
    }
    ASSERT_EQ(copy_edges(m, mesh.type, edges), 0);
    EXPECT_EQ(edges.cols(), mesh.edges);
  }
}

/// Triangles whose nodes are numbered in ways that are hard to part: one far node, two groups far apart, a fan.
std::vector<dense2D<unsigned>> uneven_meshes() {
  generator random(1);
  dense2D<unsigned> far(3, 6000, 4000000000U), groups(3, 6000), fan(3, 6000, 7U);
  for (unsigned i = 3; i < far.size(); ++i) far.data()[i] = below(random, 5000);
  for (unsigned i = 0; i < groups.size(); ++i) groups.data()[i] = i / 3 % 2 * 4000000000U + below(random, 5000);
  for (unsigned j = 0; j < fan.cols(); ++j) fan(1, j) = 8 + j, fan(2, j) = 9 + j;
  return {far, groups, fan};
}

// A list that takes most of the boundaries is matched in several rounds, outside of the caches.
TEST(topology, numbers_of_nodes_that_are_hard_to_part) {
  for (const auto& m : uneven_meshes()) {
    SCOPED_TRACE(m(0, 0));
    dense2D<unsigned> neighbors;
    for (const bool pair : {false, true}) {
      ASSERT_EQ(get_neighbors(m, ELT_TRIA3, pair, neighbors), 0);
      EXPECT_TRUE(columns(neighbors) == mesh_model(m, ELT_TRIA3).neighbors(pair));
    }
    if (detail::limits::are_small) continue;  // a handful of ranges tells nothing of how well they part
    using triangles = detail::uniform_columns<detail::triangle_shape>;
    detail::boundary_ranges<triangles> range_of(256);
    ASSERT_TRUE(range_of.prepare(m));
    id_list counts(256);
    for (unsigned j = 0; j < m.cols(); ++j) {
      detail::visit_boundaries<triangles>(m.column(j), [&](const auto& b, unsigned) { ++counts[range_of(b)]; });
    }
    EXPECT_LT(*std::max_element(counts.begin(), counts.end()), m.size() / 4);
  }
}

// Two hubs that share a fan and are asked in turn: a search through all elements of a hub for each edge never ends.
TEST(topology, elements_on_boundaries_at_hubs) {
  for (const unsigned n : {300U, 200000U}) {
    generator random(n);
    dense2D<unsigned> m(3, n), neighbors, edges;
    for (unsigned j = 0; j < n; ++j) {
      const unsigned nodes[] = {j % 2, 2 + j / 2, 3 + j / 2}, turn = below(random, 3);
      for (unsigned i = 0; i < 3; ++i) m((i + turn) % 3, j) = nodes[n < 1000 && j % 5 == 0 ? 2 - i : i];
    }
    dense1D<unsigned> ancestors, slots;
    unsigned B;
    ASSERT_EQ(get_neighbors(m, ELT_TRIA3, true, neighbors), 0);
    ASSERT_EQ(get_ancestors(m, ancestors), 0);
    ASSERT_EQ(get_element_boundaries(m, ELT_TRIA3, edges), 0);
    for (unsigned j = 0; j < edges.cols(); ++j) {
      if (edges(1, j) < 2 || (edges(0, j) > 1 && below(random, 2) != 0)) std::swap(edges(0, j), edges(1, j));
    }
    ASSERT_EQ(get_elements_on_boundaries(edges, m, neighbors, ancestors, ELT_TRIA3, slots, B), 0);
    if (n > 1000) continue;
    const mesh_model model(m, ELT_TRIA3);
    for (unsigned j = 0; j < edges.cols(); ++j) {
      EXPECT_EQ(slots[j], model.slot_of({edges(0, j), edges(1, j)}, columns(neighbors), to_list(ancestors)));
    }
  }
}

TEST(topology, slot_codes_beyond_32_bits) {
  unsigned nodes[3] = {0, 1, 2}, B;
  const dense2D<unsigned> m(3, 1U << 31, 0, nodes);  // every column is the first one
  dense1D<unsigned> slots{5};
  EXPECT_EQ(get_mesh_bounding_elements(m, m, ELT_TRIA3, slots, B), -199);
  EXPECT_EQ(slots.size(), 1U);
#ifndef QEL_SANITIZED  // which would take a minute
  const dense2D<unsigned> least(3, none / 3 + 1, 0, nodes), edge(2, 1, {0, 1});
  EXPECT_EQ(get_elements_on_boundaries(edge, least, least, {0, 0, 0}, ELT_TRIA3, slots, B), -199);
  EXPECT_TRUE(slots.empty());
#endif
}

// Counts of independent readers; the Euler characteristic, nodes - edges + triangles, is 2 for a sphere.
TEST(topology, surfaces_of_others) {
  const struct {
    const char* file;
    std::uint64_t free, non_manifold;
    std::int64_t euler;
  } surfaces[] = {{"txt-tray-solidworks-crlf", 0, 0, -44},
                  {"txt-sphere-with-hole-tab", 9, 0, -1},
                  {"txt-spider", 72, 0, 30},
                  {"txt-icosahedron", 0, 0, 2},
                  {"txt-bunny99", 7, 0, 1},
                  {"bin-plate-holes-solid-header", 0, 0, -8},
                  {"bin-3dsmax", 0, 16, 50},
                  {"bin-teapot-blender-attr", 64, 0, 1},
                  {"bin-soup", 300, 0, 100},
                  {"bin-42400-scan", 0, 0, -18}};
  for (const auto& s : surfaces) {
    const std::string path = QEL_TEST_MESHES "/stl-" + std::string(s.file) + ".stl";
    if (!std::filesystem::exists(path)) GTEST_SKIP() << path << " is not there";
    SCOPED_TRACE(path);
    dense2D<double> coords;
    dense2D<unsigned> triangles, strict, paired, free, unpaired, distinct, edges;
    ASSERT_EQ(STL_input(path.c_str(), coords, triangles), 0);
    ASSERT_EQ(get_neighbors(triangles, ELT_TRIA3, false, strict), 0);
    ASSERT_EQ(get_neighbors(triangles, ELT_TRIA3, true, paired), 0);
    ASSERT_EQ(get_mesh_boundaries(triangles, paired, ELT_TRIA3, free), 0);
    ASSERT_EQ(get_mesh_boundaries(triangles, strict, ELT_TRIA3, unpaired), 0);
    ASSERT_EQ(copy_edges(unpaired, ELT_EDGE2, distinct), 0);
    ASSERT_EQ(copy_edges(triangles, ELT_TRIA3, edges), 0);
    EXPECT_EQ(free.cols(), s.free);
    EXPECT_EQ(distinct.cols() - free.cols(), s.non_manifold);
    EXPECT_EQ(static_cast<std::int64_t>(coords.cols() + triangles.cols() - edges.cols()), s.euler);
    EXPECT_TRUE(s.non_manifold != 0 || 2 * edges.cols() == 3 * triangles.cols() + s.free);
  }
}

}  // namespace
}  // namespace qel::gridwork
