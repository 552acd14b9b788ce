#include <gtest/gtest.h>

#include "qel/gridwork.h"
#include "tests/random_meshes.h"

namespace qel {
namespace {

using namespace random_meshes;
using numbers = std::vector<double>;

/// The eigenvalues of a full symmetric matrix.
numbers solve(const numbers& full, long n, long& info) {
  numbers ap, w(full.size()), z(full.size()), work(3 * full.size());
  for (long k = 0; k < n * n; ++k) {
    if (k % n <= k / n) ap.push_back(full[std::size_t(k)]);
  }
  lapack::dspev('V', 'U', n, ap.data(), w.data(), z.data(), n, work.data(), info);
  return w;
}

TEST(dspev, keeps_uncoupled_entries_and_small_eigenvalues_of_graded_matrices) {
  long info;
  EXPECT_EQ(solve({1e20, 0, 3e19, 0, 1e-20, 0, 3e19, 0, 2e20}, 3, info)[0], 1e-20);
  const numbers w = solve({1e20, 1e9, 1e5, 1e9, 1, 1e-6, 1e5, 1e-6, 1e-9}, 3, info);
  EXPECT_NEAR(w[0], 9e-10, 1e-24);  // the Schur complement of the large entry is diagonal
  EXPECT_NEAR(w[1], 0.99, 1e-14);
}

TEST(dspev, reports_invalid_arguments) {
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
}

}  // namespace
}  // namespace qel
