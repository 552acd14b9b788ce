#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "core/shapes.h"
#include "qel/gridwork.h"
#include "tests/random_meshes.h"

namespace qel::gridwork {
namespace {

using random_meshes::infinity;
using random_meshes::not_a_number;
using random_meshes::real;
using random_meshes::with_gaps;
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
    {tetrahedron_shape, {{0, 0, 0}, {0, 1, 1}, {1, 0, 1}, {1, 1, 0}}},
    {pyramid_shape, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5L, 0.5L, h3}}},
    {wedge_shape, {{0, 0, 0}, {1, 0, 0}, {0.5L, h3, 0}, {0, 0, 1}, {1, 0, 1}, {0.5L, h3, 1}}},
    {hexahedron_shape,
     {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}}}};

/// Triple products at the corners where three edges meet, in the order of neighbours that is positive in the ideal element.
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
  real_type surface = length(cross(b - a, c - a)) + length(cross(a, b)) + length(cross(b, c)) + length(cross(a, c)), most = 0;
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
  for (unsigned k = 0; k < s.s.edges; ++k) S += dot(p[s.s.edge[k][0]] - p[s.s.edge[k][1]], p[s.s.edge[k][0]] - p[s.s.edge[k][1]]);
  for (unsigned k = 0; k < s.s.boundaries; ++k) {
    const unsigned char* n = s.s.boundary[k];
    if (s.s.boundary_sizes[k] == 4) f = std::min(f, flatness(p[n[0]], p[n[1]], p[n[2]], p[n[3]]));
  }
  const real_type J = smallest_triple(s, p), q = (s.s.type == ELT_HEXA8 ? 24 : 18) * std::sqrt(3.0L) * J / std::pow(S, 1.5L);
  return {q > 0 ? q * f : q, J};
}

/// Every element with nodes of its own.
struct mesh {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  element_type type;

  mesh(const sample& s, unsigned rows, const std::vector<points>& elements) : coords(rows, s.s.nodes * elements.size()), connectivity(s.s.nodes, elements.size()), type(s.s.type) {
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

points changed(points p, const std::function<real_type(real_type)>& change) {
  for (auto& node : p) {
    for (auto& x : node) x = change(x);
  }
  return p;
}

TEST(shapes, ideal_scaled_distant_collapsed_and_broken_elements) {
  for (const sample& s : samples) {
    const bool edge = s.s.type == ELT_EDGE2;
    const auto quality = [&](const points& p) { return mesh(s, 3, {p}).measure(true)[0]; };
    const auto jacobian = [&](const points& p) { return mesh(s, 3, {p}).measure(false)[0]; };
    const int power = s.s.type == ELT_EDGE2 ? 1 : s.s.boundary_nodes == 2 ? 2 : 3;
    EXPECT_NEAR(quality(s.ideal), 1, 4e-16) << s.s.nodes;
    for (const double scale : {1e-307, 1e-150, 1e-100, 1e100, 1e150, 1.7e308}) {
      const points p = changed(s.ideal, [&](real_type x) { return scale * (x - 0.5L); });
      EXPECT_NEAR(quality(p), 1, 1e-15) << scale;
      const double expected = double(reference(s, p, true).jacobian);
      EXPECT_TRUE(jacobian(p) == expected || std::abs(jacobian(p) / expected - 1) < 1e-14) << scale;
      EXPECT_EQ(std::isinf(expected), scale > 1e308 && power > 1 || scale > 1e102 && power == 3 || scale > 1e154 && power == 2);
    }
    EXPECT_NEAR(quality(changed(s.ideal, [](real_type x) { return x + 1e8L; })), 1, 1e-7);
    for (const double value : {0.0, 1e-320, 1e300, infinity, not_a_number}) {  // all nodes at one place, or nowhere
      EXPECT_EQ(quality(changed(s.ideal, [&](real_type) { return value; })), edge) << value;
      points one_bad = s.ideal;
      one_bad.back()[1] = value;
      EXPECT_EQ(!std::isfinite(value) && !edge, !std::isfinite(value) && !edge && quality(one_bad) == 0) << value;
    }
    for (unsigned i = 0; i < s.s.nodes && !edge; ++i) {
      for (unsigned j = 0; j < i; ++j) {
        points collapsed = s.ideal;
        collapsed[i] = collapsed[j];
        EXPECT_LE(quality(collapsed), s.s.type == ELT_PYRAMID5 && i == 9 ? 1 : 1e-12) << s.s.nodes << i << j;
      }
    }
    if (s.s.boundary_nodes > 2) EXPECT_EQ(mesh(s, 2, {s.ideal}).measure(true)[0], 0);
  }
}

/// Qualities are held against long doubles, to an accuracy of that of the corners of the element.
TEST(shapes, random_elements) {
  random_meshes::generator random(2);
  for (const sample& s : samples) {
    for (const bool spatial : {false, true}) {
      if (!spatial && s.s.boundary_nodes > 2) continue;
      for (const double flat : {1.0, 1e-3, 1e-8, 1e-13}) {
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
          const double needle = s.s.type == ELT_TRIA3 && spatial ? 3e-8 : 2e-15;  // the root of a rounding error
          ASSERT_NEAR(Q[j], double(expected.quality), needle) << s.s.nodes << ' ' << flat;
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

}  // namespace
}  // namespace qel::gridwork
