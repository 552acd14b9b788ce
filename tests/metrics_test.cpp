#include <gtest/gtest.h>

#include "qel/gridwork.h"
#include "tests/random_meshes.h"

namespace qel::gridwork {
namespace {

using namespace random_meshes;
using tensor2 = symmetric_fixed<double, 2>;
using tensor3 = symmetric_fixed<double, 3>;

constexpr double largest = std::numeric_limits<double>::max();

template <unsigned N>
double form(const symmetric_fixed<double, N>& M, const vector_fixed<double, N>& u, const vector_fixed<double, N>& v) {
  double sum = 0;
  for (unsigned i = 0; i < N; ++i) {
    for (unsigned j = 0; j < N; ++j) sum += u[i] * M(i, j) * v[j];
  }
  return sum;
}

template <unsigned N>
vector_fixed<double, N> direction(generator& random) {
  vector_fixed<double, N> u;
  double length = 0;
  for (double& x : u) x = real(random) - 0.5;
  for (const double x : u) length += x * x;
  for (double& x : u) x /= std::sqrt(length);
  return u;
}

/// A tensor of eigenvalues from 1 to 10^digits, along random axes.
template <unsigned N>
symmetric_fixed<double, N> random_metric(generator& random, double digits) {
  symmetric_fixed<double, N> M{};
  for (unsigned k = 0; k < N; ++k) M(k, k) = std::pow(10, k == 0 ? digits : digits * real(random));
  const auto v = direction<N>(random);
  symmetric_fixed<double, N> R{};  // H M H with the reflection H = 1 - 2 v v'
  const auto h = [&](unsigned i, unsigned j) { return (i == j ? 1 : 0) - 2 * v[i] * v[j]; };
  for (unsigned j = 0; j < N; ++j) {
    for (unsigned i = 0; i <= j; ++i) {
      for (unsigned k = 0; k < N; ++k) R(i, j) += h(i, k) * M(k, k) * h(k, j);
    }
  }
  return R;
}

template <unsigned N>
double norm(const symmetric_fixed<double, N>& M) {
  double sum = 0;
  for (unsigned k = 0; k < N; ++k) sum += std::abs(M(k, k));
  return sum;
}

/// The steps of the closed form, one by one.
void expect_closed_form(const tensor2& M) {
  const double a = M[0], b = M[1], c = M[2], d = std::sqrt((a - c) * (a - c) + 4 * b * b);
  double l1 = (a + c - d) / 2, l2 = l1 + d;
  if (!(std::abs(l1) >= 1e-12 * std::abs(l2)))
    l1 = (a * c - b * b) / l2;
  else if (!(std::abs(l2) >= 1e-12 * std::abs(l1)))
    l2 = (a * c - b * b) / l1;
  vector_fixed<double, 2> w;
  matrix_fixed<double, 2, 2> V;
  ASSERT_EQ(eigen_pairs(M, w, V), std::isfinite(l1) && std::isfinite(l2));
  ASSERT_EQ(w, (vector_fixed<double, 2>{l1, l2}));
  ASSERT_EQ(is_valid_metric(M), l1 > 0);
  const bool first = (l1 - c) * (l1 - c) > (l1 - a) * (l1 - a);
  const vector_fixed<double, 2> e = first ? vector_fixed<double, 2>{l1 - c, b} : vector_fixed<double, 2>{b, l1 - a};
  const double s = b * b + std::max((l1 - c) * (l1 - c), (l1 - a) * (l1 - a));
  const double x = e[0] / std::sqrt(s), y = e[1] / std::sqrt(s);
  const bool isotropic = !(s > 1e-24 * std::max(a * a, c * c));
  const auto expected = isotropic ? matrix_fixed<double, 2, 2>{1, 0, 0, 1} : matrix_fixed<double, 2, 2>{x, y, -y, x};
  ASSERT_EQ(V, expected);
}

TEST(metrics, plane_tensors_follow_the_closed_form) {
  generator random(3);
  for (int i = 0; i < 20000; ++i) {
    const auto any = [&] { return (real(random) - 0.3) * std::pow(10, 16 * real(random) - 8); };
    expect_closed_form({any(), any() * real(random), any()});
    expect_closed_form(random_metric<2>(random, 18 * real(random)));
  }
  for (const tensor2& M :
       {tensor2{1, 0, 1e-30}, {1e-30, 0, 1}, {2, 0, 2}, {1, 1, 1}, {1, 2, 1}, {0, 0, 0}, {-3, 1, -2}}) {
    expect_closed_form(M);
  }
  for (const double scale : {0x1p-1000, 0x1p-300, 0x1p300, 0x1p1000}) {  // where squares leave the range
    vector_fixed<double, 2> w;
    matrix_fixed<double, 2, 2> V;
    EXPECT_TRUE(eigen_pairs(tensor2{2 * scale, scale, 2 * scale}, w, V));
    EXPECT_EQ(w, (vector_fixed<double, 2>{scale, 3 * scale}));
  }
}

template <unsigned N>
vector_fixed<double, N> column(const matrix_fixed<double, N, N>& V, unsigned j) {
  vector_fixed<double, N> v;
  for (unsigned i = 0; i < N; ++i) v[i] = V(i, j);
  return v;
}

/// Looked at along random directions and, where the bounds are tight, along the common axes and those of A and of B.
template <unsigned N>
void expect_pair_properties(const symmetric_fixed<double, N>& A, const symmetric_fixed<double, N>& B, double tolerance,
                            double union_tolerance, generator& random) {
  vector_fixed<double, N> w;
  matrix_fixed<double, N, N> V[3];
  symmetric_fixed<double, N> least, most, aliased = B;
  ASSERT_TRUE(eigen_pairs(A, w, V[0]) && eigen_pairs(B, w, V[1]) && eigen_pairs(A, B, w, V[2]));
  ASSERT_TRUE(minimum_metric(A, B, least) && maximum_metric(A, B, most) && minimum_metric(A, aliased, aliased));
  ASSERT_EQ(aliased, least);
  const double scale = norm(A) + norm(B);
  for (unsigned i = 0; i < 6 * N; ++i) {
    const auto u = i < 3 * N ? column(V[i % 3], i / 3) : direction<N>(random);
    const double a = form(A, u, u), b = form(B, u, u);
    ASSERT_GE(form(least, u, u), std::max(a, b) - tolerance * scale);
    ASSERT_LE(form(least, u, u), a + b + tolerance * scale);
    ASSERT_LE(form(most, u, u), std::min(a, b) + union_tolerance * scale);
    ASSERT_GE(form(most, u, u), 0);
  }
}

template <unsigned N>
void expect_generalized_pairs(const symmetric_fixed<double, N>& A, const symmetric_fixed<double, N>& B) {
  vector_fixed<double, N> w;
  matrix_fixed<double, N, N> V;
  ASSERT_TRUE(eigen_pairs(A, B, w, V));
  for (unsigned j = 0; j < N; ++j) {
    const auto v = column(V, j);
    ASSERT_TRUE(j == 0 || w[j - 1] <= w[j]);
    for (unsigned k = 0; k < N; ++k) {
      const double error = 1e-9 * (norm(B) + w[N - 1] * norm(A));
      ASSERT_NEAR(form(B, column(V, k), v), k == j ? w[j] * form(A, v, v) : 0.0, error);
      ASSERT_TRUE(k == j || std::abs(form(A, column(V, k), v)) <= 1e-9 * norm(A));
    }
  }
}

template <unsigned N>
void test_pairs() {
  generator random(N);
  for (int i = 0; i < 3000; ++i) {
    const auto any = [&](double digits) { return random_metric<N>(random, digits); };
    expect_generalized_pairs<N>(any(3), any(3));
    expect_pair_properties<N>(any(4), any(4), 2e-15, 2e-15, random);
    expect_pair_properties<N>(any(12), any(12), 1e-12, 1e-7, random);
    expect_pair_properties<N>(any(12), any(0), 2e-15, 2e-15, random);
    symmetric_fixed<double, N> A{}, B{}, M{};
    for (unsigned k = 0; k < N; ++k)
      A(k, k) = std::pow(10, 12 * real(random)), B(k, k) = std::pow(10, 12 * real(random));
    expect_pair_properties<N>(A, B, 2e-15, 2e-15, random);
    expect_pair_properties<N>(A, A, 2e-15, 2e-15, random);
    ASSERT_FALSE(minimum_metric(A, symmetric_fixed<double, N>{}, M));
    ASSERT_EQ(M, A);
    A(0, 0) = i % 2 == 0 ? -1 : not_a_number;
    ASSERT_FALSE(maximum_metric(A, B, B));
    ASSERT_EQ(B[2], A[2]);
  }
}

TEST(metrics, intersection_and_union_bound_both_metrics) {
  test_pairs<2>();
  test_pairs<3>();
  tensor2 M;
  EXPECT_TRUE(minimum_metric(tensor2{1, 0, 4}, tensor2{4, 0, 1}, M));
  EXPECT_EQ(M, (tensor2{4, 0, 4}));
  EXPECT_TRUE(maximum_metric(tensor2{1, 0, 4}, tensor2{4, 0, 1}, M));
  EXPECT_EQ(M, (tensor2{1, 0, 1}));
}

template <unsigned N>
void test_bounds() {
  generator random(N);
  dense2D<double> tensors(N * (N + 1) / 2, 3000), expected_tensors = deep_copy(tensors);
  dense1D<unsigned> changed_ids, expected_ids;
  for (unsigned i = 0; i < 3000; ++i) {
    const auto M = random_metric<N>(random, 12 * real(random) - 6);
    auto bounded = M;
    const int changed = bound_metric(bounded, 0.03, 20);
    ASSERT_EQ(changed == 0, bounded == M);
    ASSERT_TRUE(changed == 0 || expected_ids.push_back(i));
    std::copy_n(M.data(), M.size(), tensors.column(i));
    std::copy_n(bounded.data(), M.size(), expected_tensors.column(i));
    auto again = bounded;
    (void)bound_metric(again, 0.03, 20);
    vector_fixed<double, N> w;
    matrix_fixed<double, N, N> V;
    ASSERT_TRUE(eigen_pairs(bounded, w, V));
    ASSERT_GE(w[0], 1 / 400.0 - 1e-12 * norm(bounded));
    ASSERT_LE(w[N - 1], 1 / 0.0009 * (1 + 1e-14));
    for (unsigned k = 0; k < M.size(); ++k) ASSERT_NEAR(again[k], bounded[k], 1e-14 * norm(bounded));
  }
  EXPECT_EQ(bound_metrics(tensors, 0.03, 20, changed_ids), int(expected_ids.size()));
  EXPECT_TRUE(changed_ids == expected_ids && tensors == expected_tensors);
  for (const double bad : {not_a_number, infinity}) {
    symmetric_fixed<double, N> M{}, expected{};
    M[1] = bad;
    for (unsigned k = 0; k < N; ++k) expected(k, k) = 4;
    EXPECT_FALSE(is_valid_metric(M));
    EXPECT_EQ(bound_metric(M, 0.5, 2), 1);
    EXPECT_EQ(M, expected);
  }
}

TEST(metrics, bounds) {
  test_bounds<2>();
  test_bounds<3>();
  dense2D<double> tensors(3, 3, {1, 0, 1, 100, 0, 1, 1, 0, 1e-9});
  dense2D<double> view = with_gaps(tensors, -7.0), none_of(4, 2, 1.0);
  dense1D<double> sizes{0.1, 1, 10, not_a_number, 0.5, 2}, empty;
  dense1D<unsigned> ids{9, 9};
  EXPECT_EQ(bound_metrics(view, 0.5, 2, ids), 2);
  EXPECT_EQ(ids, (dense1D<unsigned>{1, 2}));
  EXPECT_EQ(view, dense2D<double>(3, 3, {1, 0, 1, 4, 0, 1, 1, 0, 0.25}));
  EXPECT_EQ(bound_metrics(tensors, 0.5, 2), 2);
  EXPECT_EQ(tensors, view);
  EXPECT_EQ(bound_metrics(sizes, 0.5, 2, ids), 3);
  EXPECT_EQ(ids, (dense1D<unsigned>{0, 2, 3}));
  EXPECT_EQ(sizes, (dense1D<double>{0.5, 1, 2, 0.5, 0.5, 2}));
  tensor2 M{1, 0, 1};
  const struct {
    double hmin, hmax;
    int code;
  } cases[] = {{not_a_number, largest, 0}, {0, largest, 0},       {infinity, largest, -2}, {not_a_number, 1, -2},
               {0.5, infinity, -3},        {1, not_a_number, -3}, {-infinity, 1, -2},      {0.5, 2, 0}};
  for (const auto& c : cases) {
    const int matrix_code = c.hmax == largest && !(c.hmin > 0) ? 0 : -1;
    EXPECT_EQ(bound_metric(M, c.hmin, c.hmax), c.code);
    EXPECT_EQ(bound_metrics(sizes, c.hmin, c.hmax, ids), c.code);
    EXPECT_EQ(bound_metrics(none_of, c.hmin, c.hmax, ids), matrix_code);
    EXPECT_EQ(bound_metrics(empty, c.hmin, c.hmax), 0);
    EXPECT_TRUE(ids.empty());
  }
}

TEST(metrics, validity) {
  generator random(8);
  for (int i = 0; i < 30000; ++i) {  // near the boundary between valid and not
    tensor3 M = random_metric<3>(random, 20 * real(random));
    if (i % 2 == 0) M[5] -= norm(M) * std::pow(10, -20 * real(random));
    tensor3 ap = M;
    double w[3], work[9] = {};
    long info;
    lapack::dspev('N', 'U', 3, ap.data(), w, nullptr, 1, work, info);
    ASSERT_EQ(is_valid_metric(M), w[0] > 0);
  }
  const dense1D<double> sizes{1, 1e300, 1e-300, 0, 2};
  const dense2D<double> tensors(
      6, 4, {1, 0, 1, 0, 0, 1e-200, 1, 1, 1, 0, 0, 1, 2, 1, 2, 1, 1, 2, 1, not_a_number, 1, 0, 0, 1});
  const dense1D<unsigned> good{2, 0}, bad{0, 2, 1, 0}, none{0, 4, 5, ~0U};
  dense1D<unsigned> ids{7};
  EXPECT_EQ(first_invalid_metric(sizes), 3U);
  EXPECT_EQ(first_invalid_metric(dense1D<double>{1, largest}), 1U);
  EXPECT_EQ(first_invalid_metric(good, sizes), 2U);
  EXPECT_EQ(first_invalid_metric(none, sizes), 2U);
  EXPECT_EQ(first_invalid_metric(tensors), 1U);
  EXPECT_EQ(first_invalid_metric(bad, tensors), 2U);
  EXPECT_EQ(first_invalid_metric(none, tensors), 1U);
  EXPECT_EQ(first_invalid_metric(dense2D<double>(4, 2, 1.0)), 0U);
  EXPECT_TRUE(are_valid_metrics(good, tensors) && are_valid_metrics(dense2D<double>()) &&
              are_valid_metrics(good, sizes));
  EXPECT_FALSE(are_valid_metrics(bad, tensors) || are_valid_metrics(dense2D<double>(4, 2, 1.0)) ||
               are_valid_metrics(sizes));
  valid_metrics(with_gaps(tensors, 1.0), ids);
  valid_metrics(dense2D<double>(4, 2, 1.0), ids);
  EXPECT_EQ(ids, (dense1D<unsigned>{7, 0, 2}));
}

TEST(metrics, conversions_and_repair) {
  const dense1D<double> sizes{0.5, 0, 2};
  dense2D<double> plane(3, 4, 9.0), space(6, 3, 9.0), none;
  EXPECT_EQ(metrics_iso_to_aniso2d(sizes, plane), 0);
  EXPECT_EQ(plane, dense2D<double>(3, 4, {4, 0, 4, 9, 9, 9, 0.25, 0, 0.25, 9, 9, 9}));
  EXPECT_EQ(metrics_iso_to_aniso3d(sizes, space), 0);
  EXPECT_EQ(space, dense2D<double>(6, 3, {4, 0, 4, 0, 0, 4, 9, 9, 9, 9, 9, 9, 0.25, 0, 0.25, 0, 0, 0.25}));
  const dense2D<double> frames(6, 3, {1, 0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0, 0, 2, 1, 0, 0});
  dense2D<double> restricted(3, 3, 9.0), from_sizes(3, 3, 9.0);
  EXPECT_EQ(metrics_aniso3d_to_aniso2d(space, frames, restricted), 0);
  EXPECT_EQ(metrics_iso_to_aniso2d(sizes, frames, from_sizes), 0);
  EXPECT_EQ(restricted, dense2D<double>(3, 3, {4, 0, 8, 9, 9, 9, 1, 0, 0.25}));
  EXPECT_EQ(from_sizes, restricted);
  const matrix_fixed<double, 3, 2> F{1, 0, 0, 0, 1, 1};
  tensor2 one, other;
  metric_iso_to_aniso2d(0.5, F, one);
  metric_aniso3d_to_aniso2d({4, 0, 4, 0, 0, 4}, F, other);
  EXPECT_TRUE(one == (tensor2{4, 0, 8}) && other == one);
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
  EXPECT_TRUE(broken[1] == 0 && std::isnan(broken[2]));
  broken[2] = 1;
  EXPECT_EQ(broken, (dense1D<double>{5, 0, 1, 5, 3, 0}));
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
  EXPECT_EQ(overwrite_invalid_metrics(none, space), 0);
  EXPECT_EQ(overwrite_invalid_metrics(none, sizes), 0);
}

}  // namespace
}  // namespace qel::gridwork
