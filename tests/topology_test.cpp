// Neighbours, boundaries, node lists and edges, held against their definitions.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/topology_reference.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using namespace reference;
using reference::resolve;

constexpr element_type accepted[] = {ELT_EDGE2,  ELT_FACE_MIX, ELT_TRIA3,  ELT_QUAD4, ELT_SOLID_MIX,
                                     ELT_TETRA4, ELT_PYRAMID5, ELT_WEDGE6, ELT_HEXA8};

template <class Entry>
std::vector<Entry> behind(const Entry& first, std::vector<Entry> others) {
  others.insert(others.begin(), first);
  return others;
}

id_lists rows_of(const dense1D<unsigned>& offsets, const dense1D<unsigned>& list) {
  id_lists all;
  for (std::uint64_t n = 0; n + 1 < offsets.size(); ++n) {
    all.emplace_back(list.begin() + offsets[n], list.begin() + offsets[n + 1]);
  }
  EXPECT_EQ(offsets[0], 0U);
  EXPECT_EQ(offsets[offsets.size() - 1], list.size());
  return all;
}

/// Boundaries of the elements, turned and reversed at random, some of them changed.
id_lists queries(const mesh_model& mesh, generator& random) {
  id_lists all = mesh.list_boundaries(nullptr);
  for (id_list& b : all) {
    const auto end = b.size() == 4 && b[3] == none ? b.end() - 1 : b.end();
    std::rotate(b.begin(), b.begin() + below(random, end - b.begin()), end);
    if (below(random, 2) != 0) std::reverse(b.begin(), end);
    if (below(random, 8) == 0) std::swap(b[0], b[b.size() / 2]);
    if (below(random, 8) == 0) b[0] = all[below(random, all.size())][0];
  }
  return all;
}

void expect_lookup(const mesh_model& mesh, const dense2D<unsigned>& m, const id_lists& neighbors,
                   const id_list& ancestors) {
  generator random(3);
  const id_lists wanted = queries(mesh, random);
  const dense2D<unsigned> boundaries = with_gaps(to_matrix(wanted, boundary_rows[mesh.type]), 0U);
  id_list expected;
  for (const id_list& b : wanted) expected.push_back(mesh.slot_of(b, neighbors, ancestors));
  dense1D<unsigned> slots{7};
  unsigned B = 77;
  ASSERT_EQ(get_elements_on_boundaries(boundaries, m, with_gaps(to_matrix(neighbors, mesh.B), 1U), to_array(ancestors),
                                       mesh.type, slots, B),
            0);
  ASSERT_EQ(to_list(slots), expected);
  ASSERT_EQ(B, mesh.B);
}

void expect_boundaries(const mesh_model& mesh, const dense2D<unsigned>& m, element_type type, bool pair_non_manifold) {
  const id_lists expected = mesh.neighbors(pair_non_manifold);
  dense2D<unsigned> neighbors(2, 2, 5U);
  ASSERT_EQ(get_neighbors(m, type, pair_non_manifold, neighbors), 0);
  ASSERT_EQ(columns(neighbors), expected);
  dense2D<unsigned> all(boundary_rows[mesh.type], 1, 6U), free = with_gaps(all, 3U);
  dense1D<unsigned> slots{9};
  unsigned B = 77;
  ASSERT_EQ(get_element_boundaries(m, type, all), 0);
  ASSERT_EQ(get_mesh_boundaries(m, with_gaps(neighbors, 0U), type, free), 0);
  ASSERT_EQ(get_mesh_bounding_elements(m, with_gaps(neighbors, 0U), type, slots, B), 0);
  const id_list old(all.rows(), 6);
  ASSERT_EQ(columns(all), behind(old, mesh.list_boundaries(nullptr)));
  ASSERT_EQ(columns(free), behind(old, mesh.list_boundaries(&expected)));
  ASSERT_EQ(to_list(slots), behind(9U, mesh.free_slots(expected)));
  ASSERT_EQ(B, mesh.B);
}

void expect_node_lists(const mesh_model& mesh, const dense2D<unsigned>& m) {
  const std::uint64_t n = std::uint64_t{max_ID(m)} + 1;
  dense1D<unsigned> ancestors, part(n / 2 + 1, 3U), offsets{4, 4}, list{4};
  ASSERT_EQ(get_ancestors(m, ancestors), 0);
  ASSERT_EQ(to_list(ancestors), mesh.ancestors(id_list(n, none)));
  ASSERT_EQ(get_ancestors(m, part), 0);
  ASSERT_EQ(to_list(part), mesh.ancestors(id_list(n / 2 + 1, 3)));
  ASSERT_EQ(get_connected_elements(m, offsets, list), 0);
  ASSERT_EQ(rows_of(offsets, list), mesh.node_lists(n));
  ASSERT_EQ(get_node_graph(m, offsets, list), 0);
  ASSERT_EQ(rows_of(offsets, list), mesh.graph(n));
}

void expect_edges(const mesh_model& mesh, const dense2D<unsigned>& m, element_type type) {
  const std::set<id_list> expected = mesh.edges();
  const id_lists appended = behind({8, 7}, id_lists(expected.begin(), expected.end()));
  const std::vector<dense2D<unsigned>> range = {m, dense2D<unsigned>(), m.sub_matrix(0, 0, m.rows(), m.cols() / 2)};
  dense2D<unsigned> edges = with_gaps(dense2D<unsigned>(2, 1, {8, 7}), 6U), edges_of_range(2, 1, {8, 7});
  ASSERT_EQ(copy_edges(m, type, edges), 0);
  ASSERT_EQ(copy_edges(range.data(), range.data() + 3, {type, ELT_HEXA8, type}, edges_of_range), 0);
  ASSERT_EQ(columns(edges), appended);
  ASSERT_EQ(columns(edges_of_range), appended);
}

/// Everything that the library says of a mesh whose columns are valid or at least of the right height.
void expect_topology(const dense2D<unsigned>& m, element_type type) {
  const mesh_model mesh(m, type);
  const bool few_nodes = max_ID(m) < 100000;
  for (const dense2D<unsigned>& view : {m, with_gaps(m, 2U)}) {
    for (const bool pair_non_manifold : {false, true}) {
      expect_boundaries(mesh, view, type, pair_non_manifold);
      if (!few_nodes) continue;
      expect_lookup(mesh, view, mesh.neighbors(pair_non_manifold), mesh.ancestors(id_list(max_ID(m) + 1, none)));
    }
    if (few_nodes) expect_node_lists(mesh, view);
    expect_edges(mesh, view, type);
  }
}

TEST(topology, grids) {
  generator random(1);
  for (const element_type type : accepted) {
    SCOPED_TRACE(type);
    for (const unsigned cells : {1U, 2U, 4U}) expect_topology(grid(type, cells, random), type);
  }
  for (const element_type type : {ELT_TRIA3, ELT_TETRA4, ELT_PYRAMID5, ELT_WEDGE6}) {
    expect_topology(grid(type, 2, random), type == ELT_TRIA3 ? ELT_FACE_MIX : ELT_SOLID_MIX);
  }
}

TEST(topology, random_elements) {
  generator random(2);
  for (const element_type type : accepted) {
    SCOPED_TRACE(type);
    for (int round = 0; round < 60; ++round) {
      const unsigned cols = 1 + below(random, round % 10 == 0 ? 150 : 30);
      const unsigned nodes = 2 + below(random, round % 3 == 0 ? 60 : 7);
      expect_topology(random_elements(type, cols, round % 4 == 0 ? 3999999990U : round % 5, nodes, random), type);
      // `~0U` anywhere. Where a mixed solid must not have it, what its edges are is left open.
      const dense2D<unsigned> m = connectivity(random, nbr_nodes(type), cols, nodes);
      if (type != ELT_SOLID_MIX) expect_topology(m, type);
      expect_boundaries(mesh_model(m, type), m, type, round % 2 != 0);
    }
  }
}

TEST(topology, other_types_have_node_lists_and_edges) {
  generator random(3);
  for (int type = ELT_NODE; type <= ELT_HEXA27; ++type) {
    const auto t = static_cast<element_type>(type);
    const dense2D<unsigned> m = connectivity(random, nbr_nodes(t), 40, 50);
    expect_node_lists(mesh_model(m, t), m);
    if (t != ELT_SOLID_MIX) expect_edges(mesh_model(m, t), m, t);
  }
}

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
    EXPECT_EQ(get_element_boundaries(m, ELT_TRIA6, out), 0);
    EXPECT_EQ(get_mesh_boundaries(m, out, ELT_TRIA6, out), 0);
    EXPECT_EQ(copy_edges(m, ELT_TRIA3, out), 0);
    EXPECT_EQ(get_mesh_bounding_elements(m, out, ELT_TRIA6, list, B), 0);
    EXPECT_EQ(get_ancestors(m, list), 0);
    EXPECT_EQ(out, dense2D<unsigned>(7, 1, 7U));
    EXPECT_EQ(list, (dense1D<unsigned>{7}));
    EXPECT_EQ(B, 0U);
    EXPECT_EQ(get_neighbors(m, ELT_TRIA6, true, out), 0);
    EXPECT_EQ(out.rows() + out.cols(), 0U);
    for (const auto get : {&get_connected_elements, &get_node_graph}) {
      EXPECT_EQ(get(m, offsets, list), 0);
      EXPECT_EQ(offsets, (dense1D<unsigned>{0}));
      EXPECT_TRUE(list.empty());
    }
  }
}

/// Neighbours and ancestors that contradict the mesh: nothing is read out of range, and what is found is the boundary.
TEST(topology, lookup_with_false_neighbors_and_ancestors) {
  generator random(4);
  for (const element_type type : accepted) {
    for (int round = 0; round < 20; ++round) {
      const mesh_model mesh(random_elements(type, 12, 0, 9, random), type);
      id_lists neighbors(12, id_list(mesh.B, none));
      for (id_list& of_one : neighbors) of_one = list(random, mesh.B, 12);
      expect_lookup(mesh, mesh.connectivity, neighbors, list(random, 7, 12));
    }
  }
}

// Meshes on which a search that compares slots pair by pair never ends: element i holds base + i * step.
TEST(topology, fans_and_copies) {
  constexpr unsigned n = 300000;
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

TEST(topology, slot_codes_beyond_32_bits) {
  unsigned nodes[3] = {0, 1, 2}, B;
  const dense2D<unsigned> m(3, 1U << 31, 0, nodes);  // every column is the first one
  dense1D<unsigned> slots{5};
  EXPECT_EQ(get_mesh_bounding_elements(m, m, ELT_TRIA3, slots, B), -199);
  EXPECT_EQ(slots.size(), 1U);
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
