#include <gtest/gtest.h>

#include "core/linear_shapes.h"
#include "qel/gridwork.h"
#include "tests/facts.h"
#include "tests/random_meshes.h"

namespace qel::gridwork {
namespace {

using namespace detail;
using namespace random_meshes;
using real_type = long double;
using vec = std::array<real_type, 3>;
using points = std::vector<vec>;

vec operator-(const vec& a, const vec& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
real_type dot(const vec& a, const vec& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
real_type length(const vec& a) { return std::sqrt(dot(a, a)); }
vec cross(const vec& a, const vec& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
real_type triple(const vec& a, const vec& b, const vec& c) { return dot(a, cross(b, c)); }

struct sample {
  const shape& s;
  points ideal;  // of quality 1
};

const real_type h3 = std::sqrt(real_type(3)) / 2;
const sample samples[] = {
    {edge_shape, {{0, 0, 0}, {1, 0, 0}}},
    {triangle_shape, {{0, 0, 0}, {1, 0, 0}, {0.5L, h3, 0}}},
    {quadrangle_shape, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}},
    {tetrahedron_shape, {{0, 0, 0}, {1, 0, 1}, {0, 1, 1}, {1, 1, 0}}},
    {pyramid_shape, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5L, 0.5L, h3}}},
    {wedge_shape, {{0, 0, 0}, {1, 0, 0}, {0.5L, h3, 0}, {0, 0, 1}, {1, 0, 1}, {0.5L, h3, 1}}},
    {hexahedron_shape, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}}};

/// Triple products at the corners where three edges meet, in the order of neighbours that is positive in the ideal
/// element.
real_type smallest_triple(const sample& s, const points& p) {
  real_type smallest = infinity;
  for (unsigned i = 0; i < s.s.nodes; ++i) {
    std::vector<unsigned> n;
    for (unsigned k = 0; k < s.s.edges; ++k) {
      for (unsigned side : {0U, 1U}) {
        if (s.s.edge[k][side] == i) n.push_back(s.s.edge[k][1 - side]);
      }
    }
    if (n.size() != 3) continue;
    const auto product = [&](const points& q) { return triple(q[n[0]] - q[i], q[n[1]] - q[i], q[n[2]] - q[i]); };
    smallest = std::min(smallest, product(s.ideal) > 0 ? product(p) : -product(p));
  }
  return smallest;
}

struct measures {
  real_type quality, jacobian;
};

measures plane_face(const points& p, bool spatial) {
  const std::size_t n = p.size();
  vec normal = n == 4 ? cross(p[2] - p[0], p[3] - p[1]) : cross(p[1] - p[0], p[2] - p[0]);
  if (!spatial) normal = {0, 0, 1};
  real_type longest = n == 4 ? std::max(length(p[2] - p[0]), length(p[3] - p[1])) : 0, perimeter = 0, least = infinity;
  for (std::size_t i = 0; i < n; ++i) {
    const vec e = p[(i + 1) % n] - p[i];
    longest = std::max(longest, length(e));
    perimeter += length(e);
    least = std::min(least, dot(cross(p[i] - p[(i + n - 1) % n], e), normal) / length(normal));
  }
  return {(n == 4 ? 4 * std::sqrt(2.0L) : 2 * std::sqrt(3.0L)) * least / (longest * perimeter), least};
}

real_type flatness(const vec& a, const vec& b, const vec& c, const vec& d) {
  const vec p[] = {a, b, c, d}, normal = cross(c - a, d - b);
  real_type least = 1;
  for (unsigned i = 0; i < 4; ++i) {
    const vec n = cross(p[i] - p[(i + 3) % 4], p[(i + 1) % 4] - p[i]);
    least = std::min(least, dot(n, normal) / length(n) / length(normal));
  }
  return std::max(least, real_type(0));
}

measures tetrahedron(const points& p) {
  const vec a = p[0] - p[3], b = p[1] - p[3], c = p[2] - p[3];
  real_type surface = length(cross(b - a, c - a)) + length(cross(a, b)) + length(cross(b, c)) + length(cross(a, c)),
            most = 0;
  for (const auto& q : p) {
    for (const auto& r : p) most = std::max(most, length(q - r));
  }
  return {2 * std::sqrt(6.0L) * triple(a, b, c) / (most * surface), triple(a, b, c)};
}

measures reference(const sample& s, const points& p, bool spatial) {
  if (s.s.type == ELT_EDGE2) return {1, length(p[1] - p[0])};
  if (s.s.boundary_nodes == 2) return plane_face(p, spatial);
  if (s.s.type == ELT_TETRA4) return tetrahedron(p);
  real_type S = 0, f = 1;
  for (unsigned k = 0; k < s.s.edges; ++k)
    S += dot(p[s.s.edge[k][0]] - p[s.s.edge[k][1]], p[s.s.edge[k][0]] - p[s.s.edge[k][1]]);
  for (unsigned k = 0; k < s.s.boundaries; ++k) {
    const unsigned char* n = s.s.boundary[k];
    if (s.s.boundary_sizes[k] == 4) f = std::min(f, flatness(p[n[0]], p[n[1]], p[n[2]], p[n[3]]));
  }
  const real_type J = smallest_triple(s, p),
                  q = (s.s.type == ELT_HEXA8 ? 24 : 18) * std::sqrt(3.0L) * J / std::pow(S, 1.5L);
  return {q > 0 ? q * f : q, J};
}

/// Every element with nodes of its own.
struct mesh {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  element_type type;

  mesh(const sample& s, unsigned rows, const std::vector<points>& elements)
      : coords(rows, s.s.nodes * elements.size()), connectivity(s.s.nodes, elements.size()), type(s.s.type) {
    for (unsigned j = 0; j < coords.cols(); ++j) {
      connectivity.data()[j] = j;
      for (unsigned k = 0; k < rows; ++k) coords(k, j) = double(elements[j / s.s.nodes][j % s.s.nodes][k]);
    }
  }

  dense1D<double> measure(bool quality) const {
    dense1D<double> values{9.0};
    EXPECT_EQ((quality ? shape_qualities : jacobians)(coords, connectivity, type, values), 0);
    return values;
  }
};

points changed(points p, auto change) {
  for (auto& node : p) {
    for (auto& x : node) x = change(x);
  }
  return p;
}

TEST(shapes, ideal_scaled_distant_collapsed_and_broken_elements) {
  for (const sample& s : samples) {
    const bool edge = s.s.type == ELT_EDGE2;
    const auto quality = [&](const points& p) {  // before, behind and without a sound neighbour: the same
      const auto Q = mesh(s, 3, {p, s.ideal, s.ideal, p, p}).measure(true);
      EXPECT_ALL(Q[0] == Q[4], Q[3] == Q[4], Q[1] == Q[2]);
      return Q[4];
    };
    const auto jacobian = [&](const points& p) { return mesh(s, 3, {p}).measure(false)[0]; };
    EXPECT_NEAR(quality(s.ideal), 1, 4e-16) << s.s.nodes;
    for (const double scale : {1e-307, 1e-150, 1e-100, 1e100, 1e150, 1.7e308}) {
      const points p = changed(s.ideal, [&](real_type x) { return scale * (x - 0.5L); });
      EXPECT_NEAR(quality(p), 1, 1e-15) << scale;
      const double expected = double(reference(s, p, true).jacobian);
      EXPECT_TRUE(jacobian(p) == expected || std::abs(jacobian(p) / expected - 1) < 1e-14) << scale;
    }
    EXPECT_NEAR(quality(changed(s.ideal, [](real_type x) { return x + 1e8L; })), 1, 1e-7);
    for (const double far : {-1e290, 1e308}) {  // in a distant plane
      points small = changed(s.ideal, [](real_type x) { return 1e-20L * x; }), here = small;
      for (auto& node : small) node[2] = far;
      for (auto& node : here) node[2] = 0;
      EXPECT_EQ(quality(small), quality(here));
      EXPECT_EQ(jacobian(small), jacobian(here));
      EXPECT_EQ(quality(small) > 0.9 && jacobian(small) > 0, s.s.boundary_nodes < 3);
    }
    for (const double value : {0.0, 1e-320, 1e300, infinity, not_a_number}) {  // all nodes at one place, or nowhere
      EXPECT_EQ(quality(changed(s.ideal, [&](real_type) { return value; })), edge) << value;
      points one_bad = s.ideal;
      one_bad.back()[1] = value;
      EXPECT_EQ(std::isfinite(value) || edge || quality(one_bad) == 0, true) << value;
    }
    for (unsigned i = 0; i < s.s.nodes && !edge; ++i) {
      for (unsigned j = 0; j < i; ++j) {
        points collapsed = s.ideal;
        collapsed[i] = collapsed[j];
        EXPECT_LE(quality(collapsed), 0) << s.s.nodes << i << j;
      }
    }
    const bool solid = s.s.boundary_nodes > 2;
    EXPECT_NEAR(mesh(s, 2, {s.ideal}).measure(true)[0], solid ? 0 : 1, 4e-16);
  }
}

/// Qualities are held against long doubles, to an accuracy of that of the corners of the element.
TEST(shapes, random_elements) {
  generator random(2);
  for (const sample& s : samples) {
    for (const bool spatial : {false, true}) {
      if (!spatial && s.s.boundary_nodes > 2) continue;
      for (const double flat : {1.0, 1e-3, 1e-8, 1e-13}) {
        const double near_zero = flat < 1e-10 ? 1e-10 : 2e-15;                         // where the corners decide
        const double tolerance = s.s.type == ELT_TRIA3 && spatial ? 3e-8 : near_zero;  // the root of a rounding error
        std::vector<points> elements;
        for (int i = 0; i < 500; ++i) {
          points p = s.ideal;
          const double amount = real(random) * (i % 5 == 0 ? 3 : 0.6);
          for (auto& node : p) {
            for (unsigned k = 0; k < 3; ++k) node[k] = k == 2 && !spatial ? 0 : node[k] + amount * (real(random) - 0.5);
            node[spatial ? 2 : 1] *= flat;
          }
          for (auto& node : p) node = {double(node[0]), double(node[1]), double(node[2])};
          elements.push_back(p);
        }
        const mesh m(s, spatial ? 3 : 2, elements);
        const auto Q = m.measure(true), J = m.measure(false);
        double qmin, least = 1;
        unsigned jmin, first = none;
        for (unsigned j = 0; j < 500; ++j) {
          const measures expected = reference(s, elements[j], spatial);
          ASSERT_NEAR(Q[j], std::clamp(double(expected.quality), -1.0, 1.0), tolerance) << s.s.nodes << ' ' << flat;
          ASSERT_NEAR(J[j], double(expected.jacobian), 2e-14);
          if (Q[j] < least) least = Q[first = j];
        }
        ASSERT_EQ(min_quality(m.coords, with_gaps(m.connectivity, 7U), m.type, qmin, jmin), 0);
        ASSERT_EQ(qmin, least);
        ASSERT_EQ(jmin, first);
      }
    }
  }
}

/// Where neither needs care, two elements are measured side by side: each must get the bits that it gets alone.
TEST(shapes, neighbours_do_not_matter) {
  random_meshes::generator random(8);
  for (const sample& s : samples) {
    std::vector<points> elements(4000, s.ideal);
    for (points& p : elements) {
      const double near = std::pow(10, -12 * real(random)), amount = std::pow(10, -9 * real(random));
      for (unsigned i = 0; i < p.size(); ++i) {
        const bool gathered = i > 0 && i + 1 < p.size() && amount < 1e-4;
        for (unsigned k = 0; k < 3; ++k) p[i][k] += amount * (real(random) - 0.5);
        for (unsigned k = 0; k < 3 && gathered; ++k) p[i][k] = p[0][k] + near * (p[i][k] - p[0][k]);
      }
    }
    const mesh m(s, 3, elements);
    const auto Q = m.measure(true);
    dense1D<double> alone;
    for (unsigned j = 0; j < 4000; ++j) {
      ASSERT_EQ(shape_qualities(m.coords, m.connectivity.sub_matrix(0, j, s.s.nodes, 1), m.type, alone), 0);
      ASSERT_EQ(Q[j], alone[0]) << s.s.nodes;
    }
  }
}

TEST(shapes, slivers_have_one_sign_in_every_order_of_their_nodes) {
  generator random(4);
  for (int i = 0; i < 20000; ++i) {
    points p(4);
    for (auto& node : p) node = {real(random), real(random), 0};
    for (auto& node : p) node[2] = 3 * node[0] - 2 * node[1] + std::pow(10, -8 - 6 * real(random)) * real(random);
    const auto Q =
        mesh(samples[3], 3, {p, {p[1], p[2], p[0], p[3]}, {p[3], p[2], p[1], p[0]}, {p[0], p[1], p[3], p[2]}})
            .measure(true);
    for (unsigned j = 1; j < 4; ++j) ASSERT_NEAR(j == 3 ? -Q[j] : Q[j], Q[0], 2e-12 + 1e-5 * std::abs(Q[0]));
    // Here all orders of one orientation are tried, whichever comes first, and the same one decides.
    const bool all_orders = std::abs(Q[0]) > 1e-12 && std::abs(Q[0]) < 5e-11;
    ASSERT_TRUE(!all_orders || (Q[1] == Q[0] && Q[2] == Q[0]));
  }
}

TEST(shapes, mixed_and_short_matrices_ties_and_codes) {
  dense2D<double> coords(3, 8);
  for (unsigned j = 0; j < 8; ++j) std::copy_n(samples[6].ideal[j].begin(), 3, coords.column(j));
  coords(2, 6) = 1.5;
  const unsigned nodes[] = {0, 1, 3, 4, 2, 6, 5, 7};
  for (const sample& s : samples) {
    if (s.s.boundary_nodes == 1) continue;
    const unsigned rows = s.s.boundary_nodes > 2 ? 8 : 4;
    const element_type type = rows == 8 ? ELT_SOLID_MIX : ELT_FACE_MIX;
    dense2D<unsigned> mixed(rows, 2, none);
    for (unsigned e = 0; e < 2; ++e) std::copy_n(nodes + e * (8 - s.s.nodes), s.s.nodes, mixed.column(e));
    const dense2D<unsigned> pure = mixed.sub_matrix(0, 0, s.s.nodes, 2);
    for (const auto measure : {shape_qualities, jacobians}) {
      dense1D<double> in_mixed, in_pure, in_short;
      EXPECT_EQ(measure(coords, with_gaps(mixed, 3U), type, in_mixed), 0);
      EXPECT_EQ(measure(coords, pure, s.s.type, in_pure), 0);
      EXPECT_EQ(measure(coords, pure, type, in_short), 0);
      EXPECT_ALL(in_mixed == in_pure, in_short == in_pure) << s.s.nodes;
    }
  }
  double q;
  unsigned j;
  const dense2D<unsigned> twice(3, 3, {0, 1, 2, 0, 1, 1, 2, 2, 0});
  EXPECT_EQ(min_quality(coords, twice, ELT_TRIA3, q, j), 0);
  EXPECT_ALL(q == 0, j == 1);

  const dense2D<double> four_rows(4, 8, 0.0);
  const struct {
    const dense2D<double>& coords;
    dense2D<unsigned> connectivity;
    element_type type;
    int code;
  } cases[] = {{four_rows, dense2D<unsigned>(3, 0), ELT_TRIA6, 0},
               {four_rows, twice, ELT_QUAD4, -1},
               {coords, twice, ELT_QUAD4, -2},
               {coords, dense2D<unsigned>(3, 1, 8), ELT_TRIA3, -2},
               {coords, dense2D<unsigned>(6, 1, 0), ELT_TRIA6, -3},
               {coords, dense2D<unsigned>(10, 1, 0), ELT_TETRA10, -3},
               {coords, dense2D<unsigned>(2, 1, 0), ELT_EDGE_MIX, -3},
               {coords, dense2D<unsigned>(1, 1, 0), ELT_NODE, -3},
               {coords, dense2D<unsigned>(2, 1, 0), ELT_EDGE2, 0}};
  for (const auto& c : cases) {
    dense1D<double> Q{1, 2}, J{1, 2};
    q = 7, j = 7;
    EXPECT_EQ(shape_qualities(c.coords, c.connectivity, c.type, Q), c.code);
    EXPECT_EQ(jacobians(c.coords, c.connectivity, c.type, J), c.code);
    EXPECT_EQ(min_quality(c.coords, c.connectivity, c.type, q, j), c.code);
    EXPECT_ALL(q == 1, j == none);
    EXPECT_EQ(Q.size() + J.size(), c.code == 0 ? 2 * c.connectivity.cols() : 0);
  }
}

}  // namespace
}  // namespace qel::gridwork
