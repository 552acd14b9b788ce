#include <gtest/gtest.h>

#include <cmath>

#include "qel/gridwork.h"
#include "tests/facts.h"
#include "tests/random_meshes.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using ids = dense1D<unsigned>;
using reals = dense1D<double>;

constexpr double largest = std::numeric_limits<double>::max();

reals copy_of(const reals& a) {
  reals result;
  return result.copy(a) ? result : reals();
}

/// n nodes on the x axis, `step` apart, each joined with the next.
struct chain {
  dense2D<double> coords;
  dense2D<unsigned> edges;

  explicit chain(unsigned n, double step = 1, unsigned rows = 2) : coords(rows, n), edges(2, n - 1) {
    for (unsigned i = 0; i < n; ++i) coords(0, i) = step * i;
    for (unsigned i = 0; i + 1 < n; ++i) edges(0, i) = i, edges(1, i) = i + 1;
  }

  int bound(reals& sizes, double variation, ids& changed) const {
    return bound_metric_variations(coords, edges, ELT_EDGE2, sizes, variation, changed);
  }
};

/// A lattice of tetrahedra or triangles whose nodes are moved a little.
struct lattice {
  dense2D<double> coords;
  dense2D<unsigned> connectivity;
  element_type type;

  lattice(unsigned dim, unsigned cells) : type(dim == 2 ? ELT_TRIA3 : ELT_TETRA4) {
    const unsigned n = cells + 1, layers = dim == 2 ? 1 : n;
    generator random(dim);
    coords = dense2D<double>(dim, n * n * layers);
    connectivity = dense2D<unsigned>(dim + 1, 0);
    constexpr unsigned paths[6][4] = {{0, 1, 3, 7}, {0, 2, 3, 7}, {0, 1, 5, 7},
                                      {0, 4, 5, 7}, {0, 2, 6, 7}, {0, 4, 6, 7}};
    for (unsigned node = 0; node < coords.cols(); ++node) {
      const unsigned at[3] = {node % n, node / n % n, node / n / n};
      for (unsigned k = 0; k < dim; ++k) coords(k, node) = (at[k] + 0.4 * real(random)) / cells;
      if (at[0] == cells || at[1] == cells || (dim == 3 && at[2] == cells)) continue;
      for (unsigned p = 0; p < (dim == 2 ? 2 : 6); ++p) {
        unsigned element[4];
        for (unsigned i = 0; i <= dim; ++i) {
          element[i] = node + (paths[p][i] & 1) + n * (paths[p][i] >> 1 & 1) + n * n * (paths[p][i] >> 2);
        }
        if (!connectivity.push_back_column(element)) std::abort();
      }
    }
  }

  int bound(reals& sizes, double g) const { return bound_metric_gradations(coords, connectivity, type, sizes, g); }
  int bound(dense2D<double>& tensors, double g) const {
    return bound_metric_gradations(coords, connectivity, type, tensors, g);
  }
  int vary(dense2D<double>& tensors, double v) const {
    return bound_metric_variations(coords, connectivity, type, tensors, v);
  }

  /// Small at a sphere through the lattice, up to 1 elsewhere.
  double size_at(unsigned node) const {
    double square = 0;
    for (unsigned k = 0; k < coords.rows(); ++k) square += coords(k, node) * coords(k, node);
    return std::abs(std::sqrt(square) - 0.7) < 0.1 ? 0.01 : 1;
  }

  reals sizes() const {
    reals all(coords.cols());
    for (unsigned i = 0; i < all.size(); ++i) all[i] = size_at(i);
    return all;
  }

  /// Thin across that sphere.
  dense2D<double> tensors() const {
    const auto dim = static_cast<unsigned>(coords.rows());
    dense2D<double> all(dim * (dim + 1) / 2, coords.cols());
    for (unsigned j = 0; j < coords.cols(); ++j) {
      double square = 1e-9;
      for (unsigned k = 0; k < dim; ++k) square += coords(k, j) * coords(k, j);
      double* M = all.column(j);
      for (unsigned c = 0; c < dim; ++c) {
        for (unsigned r = 0; r <= c; ++r) {
          *M++ = (r == c ? 4 : 0) + (1 / std::pow(size_at(j), 2) - 1) * coords(r, j) * coords(c, j) / square;
        }
      }
    }
    return all;
  }
};

TEST(gradation, sizes_of_a_chain_by_hand) {
  const chain c(6);
  reals sizes{9, 0.25, 5, 5, 5, 0.5}, factor = copy_of(sizes);
  ids changed{7};
  EXPECT_EQ(c.bound(sizes, 0.5, changed), 4);
  EXPECT_EQ(sizes, (reals{0.75, 0.25, 0.75, 1.25, 1, 0.5}));
  EXPECT_EQ(changed, (ids{0, 2, 3, 4}));
  EXPECT_EQ(bound_metric_gradations(c.coords, c.edges, ELT_EDGE2, factor, std::exp(1)), 4);
  for (unsigned i = 0; i < 6; ++i) EXPECT_NEAR(factor[i], (reals{1.25, 0.25, 1.25, 2.25, 1.5, 0.5})[i], 1e-15);
  EXPECT_EQ(c.bound(sizes, 0, changed), 5);
  EXPECT_EQ(sizes, reals(6, 0.25));
}

TEST(gradation, edges_that_are_not_sound_are_skipped) {
  chain c(9, 1, 3);
  c.coords(1, 2) = not_a_number, c.coords(0, 3) = infinity;
  reals sizes{1, 9, 9, 1, 9, 0, 1, not_a_number};
  const reals before = copy_of(sizes);
  ids changed;
  double shock = 0;
  EXPECT_EQ(c.bound(sizes, 1, changed), -4);
  EXPECT_EQ(changed, ids{1});
  for (unsigned i = 0; i < 7; ++i) EXPECT_EQ(sizes[i], i == 1 ? 2 : before[i]);
  EXPECT_EQ(H_shock(c.coords, c.edges, ELT_EDGE2, before, shock), -4);
  EXPECT_DOUBLE_EQ(shock, std::exp(8.0));
  for (const double bad : {0.0, -1.0, -infinity, infinity, largest, not_a_number}) {
    reals two{0.5, bad};
    const chain one(2);
    EXPECT_EQ(one.bound(two, 0.25, changed), -4);
    EXPECT_ALL(changed.empty(), two[0] == 0.5, std::memcmp(&two[1], &bad, sizeof bad) == 0);
  }
  // A length beyond the range of numbers, and a square beyond it.
  chain far(2, 1.5e308), distant(2, 1e200);
  reals sizes1{1, 1e300}, sizes2{1, 1e300};
  far.coords(0, 0) = -1e308;
  EXPECT_EQ(far.bound(sizes1, 1, changed), -4);
  EXPECT_EQ(distant.bound(sizes2, 1, changed), 1);
  EXPECT_ALL(sizes1[1] == 1e300, sizes2[1] == 1e200);
}

TEST(gradation, invalid_tensors_and_missing_ones_are_skipped) {
  const chain c(6);
  dense2D<double> tensors(3, 5, {100, 0, 100, 1, 0, 1, 1, 2, 1, 100, 0, 100, 1, 0, not_a_number});
  ids changed{1};
  double shock = 0;
  EXPECT_EQ(bound_metric_gradations(c.coords, c.edges, ELT_EDGE2, tensors, 1.1, changed), -4);
  EXPECT_EQ(changed, ids{1});
  EXPECT_EQ(H_shock(c.coords, c.edges, ELT_EDGE2, dense2D<double>(6, 6, 1.0), shock), -4);
  EXPECT_EQ(shock, 1);
  EXPECT_EQ(bound_metric_variations(c.coords, c.edges, ELT_EDGE2, tensors = dense2D<double>(2, 6, 1.0), 1), -4);
  // Vectors that cannot be scaled.
  chain broken(3);
  broken.coords(0, 0) = infinity, broken.coords(1, 2) = not_a_number;
  EXPECT_EQ(H_shock(broken.coords, broken.edges, ELT_EDGE2, dense2D<double>(3, 3, {4, 0, 1, 1, 0, 4, 4, 0, 1}), shock),
            -4);
  EXPECT_EQ(shock, 1);
}

TEST(gradation, coincident_nodes_get_the_same_size) {
  const chain c(3, 0);
  reals sizes{3, 1, 2};
  ids changed;
  double shock = 0;
  dense2D<double> tensors(3, 3, {4, 0, 1, 1, 0, 4, 1, 0, 1});
  EXPECT_EQ(H_shock(c.coords, c.edges, ELT_EDGE2, sizes, shock), 2);
  EXPECT_EQ(shock, infinity);
  EXPECT_EQ(H_shock(c.coords, c.edges, ELT_EDGE2, tensors, shock), 2);
  EXPECT_EQ(shock, infinity);
  EXPECT_EQ(c.bound(sizes, 7, changed), 2);
  EXPECT_EQ(sizes, reals(3, 1.0));
  EXPECT_EQ(bound_metric_gradations(c.coords, c.edges, ELT_EDGE2, tensors, 3), 3);
  for (unsigned j = 0; j < 3; ++j) EXPECT_ALL(tensors(0, j) == 4, tensors(1, j) == 0, tensors(2, j) == 4);
  EXPECT_EQ(H_shock(c.coords, c.edges, ELT_EDGE2, tensors, shock), 2);
  EXPECT_EQ(shock, 1);
}

TEST(gradation, result_codes_in_their_order) {
  const dense2D<double> line(1, 2, 1.0), plane(2, 2, 1.0);
  const dense2D<unsigned> edge(2, 1, {0, 1}), beyond(2, 1, {0, 2});
  reals sizes{1, 0};
  dense2D<double> tensors(3, 2, {1, 0, 1, 0, 0, 0});
  ids changed;
  double shock = 3;
  histogram H;
  const auto expect = [&](int code, const auto& coords, const auto& m, int type, double bound, auto& field) {
    const auto t = static_cast<element_type>(type);
    for (const double g : {bound, -infinity + bound, not_a_number}) {
      const int with_bound = code == -4 && g != bound ? -5 : code;
      EXPECT_EQ(bound_metric_gradations(coords, m, t, field, g), with_bound);
      EXPECT_EQ((changed = ids{5}, bound_metric_gradations(coords, m, t, field, g, changed)), with_bound);
      EXPECT_TRUE(changed.empty());
      EXPECT_EQ(bound_metric_variations(coords, m, t, field, g), with_bound);
      EXPECT_EQ((changed = ids{5}, bound_metric_variations(coords, m, t, field, g, changed)), with_bound);
      EXPECT_TRUE(changed.empty());
    }
    EXPECT_EQ(H_shock(coords, m, t, field, shock = 3), code);
    EXPECT_EQ(shock, 1);
    EXPECT_EQ(H_shock(coords, m, t, field, H), code);
    EXPECT_EQ(H.count(), 0U);
  };
  const auto expect_both = [&](int code, const auto& coords, const auto& m, int type, double bound) {
    expect(code, coords, m, type, bound, sizes), expect(code, coords, m, type, bound, tensors);
  };
  expect_both(-1, line, beyond, 77, 2);
  for (const int type : {-1, 23, int{ELT_TRIA3}}) expect_both(-2, plane, edge, type, 2);
  expect_both(-2, plane, beyond, ELT_EDGE2, 2);
  expect_both(-2, plane, dense2D<unsigned>(), 99, 2);
  expect_both(-4, plane, edge, ELT_EDGE2, 2);
  EXPECT_EQ(bound_metric_gradations(plane, edge, ELT_EDGE2, sizes, 0.99), -5);
  EXPECT_EQ(bound_metric_variations(plane, edge, ELT_EDGE2, sizes, -0.01), -5);
  EXPECT_EQ(bound_metric_variations(plane, edge, ELT_EDGE2, sizes, infinity), -5);
  for (const int rule : {-1, 3}) EXPECT_EQ(metrics_gen_iso(plane, edge, ELT_EDGE2, sizes, size_rule(rule)), -5);
  EXPECT_TRUE(sizes.empty());
  EXPECT_EQ(metrics_gen_iso(line, edge, ELT_EDGE2, sizes = reals{1}), -1);
  EXPECT_EQ(metrics_gen_iso(plane, beyond, ELT_EDGE2, sizes = reals{1}, size_rule(7)), -2);
  EXPECT_TRUE(sizes.empty());
}

TEST(gradation, mid_side_nodes_and_types_without_edges) {
  lattice m(3, 1);
  dense2D<unsigned> ten(10, 1, 7U), twenty(20, 1, 3U);
  for (unsigned i = 0; i < 4; ++i) ten(i, 0) = i;
  reals sizes{1e-3, 9, 9, 9, 9, 9, 9, -1}, generated;
  EXPECT_EQ(bound_metric_gradations(m.coords, ten, ELT_TETRA10, sizes, 1.5), 3);
  EXPECT_ALL(sizes[4] == 9, sizes[7] == -1);
  EXPECT_EQ(metrics_gen_iso(m.coords, ten, ELT_TETRA10, generated), 4);
  EXPECT_ALL(generated.size() == 8, generated[7] == 0);
  double shock = 0;
  EXPECT_EQ(bound_metric_gradations(m.coords, twenty, ELT_HEXA20, sizes, 1.5), 0);
  EXPECT_EQ(H_shock(m.coords, twenty, ELT_HEXA20, sizes, shock), 0);
  EXPECT_EQ(shock, 1);
}

/// With the longest chains and stars, once more than a node's turn would be seen as time.
TEST(gradation, long_chains_stars_and_pieces) {
  constexpr unsigned n = 1000001;
  const chain c(n, 0x1p-10);
  reals sizes(n, 1e9);
  sizes[n / 2] = 1;
  ids changed;
  EXPECT_EQ(c.bound(sizes, 0.5, changed), int{n} - 1);
  for (unsigned i = 0; i < n; i += 1000) EXPECT_EQ(sizes[i], 1 + 0x1p-11 * std::abs(double(i) - n / 2)) << i;
  dense2D<unsigned> star(2, 100000);
  for (unsigned j = 0; j < star.cols(); ++j) star(0, j) = 0, star(1, j) = 2 * j + 1;  // half of the nodes lie apart
  reals round(n, 1e9);
  round[7] = 1;
  EXPECT_EQ(bound_metric_variations(c.coords, star, ELT_EDGE2, round, 1), 100000);
  EXPECT_ALL(round[0] == 1 + 7 * 0x1p-10, round[1] == 1 + 8 * 0x1p-10, round[2] == 1e9);
}

TEST(gradation, sizes_over_hundreds_of_orders_of_magnitude) {
  chain c(600);
  reals sizes(600, 1e307);
  for (unsigned i = 0; i < 600; ++i) c.coords(0, i) = std::pow(10, i - 300.0);
  sizes[0] = 1e-310;
  ids changed;
  double shock = 0;
  EXPECT_EQ(c.bound(sizes, 0.25, changed), 599);
  for (unsigned i = 1; i < 600; ++i) EXPECT_NEAR(sizes[i] / (0.25 * (c.coords(0, i) - c.coords(0, 0))), 1, 1e-9);
  EXPECT_EQ(H_shock(c.coords, c.edges, ELT_EDGE2, sizes, shock), 599);
  EXPECT_NEAR(shock, std::exp(0.25), 1e-14);
}

TEST(gradation, lengths_in_a_metric_whose_squares_leave_the_range) {
  const chain c(2, 0x1p100);
  dense2D<double> tensors(3, 2, {0x1p1000, 0, 0x1p1000, 0x1p-400, 0, 0x1p-400});
  EXPECT_EQ(bound_metric_gradations(c.coords, c.edges, ELT_EDGE2, tensors, std::exp(1.0)), 1);
  EXPECT_NEAR(tensors(0, 1) * 0x1p200, 1, 1e-14) << "1 / (1 + 2^600)^2 of the other";
}

TEST(gradation, bounded_by_larger_and_scaled_alike) {
  const lattice m(3, 6);
  const reals given = m.sizes();
  reals bounded = copy_of(given), denser = copy_of(given), stricter = copy_of(given), scaled = copy_of(given);
  EXPECT_GT(m.bound(bounded, 1.3), 0);
  EXPECT_EQ(m.bound(bounded, 1.3), 0);
  double shock = 0;
  EXPECT_GT(H_shock(m.coords, m.connectivity, m.type, bounded, shock), 0);
  EXPECT_LE(shock, 1.3 * (1 + 1e-14));
  denser[5] = 1e-3;
  EXPECT_GT(m.bound(denser, 1.3), 0);
  EXPECT_GT(m.bound(stricter, 1.2), 0);
  for (unsigned i = 0; i < given.size(); ++i) {
    EXPECT_ALL(denser[i] <= bounded[i], stricter[i] <= bounded[i], bounded[i] <= given[i]);
  }
  for (const double factor : {0x1p-700, 0x1p-3, 0x1p900}) {
    lattice other = m;
    other.coords = deep_copy(m.coords);
    for (unsigned i = 0; i < other.coords.size(); ++i) other.coords.data()[i] *= factor;
    for (unsigned i = 0; i < given.size(); ++i) scaled[i] = factor * given[i];
    EXPECT_GT(other.bound(scaled, 1.3), 0);
    for (unsigned i = 0; i < given.size(); ++i) EXPECT_EQ(scaled[i], factor * bounded[i]);
  }
}

/// M in the coordinates y = F x of a map F, given by rows: F^-T M F^-1, with the inverse G of F.
dense2D<double> mapped(const dense2D<double>& tensors, const double (&G)[3][3], unsigned dim) {
  dense2D<double> result(tensors.rows(), tensors.cols());
  for (unsigned j = 0; j < tensors.cols(); ++j) {
    const auto entry = [&](unsigned r, unsigned c) {
      return tensors(std::min(r, c) + std::max(r, c) * (std::max(r, c) + 1) / 2, j);
    };
    double* out = result.column(j);
    for (unsigned c = 0; c < dim; ++c) {
      for (unsigned r = 0; r <= c; ++r, ++out) {
        for (unsigned k = 0; k < dim * dim; ++k) *out += G[k / dim][r] * entry(k / dim, k % dim) * G[k % dim][c];
      }
    }
  }
  return result;
}

void expect_near(const dense2D<double>& a, const dense2D<double>& b, double tolerance) {
  for (unsigned j = 0; j < a.cols(); ++j) {
    double scale = 0;
    for (unsigned k = 0; k < a.rows(); ++k) scale = std::max(scale, std::abs(a(k, j)));
    for (unsigned k = 0; k < a.rows(); ++k) EXPECT_NEAR(a(k, j), b(k, j), tolerance * scale) << j;
  }
}

class tensor_gradation : public testing::TestWithParam<unsigned> {
 protected:
  const lattice mesh{GetParam(), GetParam() == 2 ? 12U : 5U};
};

TEST_P(tensor_gradation, isotropic_tensors_become_those_of_the_bounded_sizes) {
  reals sizes = mesh.sizes();
  dense2D<double> tensors(GetParam() == 2 ? 3 : 6, sizes.size()), varied, expected;
  const auto convert = GetParam() == 2
                           ? [](const reals& h, dense2D<double>& M) { return metrics_iso_to_aniso2d(h, M); }
                           : [](const reals& h, dense2D<double>& M) { return metrics_iso_to_aniso3d(h, M); };
  EXPECT_EQ(convert(sizes, tensors), 0);
  EXPECT_ALL(varied.copy(tensors), expected.copy(tensors));
  const int changed = mesh.bound(sizes, 1.3);
  EXPECT_EQ(convert(sizes, expected), 0);
  EXPECT_EQ(mesh.bound(tensors, 1.3), changed);
  EXPECT_EQ(mesh.vary(varied, std::log(1.3)), changed);
  expect_near(tensors, expected, 1e-12);
  expect_near(varied, expected, 1e-12);
}

TEST_P(tensor_gradation, linear_maps_commute_with_the_law_that_keeps_shapes) {
  const unsigned dim = GetParam();
  constexpr double maps[2][2][3][3] = {
      {{{2, 1, 0}, {0, 0.5, 0}, {0, 0, 1}}, {{0.5, -1, 0}, {0, 2, 0}, {0, 0, 1}}},
      {{{2, 0, 1}, {0, 0.5, 0}, {0, 0, 4}}, {{0.5, 0, -0.125}, {0, 2, 0}, {0, 0, 0.25}}}};
  const auto& [F, G] = maps[dim - 2];
  lattice image = mesh;
  image.coords = dense2D<double>(dim, mesh.coords.cols());
  for (unsigned j = 0; j < image.coords.cols(); ++j) {
    for (unsigned k = 0; k < dim * dim; ++k) image.coords(k / dim, j) += F[k / dim][k % dim] * mesh.coords(k % dim, j);
  }
  dense2D<double> tensors = mesh.tensors(), images = mapped(tensors, G, dim);
  const int changed = mesh.bound(tensors, 1.4);
  EXPECT_GT(changed, 10);
  EXPECT_EQ(image.bound(images, 1.4), changed);
  expect_near(images, mapped(tensors, G, dim), 1e-9);
}

TEST_P(tensor_gradation, powers_of_two_change_no_digit) {
  const dense2D<double> given = mesh.tensors();
  for (const bool keeps_shape : {true, false}) {
    const auto bound = [keeps_shape](const lattice& m, dense2D<double>& M) {
      return keeps_shape ? m.bound(M, 1.3) : m.vary(M, 0.3);
    };
    dense2D<double> bounded = deep_copy(given);
    EXPECT_GT(bound(mesh, bounded), 0);
    for (const int exponent : {-200, 3, 300}) {
      lattice other = mesh;
      other.coords = deep_copy(mesh.coords);
      dense2D<double> scaled = deep_copy(given);
      for (double& x : other.coords.as_vector()) x = std::ldexp(x, exponent);
      for (double& x : scaled.as_vector()) x = std::ldexp(x, -2 * exponent);
      EXPECT_GT(bound(other, scaled), 0);
      for (double& x : scaled.as_vector()) x = std::ldexp(x, 2 * exponent);
      EXPECT_EQ(scaled, bounded);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(dimensions, tensor_gradation, testing::Values(2U, 3U));

double smallest_size(const double* entries) {
  vector_fixed<double, 2> w;
  matrix_fixed<double, 2, 2> V;
  EXPECT_TRUE(eigen_pairs({entries[0], entries[1], entries[2]}, w, V));
  return 1 / std::sqrt(w[1]);
}

/// Bounded in rounds over all edges, this chain keeps less than a tenth and a quarter of its smallest size.
TEST(gradation, turning_thin_metrics_do_not_shrink_much) {
  constexpr double thin = 1e4;
  const chain c(400, 0.002);
  dense2D<double> tensors(3, 400), varied;
  for (unsigned j = 0; j < 400; ++j) {
    const double cosine = std::cos(0.05 * j), sine = std::sin(0.05 * j);
    const double M[3] = {1 + (thin - 1) * cosine * cosine, (thin - 1) * sine * cosine, 1 + (thin - 1) * sine * sine};
    std::copy_n(M, 3, tensors.column(j));
  }
  EXPECT_TRUE(varied.copy(tensors));
  EXPECT_GT(bound_metric_gradations(c.coords, c.edges, ELT_EDGE2, tensors, 1.3), 0);
  EXPECT_GT(bound_metric_variations(c.coords, c.edges, ELT_EDGE2, varied, std::log(1.3)), 0);
  for (unsigned j = 0; j < 400; ++j) {
    EXPECT_GT(smallest_size(tensors.column(j)), 0.48 / std::sqrt(thin));
    EXPECT_GT(smallest_size(varied.column(j)), 0.53 / std::sqrt(thin));
  }
}

TEST(H_shock, of_one_edge) {
  double shock = 7, q = 0;
  EXPECT_EQ(H_shock(-1, 1, 1, shock), -1);
  EXPECT_EQ(H_shock(not_a_number, 0, 1, shock), -1);
  for (const double bad : {0.0, -1.0, largest, infinity, not_a_number}) {
    EXPECT_EQ(H_shock(1, bad, bad, shock), -2);
    EXPECT_EQ(H_shock(1, 1, bad, shock), -3);
  }
  EXPECT_EQ(shock, 7);
  EXPECT_ALL(H_shock(0, 3, 3, shock) == 0, shock == 1);
  EXPECT_ALL(H_shock(0, 3, 4, shock) == 0, shock == infinity);
  EXPECT_ALL(H_shock(infinity, 3, 4, shock) == 0, shock == 1);
  EXPECT_ALL(H_shock(2, 3, 5, shock) == 0, edge_quality(2, 3, 5, q) == 0);
  EXPECT_NEAR(shock, std::pow(5.0 / 3, 1 / q), 1e-14);
}

TEST(H_shock, of_tensors_is_that_of_the_sizes_along_the_edge) {
  const chain c(2, 0.5);
  double shock = 0;
  EXPECT_EQ(H_shock(c.coords, c.edges, ELT_EDGE2, dense2D<double>(3, 2, {4, 0, 7, 1, 0, 9}), shock), 1);
  EXPECT_DOUBLE_EQ(shock, std::exp(1));
  for (const double step : {1e-200, 1e200}) {
    const chain scaled(2, 0.5 * step);
    const double M = 1 / step;
    EXPECT_EQ(
        H_shock(scaled.coords, scaled.edges, ELT_EDGE2, dense2D<double>(3, 2, {4 * M, 0, 7 * M, M, 0, 9 * M}), shock),
        1);
    const double logarithm = std::sqrt(step) / step;
    EXPECT_EQ(shock, logarithm > 1 ? infinity : 1);
  }
}

/// Lengths whose inverses are infinite: a difference of these would be no number.
TEST(H_shock, of_tensors_along_the_shortest_edges) {
  const chain c(2, 5e-324);
  const dense2D<double> tensors(3, 2, {1, 0, 1, 1e4, 0, 1});
  histogram H;
  double shock = 0;
  EXPECT_EQ(H_shock(c.coords, c.edges, ELT_EDGE2, tensors, H), 1);
  EXPECT_ALL(H.above() == 1, H.not_a_number() == 0);
  EXPECT_EQ(H_shock(c.coords, c.edges, ELT_EDGE2, tensors, shock), 1);
  EXPECT_EQ(shock, infinity);
}

TEST(metrics_gen_iso, mean_shortest_and_longest) {
  const dense2D<double> coords(2, 5, {0, 0, 3, 0, 3, 4, 0, 4, 9, 9});
  const dense2D<unsigned> triangle(3, 1, {0, 1, 2});
  reals sizes{1};
  EXPECT_EQ(metrics_gen_iso(coords, triangle, ELT_TRIA3, sizes), 3);
  EXPECT_EQ(sizes, (reals{4, 3.5, 4.5, 0, 0}));
  EXPECT_EQ(metrics_gen_iso(coords, triangle, ELT_TRIA3, sizes, SIZE_SHORTEST), 3);
  EXPECT_EQ(sizes, (reals{3, 3, 4, 0, 0}));
  EXPECT_EQ(metrics_gen_iso(coords, triangle, ELT_TRIA3, sizes, SIZE_LONGEST), 3);
  EXPECT_EQ(sizes, (reals{5, 4, 5, 0, 0}));
  EXPECT_EQ(metrics_gen_iso(coords, dense2D<unsigned>(), ELT_TRIA3, sizes), 0);
  EXPECT_EQ(sizes, reals(5));
}

TEST(metrics_gen_iso, the_mean_of_the_largest_lengths_is_finite) {
  const dense2D<double> coords(2, 4, {0, 0, largest, 0, -largest, 0, 1, 0});
  const dense2D<unsigned> edges(2, 3, {0, 1, 0, 2, 0, 3});
  reals sizes;
  EXPECT_EQ(metrics_gen_iso(coords, edges, ELT_EDGE2, sizes), 4);
  EXPECT_NEAR(sizes[0] / largest, 2.0 / 3, 1e-15);
  EXPECT_ALL(sizes[1] == largest, sizes[3] == 1);
}

}  // namespace
}  // namespace qel::gridwork
