#include <gtest/gtest.h>

#include <utility>

#include "core/vectors.h"
#include "qel/gridwork.h"
#include "tests/facts.h"
#include "tests/random_meshes.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using tensor2 = symmetric_fixed<double, 2>;
using tensor3 = symmetric_fixed<double, 3>;

constexpr double largest = std::numeric_limits<double>::max();

// Each substitute lies where the size before it is written.
TEST(overwrite_invalid_metrics, by_defaults_that_it_changes) {
  dense1D<double> all{-1, 2, -3, -4, 5}, sizes = all.sub_vector(1, 4), defaults = all.sub_vector(0, 4);
  EXPECT_EQ(overwrite_invalid_metrics(sizes, defaults), 1);  // -4 has the default -3
  EXPECT_TRUE(all == dense1D<double>({-1, 2, 2, -4, 5}));
  dense2D<double> tensors(3, 2, {0.5, 0, 0, 0, 0, 0});
  const dense1D<double> in_tensors = tensors.as_vector().sub_vector(0, 2);
  EXPECT_EQ(metrics_iso_to_aniso2d(in_tensors, tensors), 0);
  EXPECT_TRUE(tensors == dense2D<double>(3, 2, {4, 0, 4, 0, 0, 0}));
}

TEST(metrics, plane_tensors_beyond_the_range_of_squares) {
  for (const double scale : {0x1p-1000, 0x1p-300, 0x1p300, 0x1p1000}) {
    vector_fixed<double, 2> w;
    matrix_fixed<double, 2, 2> V;
    EXPECT_TRUE(eigen_pairs(tensor2{2 * scale, scale, 2 * scale}, w, V));
    EXPECT_EQ(w, (vector_fixed<double, 2>{scale, 3 * scale}));
  }
}

TEST(metrics, pairs_of_a_negative_definite_tensor_in_the_plane_descend) {
  vector_fixed<double, 2> w;
  matrix_fixed<double, 2, 2> V;
  EXPECT_TRUE(eigen_pairs(tensor2{-1, 0, -2}, tensor2{1, 0, 5}, w, V));
  EXPECT_EQ(w, (vector_fixed<double, 2>{-1, -2.5}));
}

template <unsigned N>
void expect_isotropic_bounds_of_broken_tensors() {
  symmetric_fixed<double, N> bounds{};
  for (unsigned k = 0; k < N; ++k) bounds(k, k) = 4;
  for (const double bad : {not_a_number, infinity}) {
    symmetric_fixed<double, N> M = bounds;
    M[1] = bad;
    EXPECT_FALSE(is_valid_metric(M));
    EXPECT_EQ(bound_metric(M, 0.5, 2), 1);
    EXPECT_EQ(M, bounds);
  }
}

TEST(metrics, intersection_and_union) {
  tensor2 M;
  EXPECT_ALL(minimum_metric(tensor2{1, 0, 4}, tensor2{4, 0, 1}, M), M == (tensor2{4, 0, 4}));
  EXPECT_ALL(maximum_metric(tensor2{1, 0, 4}, tensor2{4, 0, 1}, M), M == (tensor2{1, 0, 1}));
}

using direction = vector_fixed<double, 3>;

long double form(const tensor3& M, const direction& u) {
  long double sum = 0;
  for (unsigned k = 0; k < 9; ++k) sum += static_cast<long double>(M(k / 3, k % 3)) * u[k / 3] * u[k % 3];
  return sum;
}

/// The diagonal tensor of these eigenvalues, reflected.
tensor3 reflected(const direction& eigenvalues, const direction& mirror) {
  tensor3 M{};
  for (unsigned i = 0; i < 3; ++i) {
    const double twice = 2 * mirror[i] / detail::dot(mirror, mirror);
    direction axis{};
    for (unsigned k = 0; k < 3; ++k) axis[k] = (k == i) - twice * mirror[k];
    for (unsigned k = 0; k < 9; ++k) {
      if (k / 3 <= k % 3) M(k / 3, k % 3) += eigenvalues[i] * axis[k / 3] * axis[k % 3];
    }
  }
  return M;
}

/// Tensors of boundary layers, whose sizes differ by `aspect`, nearly parallel or not at all: errors stay in proportion
/// to the condition aspect^2, in the directions of the smallest eigenvalues too.
TEST(metrics, intersection_and_union_of_very_anisotropic_tensors) {
  generator random(5);
  for (const double aspect : {10.0, 1e3, 1e4, 1e5}) {
    const double tolerance = 1e-14 * aspect * aspect, thin = aspect * aspect;
    const direction spectra[] = {{thin, 1, 1.5}, {1, thin, 1.1 * thin}, {thin, aspect, 1}};
    for (int run = 0; run < 9000; ++run) {
      direction mirror, tilted;
      for (double& x : mirror) x = real(random) - 0.5;
      const double tilt = std::pow(10, -8 * real(random));
      for (unsigned k = 0; k < 3; ++k) tilted[k] = mirror[k] + tilt * (real(random) - 0.5);
      const tensor3 A = reflected(spectra[run % 3], mirror), B = reflected(spectra[run / 3 % 3], tilted);
      tensor3 least, most, least_back, most_back;
      ASSERT_ALL(minimum_metric(A, B, least), maximum_metric(A, B, most));
      ASSERT_ALL(minimum_metric(B, A, least_back), maximum_metric(B, A, most_back));
      direction w;
      matrix_fixed<double, 3, 3> V[3];
      ASSERT_ALL(eigen_pairs(A, w, V[0]), eigen_pairs(least, w, V[1]), eigen_pairs(most, w, V[2]));
      for (unsigned j = 0; j < 9; ++j) {
        const direction u = {V[j / 3](0, j % 3), V[j / 3](1, j % 3), V[j / 3](2, j % 3)};
        const auto [a, b] = std::minmax({form(A, u), form(B, u)});
        ASSERT_NEAR(double(form(least_back, u) / form(least, u)), 1, tolerance);
        ASSERT_NEAR(double(form(most_back, u) / form(most, u)), 1, tolerance);
        ASSERT_ALL(form(least, u) > b * (1 - tolerance), form(most, u) < a * (1 + tolerance));
      }
    }
  }
  const tensor3 sound{2, 1, 2, 0, 0, 1}, flat{1, 1, 1, 0, 0, 1}, indefinite{1, 0, 1, 0, 0, -1e-14};
  for (const tensor3& bad : {flat, indefinite}) {
    tensor3 M;
    EXPECT_FALSE(minimum_metric(sound, bad, M) || M != sound || maximum_metric(sound, bad, M) || M != sound);
    EXPECT_FALSE(minimum_metric(bad, sound, M) || M != bad || maximum_metric(bad, sound, M) || M != bad);
  }
}

TEST(metrics, bounds) {
  expect_isotropic_bounds_of_broken_tensors<2>(), expect_isotropic_bounds_of_broken_tensors<3>();
  dense2D<double> none_of(4, 2, 1.0);
  dense1D<double> sizes{0.1, 1, 10, not_a_number, 0.5, 2}, empty;
  dense1D<unsigned> ids{9, 9};
  EXPECT_EQ(bound_metrics(sizes, 0.5, 2, ids), 3);
  EXPECT_EQ(ids, (dense1D<unsigned>{0, 2, 3}));
  EXPECT_EQ(sizes, (dense1D<double>{0.5, 1, 2, 0.5, 0.5, 2}));
  dense1D<double> none_left{-1, 3, not_a_number}, contradicted{1, 2.5, 5, infinity};
  EXPECT_ALL(bound_metrics(none_left, 0, 0) == 3, none_left == (dense1D<double>{0, 0, 0}));
  EXPECT_ALL(bound_metrics(contradicted, 3, 2) == 4, contradicted == (dense1D<double>{3, 3, 2, 2}));
  tensor2 both{100, 0, 0.01}, indefinite{1, 0, -1};
  EXPECT_ALL(bound_metric(both, 3, 2) == 1, both == (tensor2{0.25, 0, 0.25}));
  EXPECT_ALL(bound_metric(indefinite, 0.5, 0) == 1, indefinite == (tensor2{1, 0, 0}));
  const struct {
    double hmin, hmax;
    int code;
  } cases[] = {{not_a_number, largest, 0}, {0, largest, 0},       {infinity, largest, -2}, {not_a_number, 1, -2},
               {0.5, infinity, -3},        {1, not_a_number, -3}, {-infinity, 1, -2},      {0.5, 2, 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(bound_metrics(sizes, c.hmin, c.hmax, ids), c.code);
    EXPECT_EQ(bound_metrics(none_of, c.hmin, c.hmax, ids), c.hmax == largest && !(c.hmin > 0) ? 0 : -1);
    EXPECT_EQ(bound_metrics(empty, c.hmin, c.hmax), 0);
    EXPECT_TRUE(ids.empty());
  }
}

TEST(metrics, validity) {
  const dense1D<double> sizes{1, 1e300, 1e-300, 0, 2};
  const dense2D<double> tensors(
      6, 4, {1, 0, 1, 0, 0, 1e-200, 1, 1, 1, 0, 0, 1, 2, 1, 2, 1, 1, 2, 1, not_a_number, 1, 0, 0, 1});
  const dense1D<unsigned> good{2, 0}, bad{0, 2, 1, 0}, none{0, 4, 5, ~0U};
  dense1D<unsigned> ids{7};
  EXPECT_ALL(first_invalid_metric(sizes) == 3, first_invalid_metric(dense1D<double>{1, largest}) == 1);
  EXPECT_ALL(first_invalid_metric(good, sizes) == 2, first_invalid_metric(none, sizes) == 2);
  EXPECT_ALL(first_invalid_metric(tensors) == 1, first_invalid_metric(dense2D<double>(4, 2, 1.0)) == 0);
  EXPECT_ALL(first_invalid_metric(bad, tensors) == 2, first_invalid_metric(none, tensors) == 1);
  EXPECT_ALL(are_valid_metrics(good, tensors), are_valid_metrics(dense2D<double>()), are_valid_metrics(good, sizes));
  EXPECT_FALSE(are_valid_metrics(bad, tensors) || are_valid_metrics(dense2D<double>(4, 2, 1.0)) ||
               are_valid_metrics(sizes));
  valid_metrics(with_gaps(tensors, 1.0), ids);
  valid_metrics(dense2D<double>(4, 2, 1.0), ids);
  EXPECT_EQ(ids, (dense1D<unsigned>{7, 0, 2}));
}

TEST(metrics, conversions_and_repair) {
  const dense1D<double> sizes{0.5, 0, 2};
  dense2D<double> plane(3, 4, 9.0), space(6, 3, 9.0), none;
  EXPECT_EQ(metrics_iso_to_aniso2d(sizes, plane) + metrics_iso_to_aniso3d(sizes, space), 0);
  EXPECT_EQ(plane, dense2D<double>(3, 4, {4, 0, 4, 9, 9, 9, 0.25, 0, 0.25, 9, 9, 9}));
  EXPECT_EQ(space, dense2D<double>(6, 3, {4, 0, 4, 0, 0, 4, 9, 9, 9, 9, 9, 9, 0.25, 0, 0.25, 0, 0, 0.25}));
  const dense2D<double> frames(6, 3, {1, 0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0, 0, 2, 1, 0, 0});
  dense2D<double> restricted(3, 3, 9.0), from_sizes(3, 3, 9.0);
  EXPECT_EQ(metrics_aniso3d_to_aniso2d(space, frames, restricted) + metrics_iso_to_aniso2d(sizes, frames, from_sizes),
            0);
  EXPECT_EQ(restricted, dense2D<double>(3, 3, {4, 0, 8, 9, 9, 9, 1, 0, 0.25}));
  EXPECT_EQ(from_sizes, restricted);
  const matrix_fixed<double, 3, 2> F{1, 0, 0, 0, 1, 1};
  tensor2 one, other;
  metric_iso_to_aniso2d(0.5, F, one);
  metric_aniso3d_to_aniso2d({4, 0, 4, 0, 0, 4}, F, other);
  EXPECT_ALL(one == (tensor2{4, 0, 8}), other == one);
  tensor3 M;
  metric_iso_to_aniso(not_a_number, M);
  EXPECT_EQ(M, tensor3{});
  EXPECT_EQ(metrics_iso_to_aniso2d({}, none), 0);
  EXPECT_EQ(metrics_iso_to_aniso2d(sizes, none), -2);
  EXPECT_EQ(metrics_iso_to_aniso3d(sizes, plane), -2);
  EXPECT_EQ(metrics_iso_to_aniso2d(sizes, plane, plane), -2);
  EXPECT_EQ(metrics_aniso3d_to_aniso2d(plane, frames, plane), -1);
  EXPECT_EQ(metrics_aniso3d_to_aniso2d(space, frames, none), -2);
  EXPECT_EQ(metrics_aniso3d_to_aniso2d(space, plane, plane), -2);
  EXPECT_EQ(metrics_aniso3d_to_aniso2d(none, plane, none), 0);
  EXPECT_EQ(metrics_iso_to_aniso2d(sizes, frames, none), -2);
  EXPECT_EQ(metrics_iso_to_aniso2d({}, plane, none), 0);

  dense1D<double> broken{-1, 0, not_a_number, 0, 3, 0};
  EXPECT_EQ(overwrite_invalid_metrics(broken, {5, 0, 5, 5, 5}), 2);
  EXPECT_ALL(std::isnan(std::exchange(broken[2], 1)), broken == (dense1D<double>{5, 0, 1, 5, 3, 0}));
  dense2D<double> tensors(3, 4, {1, 1, 1, 1, 0, 1, not_a_number, 0, 1, -1, 0, 1}), repaired = deep_copy(tensors);
  EXPECT_EQ(overwrite_invalid_metrics(repaired, dense2D<double>(3, 3, {5, 0, 5, 6, 0, 6, 0, 0, 0})), 1);
  EXPECT_EQ(overwrite_invalid_metrics(repaired, dense1D<double>{1, 1, 0.5, 0}), 1);
  EXPECT_TRUE(same_bits(repaired, dense2D<double>(3, 4, {5, 0, 5, 1, 0, 1, 4, 0, 4, -1, 0, 1})));
  dense2D<double> solid(6, 3, {1, 0, 1, 0, 0, -1, 1, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0}), substitutes(6, 3, 0.0);
  std::copy_n(space.column(0), 6, substitutes.column(0));
  EXPECT_EQ(overwrite_invalid_metrics(solid, substitutes), 1);
  EXPECT_EQ(solid, dense2D<double>(6, 3, {4, 0, 4, 0, 0, 4, 1, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(overwrite_invalid_metrics(repaired, space), -2);
  EXPECT_EQ(overwrite_invalid_metrics(restricted = dense2D<double>(4, 1), sizes), -1);
  EXPECT_EQ(overwrite_invalid_metrics(restricted, restricted), -1);
  EXPECT_EQ(overwrite_invalid_metrics(restricted, none), -1);
  EXPECT_EQ(overwrite_invalid_metrics(none, space), 0);
  EXPECT_EQ(overwrite_invalid_metrics(none, sizes), 0);
}

}  // namespace
}  // namespace qel::gridwork
