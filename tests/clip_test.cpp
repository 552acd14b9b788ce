#include <gtest/gtest.h>

#include <map>
#include <set>

#include "tests/facts.h"
#include "tests/topology_reference.h"

namespace qel::gridwork {
namespace {

using plane = vector_fixed<double, 2>;
using space = vector_fixed<double, 3>;
using elements = dense2D<unsigned>;
using reference::columns;
using reference::id_list;
using reference::id_lists;
using reference::none;
using reference::to_list;

constexpr element_type accepted[] = {ELT_EDGE2, ELT_TRIA3, ELT_QUAD4, ELT_FACE_MIX, ELT_TETRA4};

/// A mesh beside what a clip makes of it.
struct clipped {
  dense2D<double> coords;
  elements out, edges;
  dense1D<unsigned> sources;
  dense1D<double> weights;
  int count;

  template <class Vector>
  clipped(const dense2D<double>& nodes, const elements& m, element_type type, const Vector& point, const Vector& normal,
          double tol = 0)
      : coords(random_meshes::deep_copy(nodes)),
        count(clip(coords, out, point, normal, m, type, tol, sources, edges, weights)) {}
};

/// Lattice cells between -1 and 1, with nodes that are moved and a field in a row of its own.
struct random_mesh {
  random_meshes::generator random;
  element_type type;
  elements connectivity;
  dense2D<double> coords;

  random_mesh(element_type given, unsigned seed) : random(seed), type(given) {
    const unsigned cells = 1 + seed % 4, n = cells + 1;
    connectivity = reference::grid(type, cells, random);
    coords = dense2D<double>(4, n * n * n + cells * cells * cells);
    const double shift = seed % 3 == 0 ? 0 : 0.3 / cells;
    for (unsigned j = 0; j < coords.cols(); ++j) {
      const unsigned place[] = {j % n, j / n % n, element_dim(type) < 3 ? j % 3 : j / n / n};
      for (unsigned k = 0; k < 3; ++k) coords(k, j) = 2.0 * place[k] / cells - 1 + shift * (real() - 0.5);
      coords(3, j) = real();
    }
  }

  double real() { return random_meshes::real(random); }

  /// A plane through a node, or through none.
  space point() {
    const unsigned j = random_meshes::below(random, coords.cols());
    if (real() < 0.4) return {coords(0, j), coords(1, j), coords(2, j)};
    return {real() - 0.5, real() - 0.5, real() - 0.5};
  }

  space normal() {
    if (real() < 0.3) return {0, 0, 2};
    return {real() - 0.5, real() - 0.5, real() - 0.5};
  }
};

void for_each_mesh(auto check) {
  for (const element_type type : accepted) {
    for (unsigned seed = 0; seed < 60; ++seed) {
      SCOPED_TRACE(std::to_string(type) + ", seed " + std::to_string(seed));
      random_mesh mesh(type, seed);
      const space point = mesh.point(), normal = mesh.normal();
      check(mesh, point, normal);
    }
  }
}

space opposite(const space& v) { return {-v[0], -v[1], -v[2]}; }
space minus(const dense2D<double>& x, unsigned a, unsigned b) {
  return {x(0, a) - x(0, b), x(1, a) - x(1, b), x(2, a) - x(2, b)};
}
space cross(const space& a, const space& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Vector along an edge, twice the area vector of a face, six times the volume of a tetrahedron.
space measure(const dense2D<double>& x, const id_list& e, element_type type) {
  const space along = minus(x, e[1], e[0]);
  if (type == ELT_EDGE2) return along;
  const space triangle = cross(along, minus(x, e[2], e[0]));
  if (type == ELT_TRIA3 || (type == ELT_FACE_MIX && e[3] == none)) return triangle;
  if (type != ELT_TETRA4) return cross(minus(x, e[2], e[0]), minus(x, e[3], e[1]));
  const space up = minus(x, e[3], e[0]);
  return {triangle[0] * up[0] + triangle[1] * up[1] + triangle[2] * up[2], 0, 0};
}

using measures = std::map<unsigned, space>;

/// Of all columns with one source.
void add_measures(const clipped& c, element_type type, measures& sums) {
  for (unsigned j = 0; j < c.out.cols(); ++j) {
    const space m = measure(c.coords, reference::column(c.out, j), type);
    for (unsigned k = 0; k < 3; ++k) sums[c.sources[j]][k] += m[k];
  }
}

TEST(clip, measures_of_both_halves_add_up_and_their_nodes_are_the_same) {
  for_each_mesh([](random_mesh& mesh, const space& point, const space& normal) {
    const clipped front(mesh.coords, mesh.connectivity, mesh.type, point, normal);
    const clipped back(mesh.coords, mesh.connectivity, mesh.type, point, opposite(normal));
    EXPECT_TRUE(random_meshes::same_bits(front.coords, back.coords));
    EXPECT_EQ(front.edges, back.edges);
    EXPECT_EQ(front.weights, back.weights);
    measures sums;
    const element_type type = mesh.type == ELT_QUAD4 ? ELT_FACE_MIX : mesh.type;
    add_measures(front, type, sums), add_measures(back, type, sums);
    for (unsigned e = 0; e < mesh.connectivity.cols(); ++e) {
      const id_list nodes = reference::column(mesh.connectivity, e);
      const bool is_split = std::count(sums[e].begin(), sums[e].end(), 0.0) != 3;
      const space whole = measure(mesh.coords, nodes, mesh.type);
      elements one, unused;
      dense1D<unsigned> in_plane;
      clip(mesh.coords, one, point, normal, mesh.connectivity.sub_matrix(0, e, mesh.connectivity.rows(), 1), 0, 0.0,
           in_plane);
      clip(mesh.coords, unused, point, opposite(normal), one, 0, 0.0, in_plane);
      const double parts = in_plane.empty() ? 1 : 2;
      for (unsigned k = 0; is_split && k < 3; ++k) EXPECT_NEAR(sums[e][k], parts * whole[k], 1e-13);
    }
  });
}

TEST(clip, places_orientation_and_fields_stay) {
  for_each_mesh([](random_mesh& mesh, const space& point, const space& normal) {
    const clipped c(mesh.coords, mesh.connectivity, mesh.type, point, normal);
    const unsigned old = unsigned(mesh.coords.cols());
    const bool simplices = mesh.type == ELT_EDGE2 || mesh.type == ELT_TRIA3 || mesh.type == ELT_TETRA4;
    for (unsigned j = 0; j < c.out.cols(); ++j) {
      for (unsigned i = 0; simplices && i < c.out.rows(); ++i) {
        const unsigned source = mesh.connectivity(i, c.sources[j]);
        const unsigned node = c.out(i, j), k = node - old;
        EXPECT_TRUE(node < old ? node == source : c.edges(0, k) == source || c.edges(1, k) == source);
      }
      const space piece =
          measure(c.coords, reference::column(c.out, j), mesh.type == ELT_QUAD4 ? ELT_FACE_MIX : mesh.type);
      const space whole = measure(mesh.coords, reference::column(mesh.connectivity, c.sources[j]), mesh.type);
      const double agreement = piece[0] * whole[0] + piece[1] * whole[1] + piece[2] * whole[2];
      EXPECT_TRUE(!simplices || agreement >= -1e-15);
    }
    for (unsigned k = 0; k < c.edges.cols(); ++k) {
      const double t = c.weights[k], a = c.coords(3, c.edges(0, k)), b = c.coords(3, c.edges(1, k));
      EXPECT_ALL(t > 0, t < 1);
      EXPECT_EQ(c.coords(3, old + k), a + t * (b - a));
    }
  });
}

TEST(clip, does_not_depend_on_the_order_of_elements) {
  for_each_mesh([](random_mesh& mesh, const space& point, const space& normal) {
    id_lists shuffled = columns(mesh.connectivity);
    id_list order = reference::identity(shuffled.size());
    std::shuffle(order.begin(), order.end(), mesh.random);
    for (unsigned e = 0; e < order.size(); ++e) shuffled[order[e]] = reference::column(mesh.connectivity, e);
    const clipped a(mesh.coords, mesh.connectivity, mesh.type, point, normal);
    const clipped b(mesh.coords, reference::to_matrix(shuffled, unsigned(mesh.connectivity.rows())), mesh.type, point,
                    normal);
    EXPECT_TRUE(random_meshes::same_bits(a.coords, b.coords));
    EXPECT_EQ(a.edges, b.edges);
    std::map<unsigned, id_lists> pieces_a, pieces_b;
    for (unsigned j = 0; j < a.out.cols(); ++j) pieces_a[order[a.sources[j]]].push_back(reference::column(a.out, j));
    for (unsigned j = 0; j < b.out.cols(); ++j) pieces_b[b.sources[j]].push_back(reference::column(b.out, j));
    EXPECT_EQ(pieces_a, pieces_b);
  });
}

TEST(clip, a_second_time_changes_nothing) {
  for_each_mesh([](random_mesh& mesh, const space& point, const space& normal) {
    const clipped once(mesh.coords, mesh.connectivity, mesh.type, point, normal, 2e-9);
    const element_type type = mesh.type == ELT_QUAD4 ? ELT_FACE_MIX : mesh.type;
    const clipped twice(once.coords, once.out, type, point, normal, 2e-9);
    EXPECT_EQ(twice.count, 0);
    EXPECT_TRUE(twice.out == once.out || once.out.empty());
    EXPECT_TRUE(random_meshes::same_bits(twice.coords, once.coords));
  });
}

elements free_boundaries(const elements& m, element_type type) {
  elements neighbors, boundaries;
  EXPECT_EQ(get_neighbors(m, type, true, neighbors), 0);
  EXPECT_EQ(get_mesh_boundaries(m, neighbors, type, boundaries), 0);
  return boundaries;
}

/// The faces, each from its smallest node on, that do not lie in the plane.
std::multiset<id_list> faces_off_plane(const elements& faces, const dense2D<double>& x, const space& point,
                                       const space& normal) {
  std::multiset<id_list> all;
  for (id_list f : columns(faces)) {
    std::rotate(f.begin(), std::min_element(f.begin(), f.end()), f.end());
    bool off = false;
    for (const unsigned node : f) {
      double d = 0;
      for (unsigned k = 0; k < 3; ++k) d += normal[k] * (x(k, node) - point[k]);
      off = off || std::abs(d) > 1e-9;
    }
    if (off) all.insert(f);
  }
  return all;
}

// The free faces of clipped tetrahedra off the plane are the clipped free faces: so there is no crack inside, and what
// is clipped by itself fits. Likewise for triangles and their border.
TEST(clip, is_conforming_also_with_boundaries_that_are_clipped_by_themselves) {
  for (const auto& [type, boundary_type] :
       {std::pair(ELT_TETRA4, ELT_TRIA3), std::pair(ELT_TRIA3, ELT_EDGE2), std::pair(ELT_FACE_MIX, ELT_EDGE2)}) {
    for (unsigned seed = 0; seed < 100; ++seed) {
      SCOPED_TRACE(std::to_string(type) + ", seed " + std::to_string(seed));
      random_mesh mesh(type, seed);
      const space point = mesh.point(), normal = mesh.normal();
      dense2D<double> coords = mesh.coords.sub_matrix(0, 0, 3, mesh.coords.cols());
      elements out = mesh.connectivity, edges;
      elements faces = free_boundaries(out, type);
      dense1D<unsigned> sources;
      dense1D<double> weights;
      const int inside = clip(coords, out, point, normal, out, type, 2e-9, sources, edges, weights);
      const int outside = clip(coords, faces, point, normal, faces, boundary_type, 2e-9, sources, edges, weights);
      ASSERT_ALL(inside >= 0, outside >= 0);
      elements both[] = {out, faces};
      EXPECT_EQ(merge(coords, both, both + 2, 0.0, 0), outside);
      EXPECT_EQ(faces_off_plane(free_boundaries(both[0], type), coords, point, normal),
                faces_off_plane(both[1], coords, point, normal));
    }
  }
}

const dense2D<double> square(2, 5, {0, 0, 1, 0, 1, 1, 0, 1, 0.2, 0.2});

clipped clip_square(const elements& m, element_type type, const plane& point, const plane& normal, double tol = 0) {
  return clipped(square, m, type, point, normal, tol);
}

TEST(clip, cuts_as_drawn) {
  const auto triangle = clip_square(elements(3, 1, {3, 2, 0}), ELT_TRIA3, plane{0, 0.25}, plane{0, 5});
  EXPECT_EQ(triangle.edges, elements(2, 2, {0, 2, 0, 3}));
  EXPECT_EQ(triangle.out, elements(3, 2, {3, 5, 6, 3, 2, 5})) << "split at (0, 2), then at (0, 3)";
  EXPECT_EQ(triangle.weights, dense1D<double>({0.25, 0.25}));
  const elements quadrangle(4, 1, {0, 1, 2, 3});
  const auto halved = clip_square(quadrangle, ELT_QUAD4, plane{0, 0.5}, plane{0, 1});
  EXPECT_EQ(halved.out, elements(4, 1, {6, 2, 3, 5}));
  const auto cornered = clip_square(quadrangle, ELT_QUAD4, plane{0.25, 0.25}, plane{1, 1});
  EXPECT_EQ(cornered.out, elements(4, 2, {1, 2, 3, none, 1, 3, 6, 5}));
  EXPECT_EQ(cornered.sources, dense1D<unsigned>({0, 0}));
  const auto mixed = clip_square(elements(4, 1, {3, 2, 0, none}), ELT_FACE_MIX, plane{0, 0.25}, plane{0, 5});
  EXPECT_EQ(mixed.out, elements(4, 1, {3, 2, 5, 6})) << "a triangle of a mixed matrix stays one polygon";
  const auto concave = clip_square(elements(4, 1, {0, 1, 4, 3}), ELT_QUAD4, plane{0.4, 0.4}, plane{-1, -1});
  EXPECT_EQ(concave.out, elements(4, 2, {0, 5, 7, 4, 0, 4, 8, 6})) << "split at (0, 4) first";
  EXPECT_EQ(concave.edges, elements(2, 4, {0, 1, 0, 3, 1, 4, 3, 4}));
}

TEST(clip, keeps_what_lies_in_the_plane) {
  const elements edges(2, 3, {0, 1, 1, 2, 3, 0});
  for (const double side : {1.0, -1.0}) {
    const auto exact = clip_square(edges, ELT_EDGE2, plane{7, 0}, plane{0, side});
    EXPECT_EQ(exact.out, side > 0 ? edges : elements(2, 1, {0, 1}));
    EXPECT_EQ(exact.count, 0);
    elements out;
    dense1D<unsigned> sources;
    EXPECT_EQ(clip(square, out, plane{7, 0}, plane{0, side}, edges, 0, 0.0, sources), side > 0 ? 0 : 2);
    EXPECT_EQ(out, exact.out);
  }
  EXPECT_EQ(clip_square(edges, ELT_EDGE2, plane{0, 1}, plane{0, 1}, 1).out, edges) << "all within the tolerance";
}

TEST(clip, whole_elements_by_mode) {
  const elements m(3, 5, {0, 1, 2, 0, 1, none, 2, 3, none, none, none, none, 3, none, none});
  const id_list expected[] = {{2, 4}, {0, 2, 4}, {0}};
  for (unsigned mode = 0; mode < 3; ++mode) {
    elements out = m;
    dense1D<unsigned> sources;
    EXPECT_EQ(clip(square, out, plane{0, 0.5}, plane{0, 1e-310}, out, mode, 0.0, sources),
              5 - int(expected[mode].size()));
    EXPECT_EQ(to_list(sources), expected[mode]);
    for (unsigned j = 0; j < out.cols(); ++j) EXPECT_EQ(reference::column(out, j), reference::column(m, sources[j]));
  }
}

TEST(clip, refuses_in_order) {
  const plane o{0, 0}, up{0, 1}, nan{random_meshes::not_a_number, 0}, inf{0, random_meshes::infinity};
  const elements m(2, 1, {0, 1}), beyond(2, 1, {0, 5});
  const auto code = [](const auto& p, const auto& n, const elements& mesh, unsigned mode, element_type type, double tol,
                       unsigned rows = 2) {
    dense2D<double> coords(rows, 5, 1.0);
    elements out(1, 1, 7U), edges(3, 1, 8U);
    dense1D<unsigned> sources{9};
    dense1D<double> weights{0.5};
    const int whole = clip(coords, out, p, n, mesh, mode, tol, sources);
    const int exact = clip(coords, out, p, n, mesh, type, tol, sources, edges, weights);
    EXPECT_EQ(whole, exact);
    EXPECT_ALL(out == elements(1, 1, 7U), edges == elements(3, 1, 8U), sources == dense1D<unsigned>{9},
               weights == dense1D<double>{0.5});
    return whole;
  };
  EXPECT_EQ(code(nan, o, beyond, 3, ELT_NODE, -1, 1), -1);
  EXPECT_EQ(code(space{}, space{}, beyond, 3, ELT_NODE, -1), -1);
  EXPECT_EQ(code(nan, o, beyond, 3, ELT_NODE, -1), -3);
  EXPECT_EQ(code(inf, o, beyond, 3, ELT_NODE, -1), -3);
  for (const plane& normal : {o, nan, inf}) EXPECT_EQ(code(o, normal, beyond, 3, ELT_NODE, -1), -4);
  EXPECT_EQ(code(o, up, beyond, 3, ELT_EDGE_MIX, -1), -5);
  EXPECT_EQ(code(o, up, m, 3, ELT_EDGE_MIX, -1), -6);
  for (const double tol : {-1e-300, random_meshes::not_a_number}) EXPECT_EQ(code(o, up, m, 2, ELT_EDGE2, tol), -7);
  clipped solids(square, elements(8, 1, {0, 1, 2, 3, none, none, none, none}), ELT_SOLID_MIX, plane{0, 0}, plane{0, 1});
  EXPECT_EQ(solids.count, -6);
  clipped empty(square, elements(4, 0), ELT_HEXA8, nan, o, -1);
  EXPECT_EQ(empty.count, 0);
  EXPECT_ALL(empty.out.empty(), empty.edges.empty(), empty.sources.empty(), empty.weights.empty());
}

// The planes pass within rounding of nodes: an element near them is kept, cut or dropped, but never in part lost.
TEST(clip, near_nodes_volumes_add_up) {
  const dense2D<double> corners(3, 4, {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1});
  const elements m(4, 1, {2, 0, 3, 1});
  for (const double z : {-1e-15, -5e-324, 0.0, 5e-324, 1e-300, 1e-15, 1 - 1e-15, 1.0, 1 + 1e-15}) {
    for (const double tol : {0.0, 1e-16, 1e-9}) {
      double volume = 0;
      for (const double side : {1.0, -1.0}) {
        measures sums;
        add_measures(clipped(corners, m, ELT_TETRA4, space{0, 0, z}, space{0, 0, side}, tol), ELT_TETRA4, sums);
        volume += sums[0][0];
      }
      EXPECT_NEAR(std::abs(volume), 1, 1e-14);
    }
  }
}

}  // namespace
}  // namespace qel::gridwork
