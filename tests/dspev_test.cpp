#include <gtest/gtest.h>

#include <functional>

#include "qel/gridwork.h"
#include "tests/random_meshes.h"

#ifdef QEL_HAVE_LAPACK
extern "C" void dspev_(const char* jobz, const char* uplo, const int* n, double* ap, double* w, double* z,
                       const int* ldz, double* work, int* info);
#endif

namespace qel {
namespace {

using namespace random_meshes;
using numbers = std::vector<double>;

/// A full symmetric matrix, and its packed triangles.
struct square {
  long n;
  numbers values;

  double& at(long i, long j) { return values[static_cast<std::size_t>(j * n + i)]; }

  numbers packed(char uplo) {
    numbers ap;
    for (long j = 0; j < n; ++j) {
      for (long i = 0; i < n; ++i) {
        if (uplo == 'U' || uplo == 'u' ? i <= j : i >= j) ap.push_back(at(i, j));
      }
    }
    return ap;
  }
};

square filled(long n, const std::function<double(long, long)>& entry) {
  square m{n, numbers(static_cast<std::size_t>(n * n))};
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i <= j; ++i) m.at(i, j) = m.at(j, i) = entry(i, j);
  }
  return m;
}

/// A matrix of these eigenvalues: the diagonal one, reflected.
square with_eigenvalues(generator& random, const numbers& eigenvalues) {
  numbers v(eigenvalues.size());
  double length = 0;
  for (double& x : v) x = real(random) - 0.5;
  for (const double x : v) length += x * x;
  const auto h = [&](std::size_t i, std::size_t j) { return (i == j ? 1 : 0) - 2 * v[i] * v[j] / length; };
  return filled(static_cast<long>(v.size()), [&](long i, long j) {
    double sum = 0;
    for (std::size_t k = 0; k < v.size(); ++k) sum += h(std::size_t(i), k) * eigenvalues[k] * h(k, std::size_t(j));
    return sum;
  });
}

struct solution {
  numbers w, z;
  long ldz = 0;
  long info = 0;
};

solution solve(square& m, char jobz, char uplo) {
  const bool vectors = jobz == 'V' || jobz == 'v';
  solution s;
  s.ldz = m.n + 2;
  s.w.resize(static_cast<std::size_t>(m.n));
  s.z.assign(static_cast<std::size_t>(m.n * s.ldz), -7.0);
  numbers ap = m.packed(uplo);
  numbers work(static_cast<std::size_t>(3 * m.n));
  EXPECT_EQ(lapack::dspev(jobz, uplo, m.n, ap.data(), s.w.data(), vectors ? s.z.data() : nullptr, vectors ? s.ldz : 1,
                          work.data(), s.info),
            s.info);
  return s;
}

double largest(const numbers& values) {
  double result = 0;
  for (double v : values) result = std::max(result, std::abs(v));
  return result;
}

/// A V = V diag(w), V' V = 1 and w as LAPACK has it, all in relation to the norm.
void expect_solved(square m, const std::string& what) {
  const double tolerance = 2e-15 * (1 + std::sqrt(double(m.n)));
  for (const char uplo : {'U', 'l'}) {
    const solution s = solve(m, 'V', uplo);
    ASSERT_EQ(s.info, 0) << what;
    ASSERT_EQ(solve(m, 'n', uplo).w, s.w) << what;
    ASSERT_TRUE(std::is_sorted(s.w.begin(), s.w.end())) << what;
    const double norm = std::max(largest(s.w), 1e-300);
    const auto z = [&](long i, long j) { return s.z[static_cast<std::size_t>(j * s.ldz + i)]; };
    for (long j = 0; j < m.n; ++j) {
      ASSERT_EQ(z(m.n, j), -7.0) << "wrote behind a column";
      for (long i = 0; i < m.n; ++i) {
        double residual = -z(i, j) * (s.w[static_cast<std::size_t>(j)] / norm);
        double product = i == j ? -1 : 0;
        for (long k = 0; k < m.n; ++k) residual += m.at(i, k) / norm * z(k, j);
        for (long k = 0; k < m.n; ++k) product += z(k, i) * z(k, j);
        ASSERT_LE(std::abs(residual), tolerance) << what;
        ASSERT_LE(std::abs(product), tolerance) << what;
      }
    }
#ifdef QEL_HAVE_LAPACK
    const int n = static_cast<int>(m.n);
    const char upper = uplo == 'U' ? 'U' : 'L';
    numbers ap = m.packed(uplo), w(s.w.size()), vectors(m.values.size()), work(3 * s.w.size());
    const int ld = std::max(n, 1);
    int info = 0;
    // With vectors: the routine that it takes without them loses digits on graded matrices.
    dspev_("V", &upper, &n, ap.data(), w.data(), vectors.data(), &ld, work.data(), &info);
    for (std::size_t i = 0; i < w.size(); ++i) ASSERT_LE(std::abs(w[i] - s.w[i]), tolerance * norm) << what;
#endif
  }
}

TEST(dspev, solves_matrices_of_any_spectrum) {
#ifndef QEL_HAVE_LAPACK
  std::puts("LAPACK is not installed: no comparison with its eigenvalues");
#endif
  generator random(11);
  const auto any = [&](long, long) { return real(random) - 0.5; };
  for (int repeat = 0; repeat < 3000; ++repeat) {
    const long n = repeat % 4 != 0 ? 3 : 2 + repeat % 13;
    const auto size = static_cast<std::size_t>(n);
    const auto spectrum = [&](auto value) {
      numbers w(size);
      for (std::size_t i = 0; i < size; ++i) w[i] = value(i);
      return with_eigenvalues(random, w);
    };
    expect_solved(filled(n, any), "random");
    expect_solved(filled(n, [&](long i, long j) { return std::round(4 * any(i, j)); }), "small integers");
    expect_solved(filled(n, [&](long i, long j) { return any(i, j) * std::pow(10, 300 * any(i, j)); }),
                  "graded entries");
    expect_solved(spectrum([&](std::size_t) { return std::pow(10, 12 * any(0, 0)); }), "graded");
    expect_solved(spectrum([&](std::size_t) { return 1 + 1e-15 * any(0, 0); }), "nearly a multiple of the identity");
    expect_solved(spectrum([&](std::size_t i) { return 1.0 + double(i % 2); }), "double eigenvalues");
    expect_solved(spectrum([&](std::size_t i) { return i == 0 ? 1e-9 : 1 + 1e-9 * any(0, 0); }), "a close group");
    expect_solved(spectrum([&](std::size_t i) { return i == 0 ? 1.0 : 0.0; }), "rank one");
    for (const double scale : {1e-300, 1e150})
      expect_solved(filled(n, [&](long, long) { return scale * any(0, 0); }), "scaled");
  }
  for (const long n : {0, 1, 2, 3, 4, 40}) {
    expect_solved(filled(n, [](long, long) { return 0.0; }), "zero");
    expect_solved(filled(n, [](long i, long j) { return i == j ? double(5 - i) : 0.0; }), "diagonal");
    expect_solved(filled(n, [](long, long) { return 1.0; }), "ones");
    expect_solved(filled(n, [](long i, long j) { return std::abs(i - j) == 1 ? 1.0 : 0.0; }), "path");
    for (const long k : {0, 1, 2}) {  // beside which the others lose digits, not only places
      expect_solved(filled(n, [k](long i, long j) { return i == k && j == k + 1 ? 1e160 : 1e-160; }), "one entry");
    }
  }
}

TEST(dspev, keeps_uncoupled_entries_and_small_eigenvalues_of_graded_matrices) {
  square uncoupled{3, {1e20, 0, 3e19, 0, 1e-20, 0, 3e19, 0, 2e20}};
  EXPECT_EQ(solve(uncoupled, 'N', 'U').w[0], 1e-20);
  square graded{3, {1e20, 1e9, 1e5, 1e9, 1, 1e-6, 1e5, 1e-6, 1e-9}};
  const numbers w = solve(graded, 'V', 'L').w;
  EXPECT_NEAR(w[0], 9e-10, 1e-24);  // the Schur complement of the large entry is diagonal
  EXPECT_NEAR(w[1], 0.99, 1e-14);
}

TEST(dspev, reports_invalid_arguments_and_entries) {
  double ap[6] = {}, w[3] = {5, 5, 5}, z[9], work[9];
  const struct {
    char jobz, uplo;
    long n, ldz, info;
  } cases[] = {{'X', 'Q', -1, 0, -1}, {'n', 'Q', -1, 0, -2}, {'v', 'L', -1, 0, -3}, {'N', 'u', 3, 0, -7},
               {'V', 'U', 3, 2, -7},  {'V', 'U', 0, 0, -7},  {'N', 'l', 3, 1, 0}};
  for (const auto& c : cases) {
    long info = 99;
    lapack::dspev(c.jobz, c.uplo, c.n, ap, w, z, c.ldz, work, info);
    EXPECT_EQ(info, c.info) << c.jobz << c.uplo << c.n << c.ldz;
    EXPECT_EQ(w[1], info < 0 ? 5 : 0);
  }
  for (const long n : {2, 3, 6}) {
    for (const double bad : {not_a_number, infinity, -infinity}) {
      for (long k = 0; k < n * n; ++k) {
        square m = filled(n, [&](long i, long j) { return i * n + j == k ? bad : 1.0; });
        if (k / n > k % n) continue;
        const solution s = solve(m, 'V', 'U');
        EXPECT_GT(s.info, 0);
        EXPECT_TRUE(std::isnan(s.w[0]));
      }
    }
  }
}

TEST(histogram, counts_every_sample_once) {
  for (unsigned bins : {1U, 3U, 7U, 49U}) {  // where quotients round over the end of a bin
    misc::histogram H(0.1, 0.7, bins);
    for (unsigned k = 0; k <= bins; ++k) H.process(H.bin_lower(k));
    for (unsigned k = 0; k < bins; ++k) EXPECT_EQ(H.bin(k), k + 1 == bins ? 2U : 1U) << bins << ' ' << k;
    for (const double outside : {0.0, -1.0, 0.8, infinity, not_a_number}) H.process(outside);
    misc::histogram copy(H);
    H.clear();
    EXPECT_EQ(H.count() + H.bin(bins - 1) + H.not_a_number(), 0U);
    EXPECT_TRUE(copy.below() == 2 && copy.inside() == bins + 1 && copy.above() == 2 && copy.not_a_number() == 1);
    EXPECT_TRUE(copy.min() == -1 && copy.max() == infinity && copy.bin(bins - 1) == 2 && H.mean() == 0);
  }
  for (const double upper : {1.0, 0.0, infinity, not_a_number}) {  // no range, no bins
    misc::histogram none(1, upper, 4);
    none.process(1);
    EXPECT_TRUE(none.bins() == 0 && none.count() == 1 && none.mean() == 1);
  }
}

}  // namespace
}  // namespace qel
