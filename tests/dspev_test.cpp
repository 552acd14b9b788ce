#include <gtest/gtest.h>

#include <vector>

#include "qel/lapack.h"

namespace qel {
namespace {

/// The eigenvalues of a full matrix of order 3.
std::vector<double> solve(const double (&m)[9]) {
  double ap[] = {m[0], m[3], m[4], m[6], m[7], m[8]}, z[9], work[9];
  std::vector<double> w(3);
  long info = 0;
  lapack::dspev('V', 'U', 3, ap, w.data(), z, 3, work, info);
  return w;
}

TEST(dspev, keeps_uncoupled_entries_and_small_eigenvalues_of_graded_matrices) {
  EXPECT_EQ(solve({1e20, 0, 3e19, 0, 1e-20, 0, 3e19, 0, 2e20})[0], 1e-20);
  const auto w = solve({1e20, 1e9, 1e5, 1e9, 1, 1e-6, 1e5, 1e-6, 1e-9});
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
