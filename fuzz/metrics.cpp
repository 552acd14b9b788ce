// Metric tensors of any entries: what is documented of their validity, eigen-pairs, bounds, intersection and union.
#include <cmath>

#include "fuzz/input.h"
#include "qel/lapack.h"

namespace {

using namespace fuzz;
template <unsigned N>
using tensor = qel::symmetric_fixed<double, N>;
template <unsigned N>
using vector = qel::vector_fixed<double, N>;
template <unsigned N>
using square = qel::matrix_fixed<double, N, N>;

double largest(const double* begin, const double* end) {
  double most = 0;
  for (; begin != end; ++begin)
    most = std::isfinite(*begin) ? std::max(most, std::abs(*begin)) : random_meshes::infinity;
  return most;
}

template <unsigned N>
double form(const tensor<N>& M, const square<N>& V, unsigned i, unsigned j) {
  double sum = 0;
  for (unsigned k = 0; k < N * N; ++k) sum += V(k / N, i) * M(k / N, k % N) * V(k % N, j);
  return sum;
}

/// Where products of the entries neither overflow nor vanish, the pairs diagonalise the tensor.
template <unsigned N>
void check_pairs(const tensor<N>& M) {
  vector<N> w;
  square<N> V;
  tensor<N> identity{};
  for (unsigned k = 0; k < N; ++k) identity(k, k) = 1;
  const double scale = largest(M.begin(), M.end()), error = (N == 2 ? 4e-12 : 1e-14) * scale;
  const bool found = eigen_pairs(M, w, V);
  if (scale < 1e-140 || scale > 1e140) return;
  CHECK(found && (std::abs(w[0]) <= error || is_valid_metric(M) == (w[0] > 0)));
  for (unsigned k = 0; k < N * N; ++k) {
    const unsigned i = k / N, j = k % N;
    CHECK(i > j || w[i] <= w[j]);
    CHECK(std::abs(form(identity, V, i, j) - (i == j)) <= 1e-14);
    CHECK(std::abs(form(M, V, i, j) - (i == j ? w[i] : 0)) <= error);
  }
}

template <unsigned N>
void check_bounds(input& in, const tensor<N>& M) {
  const double hmin = in.real(), hmax = in.flag() ? in.real() : std::numeric_limits<double>::max();
  const bool unbounded = !(hmin > 0) && hmax == std::numeric_limits<double>::max();
  const int refused = unbounded ? 0 : !std::isfinite(hmin) ? -2 : !std::isfinite(hmax) ? -3 : 0;
  tensor<N> bounded = M;
  const int code = bound_metric(bounded, hmin, hmax);
  CHECK(refused != 0 || unbounded ? code == refused : code == 0 || code == 1);
  CHECK(code == 1 || std::memcmp(&M, &bounded, sizeof M) == 0);
  if (!(hmin > 1e-3 && hmax >= hmin && hmax < 1e3)) return;
  vector<N> w;
  square<N> V;
  CHECK(eigen_pairs(bounded, w, V));
  const double slack = 1e-11 * largest(bounded.begin(), bounded.end());
  CHECK(w[0] >= 1 / (hmax * hmax) - slack && w[N - 1] <= 1 / (hmin * hmin) + slack);
}

template <unsigned N>
void check_two(const tensor<N>& A, const tensor<N>& B, bool positive) {
  tensor<N> least, most, aliased = B;
  vector<N> w;
  square<N> V;
  const bool met = minimum_metric(A, B, least), joined = maximum_metric(A, B, most), paired = eigen_pairs(A, B, w, V);
  CHECK(met ? is_valid_metric(least) : std::memcmp(&A, &least, sizeof A) == 0);
  CHECK(joined ? is_valid_metric(most) : std::memcmp(&A, &most, sizeof A) == 0);
  CHECK(minimum_metric(A, aliased, aliased) == met && std::memcmp(&aliased, &least, sizeof least) == 0);
  CHECK(positive ? met && joined && paired : paired || (!met && !joined));
  for (unsigned j = 0; positive && j < N; ++j) {
    const double a = form(A, V, j, j), b = form(B, V, j, j);
    CHECK(std::abs(b - w[j] * a) <= 1e-9);
    CHECK(form(least, V, j, j) >= std::max(a, b) - 1e-9 && form(most, V, j, j) <= std::min(a, b) + 1e-9);
  }
}

/// Positive definite, with eigenvalues from 2 to 80.
template <unsigned N>
tensor<N> moderate(input& in) {
  tensor<N> M;
  for (double& x : M) x = in.below(256) / 64.0 - 2;
  for (unsigned k = 0; k < N; ++k) M(k, k) = 6 + in.below(256) / 4.0;
  return M;
}

template <unsigned N>
void check(input& in) {
  const auto any = in.reals<tensor<N>>(), other = in.reals<tensor<N>>(), A = moderate<N>(in), B = moderate<N>(in);
  check_two<N>(any, other, false);
  check_two<N>(A, B, true);
  for (const auto& M : {any, A}) check_pairs<N>(M), check_bounds<N>(in, M);
}

/// Eigenvalues with vectors of both triangles, and without.
void check_solver(input& in) {
  const unsigned n = 1 + in.below(7), count = n * (n + 1) / 2;
  double full[7][7], upper[28], lower[28], w[7], w2[7], z[49], work[21];
  for (unsigned j = 0; j < n; ++j) {
    for (unsigned i = 0; i <= j; ++i) {
      full[i][j] = full[j][i] = upper[j * (j + 1) / 2 + i] = lower[i * n - i * (i + 1) / 2 + j] = in.real();
    }
  }
  const double scale = largest(upper, upper + count);
  long info, info2;
  qel::lapack::dspev('V', 'U', static_cast<long>(n), upper, w, z, static_cast<long>(n), work, info);
  qel::lapack::dspev('n', 'l', static_cast<long>(n), lower, w2, nullptr, 1, work, info2);
  if (!(scale > 1e-290 && scale < 1e300)) return;
  CHECK(info == 0 && info2 == 0 && std::is_sorted(w, w + n));
  for (unsigned k = 0; k < n * n; ++k) {
    double residual = -w[k / n] * z[k];
    for (unsigned j = 0; j < n; ++j) residual += full[k % n][j] * z[k / n * n + j];
    CHECK(std::abs(residual) <= 1e-13 * scale && std::abs(w[k / n] - w2[k / n]) <= 1e-13 * scale);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  (in.flag() ? check_solver : in.flag() ? check<2> : check<3>)(in);
  return 0;
}
