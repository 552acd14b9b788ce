// Metric tensors and symmetric matrices: the closed form in the plane, and what is documented of validity, eigen-pairs,
// bounds, intersection and union.
#include <cmath>

#include "fuzz/tensors.h"
#include "qel/lapack.h"

#ifdef QEL_HAVE_LAPACK
extern "C" void dspev_(const char* jobz, const char* uplo, const int* n, double* ap, double* w, double* z,
                       const int* ldz, double* work, int* info);
#endif

namespace {

using namespace fuzz;
using random_meshes::generator;
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

/// The steps of the closed form, one by one.
void check_closed_form(const tensor<2>& M) {
  const double a = M[0], b = M[1], c = M[2], d = std::sqrt((a - c) * (a - c) + 4 * b * b);
  double l1 = (a + c - d) / 2, l2 = l1 + d;
  if (!(std::abs(l1) >= 1e-12 * std::abs(l2)))
    l1 = (a * c - b * b) / l2;
  else if (!(std::abs(l2) >= 1e-12 * std::abs(l1)))
    l2 = (a * c - b * b) / l1;
  vector<2> w;
  square<2> V;
  CHECK(eigen_pairs(M, w, V) == (std::isfinite(l1) && std::isfinite(l2)));
  CHECK((w == vector<2>{l1, l2}) && is_valid_metric(M) == (l1 > 0));
  const bool first = (l1 - c) * (l1 - c) > (l1 - a) * (l1 - a);
  const vector<2> e = first ? vector<2>{l1 - c, b} : vector<2>{b, l1 - a};
  const double s = b * b + std::max((l1 - c) * (l1 - c), (l1 - a) * (l1 - a));
  const double x = e[0] / std::sqrt(s), y = e[1] / std::sqrt(s);
  const bool isotropic = !(s > 1e-24 * std::max(a * a, c * c));
  CHECK((V == (isotropic ? square<2>{1, 0, 0, 1} : square<2>{x, y, -y, x})));
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
  const auto moderate = [](double x) { return x == 0 || std::abs(x) > 1e-140; };
  if (N == 2 && std::all_of(M.begin(), M.end(), moderate)) check_closed_form({M(0, 0), M(0, 1), M(1, 1)});
  tensor<N> packed = M;
  double values[N], work[3 * N];
  long info = 0;
  if (N == 3) qel::lapack::dspev('N', 'U', N, packed.data(), values, nullptr, 1, work, info);
  CHECK(found && (N == 2 || is_valid_metric(M) == (values[0] > 0)));
  for (unsigned k = 0; k < N * N; ++k) {
    const unsigned i = k / N, j = k % N;
    CHECK(i > j || w[i] <= w[j]);
    CHECK(std::abs(form(identity, V, i, j) - (i == j)) <= 1e-14);
    CHECK(std::abs(form(M, V, i, j) - (i == j ? w[i] : 0)) <= error);
  }
}

/// Bounds of one tensor as documented, and of a matrix of them the same.
template <unsigned N>
void check_bounds(input& in, const std::vector<tensor<N>>& all) {
  const bool usual = in.below(4) != 0;
  const double hmin = usual ? 0.03 : in.real();
  const double hmax = usual ? 20 : in.flag() ? in.real() : std::numeric_limits<double>::max();
  const bool unbounded = !(hmin > 0) && hmax == std::numeric_limits<double>::max();
  const int refused = unbounded ? 0 : !std::isfinite(hmin) ? -2 : !std::isfinite(hmax) ? -3 : 0;
  dense2D<double> tensors(all[0].size(), 0), expected(all[0].size(), 0);
  dense1D<unsigned> changed{7}, expected_changes;
  for (unsigned j = 0; j < all.size(); ++j) {
    const tensor<N>& M = all[j];
    tensor<N> bounded = M;
    const int code = bound_metric(bounded, hmin, hmax);
    CHECK(refused != 0 || unbounded ? code == refused : code == 0 || code == 1);
    CHECK(code == 1 || std::memcmp(&M, &bounded, sizeof M) == 0);
    CHECK(tensors.push_back_column(M.data()) && expected.push_back_column(bounded.data()));
    CHECK(code != 1 || expected_changes.push_back(j));
    if (!(hmin > 1e-3 && hmax >= hmin && hmax < 1e3)) continue;
    vector<N> w;
    square<N> V;
    CHECK(eigen_pairs(bounded, w, V));
    const double slack = 1e-11 * largest(bounded.begin(), bounded.end());
    CHECK(w[0] >= 1 / (hmax * hmax) - slack && w[N - 1] <= 1 / (hmin * hmin) + slack);
    tensor<N> again = bounded;
    (void)bound_metric(again, hmin, hmax);
    for (unsigned k = 0; k < M.size(); ++k) CHECK(std::abs(again[k] - bounded[k]) <= slack);
  }
  CHECK(bound_metrics(tensors, hmin, hmax, changed) == (refused != 0 ? refused : int(expected_changes.size())));
  CHECK(changed == expected_changes && random_meshes::same_bits(tensors, expected));
}

/// Singular but for rounding, so that either answer to whether it is positive definite is right.
template <unsigned N>
bool is_borderline(const tensor<N>& M) {
  vector<N> w;
  square<N> V;
  return eigen_pairs(M, w, V) && std::abs(w[0]) <= 1e-14 * std::abs(w[N - 1]);
}

/// Looked at along the common axes, along those of A and of B, and along the first of all directions.
template <unsigned N>
void check_two(const tensor<N>& A, const tensor<N>& B, double tolerance, double union_tolerance) {
  tensor<N> least, most, aliased = B;
  vector<N> w;
  square<N> V[4];
  const bool met = minimum_metric(A, B, least), joined = maximum_metric(A, B, most);
  const bool paired = eigen_pairs(A, B, w, V[0]), positive = tolerance > 0;
  CHECK(met ? is_valid_metric(least) : std::memcmp(&A, &least, sizeof A) == 0);
  CHECK(joined ? is_valid_metric(most) : std::memcmp(&A, &most, sizeof A) == 0);
  CHECK(minimum_metric(A, aliased, aliased) == met && std::memcmp(&aliased, &least, sizeof least) == 0);
  const bool valid = is_valid_metric(A) && is_valid_metric(B);  // beyond 1e300 of condition pairs may overflow
  const bool either = is_borderline<N>(A) || is_borderline<N>(B);
  CHECK(positive ? met && joined && paired : paired || valid || either || (!met && !joined));
  vector<N> ignored;
  if (!positive || !eigen_pairs(A, ignored, V[1]) || !eigen_pairs(B, ignored, V[2])) return;
  for (unsigned k = 0; k < N * N; ++k) V[3](k % N, k / N) = 1.0 / (1 + k);
  double scale = 0;
  for (unsigned k = 0; k < N; ++k) scale += std::abs(A(k, k)) + std::abs(B(k, k));
  for (unsigned k = 0; k < 4 * N; ++k) {
    const double a = form(A, V[k / N], k % N, k % N), b = form(B, V[k / N], k % N, k % N),
                 i = form(least, V[k / N], k % N, k % N), u = form(most, V[k / N], k % N, k % N),
                 unit = k < 3 * N ? scale : 5 * scale;
    CHECK(i >= std::max(a, b) - tolerance * unit && i <= a + b + tolerance * unit);
    CHECK(u >= 0 && u <= std::min(a, b) + union_tolerance * unit);
  }
  if (tolerance > 1e-14) return;
  for (unsigned k = 0; k < N * N; ++k) {
    const unsigned i = k / N, j = k % N;
    const double a = form(A, V[0], i, j), b = form(B, V[0], i, j);
    CHECK(i >= j || (w[i] <= w[j] && std::abs(a) <= 1e-9 * scale));
    CHECK(std::abs(b - (i == j ? w[j] * a : 0)) <= 1e-9 * scale * (1 + w[N - 1]));
  }
}

template <unsigned N>
void check(input& in) {
  generator random(in.raw<std::uint16_t>());
  const auto any = in.reals<tensor<N>>(), other = in.reals<tensor<N>>();
  const auto some = [&](double digits) { return positive<N>(random, digits); };
  const auto real = [&] { return random_meshes::real(random); };
  check_two<N>(any, other, 0, 0);
  check_two<N>(some(4), some(4), 2e-15, 2e-15);
  check_two<N>(some(12), some(12), 1e-12, 1e-7);
  check_two<N>(some(12), some(0), 2e-15, 2e-15);
  tensor<N> A{}, B{}, near_the_border = some(20 * real());
  for (unsigned k = 0; k < N; ++k) A(k, k) = std::pow(10, 12 * real()), B(k, k) = std::pow(10, 12 * real());
  check_two<N>(A, B, 2e-15, 2e-15), check_two<N>(A, A, 2e-15, 2e-15);
  near_the_border(N - 1, N - 1) -= largest(near_the_border.begin(), near_the_border.end()) * std::pow(10, -20 * real());
  const std::vector<tensor<N>> all = {any, A, some(18 * real()), near_the_border, some(12 * real() - 6)};
  for (const auto& M : all) check_pairs<N>(M);
  check_bounds<N>(in, all);
}

/// A spectrum that is hard in its way, or entries that are.
numbers symmetric(input& in, generator& random, std::size_t n) {
  const auto any = [&] { return random_meshes::real(random) - 0.5; };
  const unsigned kind = in.below(13);
  numbers w(n), m(n * n);
  for (std::size_t i = 0; i < n; ++i) {
    const double choices[] = {std::pow(10, 12 * any()), 1 + 1e-15 * any(), 1.0 + double(i % 2),
                              i == 0 ? 1e-9 : 1 + 1e-9 * any(), i == 0 ? 1.0 : 0.0};
    w[i] = choices[kind % 5];
  }
  if (kind < 5) return with_eigenvalues(random, w);
  for (std::size_t k = 0; k < n * n; ++k) {
    const std::size_t i = k % n, j = k / n;
    const double choices[] = {
        in.real(),      any(),         std::round(4 * any()),  any() * std::pow(10, 300 * any()),
        1e-300 * any(), 1e150 * any(), j == i + 1 ? 1.0 : 0.0, j == i + 1 && i == in.below(3) ? 1e160 : 1e-160};
    if (i <= j) m[k] = m[i * n + j] = choices[kind - 5];
  }
  return m;
}

/// Eigenvalues with vectors of both triangles, and without; as LAPACK has them.
void check_solver(input& in) {
  generator random(in.raw<std::uint16_t>());
  const std::size_t n = in.flag() ? 3 : 1 + in.below(14), ldz = n + 2;
  const numbers full = symmetric(in, random, n);
  const double range = largest(full.data(), full.data() + n * n);
  for (const char uplo : {'U', 'l'}) {
    numbers packed, w(n), without(n), z(n * ldz, -7.0), work(3 * n);
    for (std::size_t k = 0; k < n * n; ++k) {
      if (uplo == 'U' ? k % n <= k / n : k % n >= k / n) packed.push_back(full[k]);
    }
    numbers ap = packed, ap2 = packed;
    long info, info2;
    qel::lapack::dspev('V', uplo, long(n), ap.data(), w.data(), z.data(), long(ldz), work.data(), info);
    qel::lapack::dspev('n', uplo, long(n), ap2.data(), without.data(), nullptr, 1, work.data(), info2);
    if (n > 1 && !std::isfinite(range)) CHECK(info > 0 && info2 > 0 && std::isnan(w[0]));
    if (range > 1e300 || (range < 1e-300 && range != 0)) return;
    const double norm = std::max(largest(w.data(), w.data() + n), 1e-300),
                 tolerance = 2e-15 * (1 + std::sqrt(double(n)));
    CHECK(info == 0 && info2 == 0 && std::is_sorted(w.begin(), w.end()) && without == w);
    for (std::size_t k = 0; k < n * n && range != 0; ++k) {
      const std::size_t i = k % n, j = k / n;
      double residual = -z[j * ldz + i] * (w[j] / norm), product = i == j ? -1 : 0;
      for (std::size_t l = 0; l < n; ++l) residual += full[l * n + i] / norm * z[j * ldz + l];
      for (std::size_t l = 0; l < n; ++l) product += z[i * ldz + l] * z[j * ldz + l];
      CHECK(std::abs(residual) <= tolerance && std::abs(product) <= tolerance && z[j * ldz + n] == -7.0);
    }
#ifdef QEL_HAVE_LAPACK
    // With vectors: the routine that it takes without them loses digits on graded matrices.
    const int size = static_cast<int>(n);
    const char upper = uplo == 'U' ? 'U' : 'L';
    int code = 0;
    dspev_("V", &upper, &size, packed.data(), without.data(), z.data(), &size, work.data(), &code);
    for (std::size_t i = 0; i < n; ++i) CHECK(code != 0 || std::abs(w[i] - without[i]) <= tolerance * norm);
#endif
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  input in(data, size);
  (in.flag() ? check_solver : in.flag() ? check<2> : check<3>)(in);
  return 0;
}
