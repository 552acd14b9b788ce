// Eigenvalues and eigenvectors of symmetric matrices in packed storage.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <utility>

#include "core/elementary.h"
#include "core/scaling.h"
#include "core/symmetric3.h"
#include "qel/lapack.h"

namespace qel::lapack {

using namespace gridwork::detail;

namespace {

/// Entries of a triangle. (On some systems a `long` does not hold as many as memory does.)
constexpr std::ptrdiff_t packed_size(std::ptrdiff_t order) noexcept { return order * (order + 1) / 2; }

/// A matrix in upper packed storage, with what its reduction to tridiagonal form needs; d and e are that form.
struct packed_problem {
  std::ptrdiff_t n;
  double* ap;
  double* d;
  double* e;
  double* tau;
  double* scratch;

  double* column(std::ptrdiff_t j) const noexcept { return ap + packed_size(j); }
};

double dot(const double* x, const double* y, std::ptrdiff_t n) noexcept { return std::inner_product(x, x + n, y, 0.0); }

void add_multiple(double factor, const double* x, double* y, std::ptrdiff_t n) noexcept {
  for (std::ptrdiff_t k = 0; k < n; ++k) y[k] += factor * x[k];
}

/// The length of x, also where squares underflow.
double length(const double* x, std::ptrdiff_t n) noexcept {
  const double largest = largest_magnitude(x, x + n);
  if (largest == 0) return 0;
  double sum = 0;
  for (std::ptrdiff_t k = 0; k < n; ++k) sum += (x[k] / largest) * (x[k] / largest);
  return largest * std::sqrt(sum);
}

/// Entries up to here are as good as 0 beside the largest one, which is of the order of 1. Digits are lost not far
/// below.
constexpr double negligible = 0x1p-500;

/// Makes the reflection 1 - tau v v' that turns x(0..last) into a multiple of its last unit vector, with v(last) = 1; v
/// replaces x. Returns that multiple.
double make_reflection(double* x, std::ptrdiff_t last, double& tau) noexcept {
  const double alpha = x[last];
  const double rest = length(x, last);
  tau = 0;
  x[last] = 1;
  if (rest <= negligible) return alpha;
  const double beta = -std::copysign(hypotenuse(alpha, rest), alpha);
  tau = (beta - alpha) / beta;
  for (std::ptrdiff_t k = 0; k < last; ++k) x[k] /= alpha - beta;
  return beta;
}

/// y = A v for the leading block of order `order`.
void multiply_leading_block(const packed_problem& a, std::ptrdiff_t order, const double* v, double* y) noexcept {
  std::fill_n(y, order, 0.0);
  for (std::ptrdiff_t j = 0; j < order; ++j) {
    const double* column = a.column(j);
    add_multiple(v[j], column, y, j);
    y[j] += dot(column, v, j + 1);
  }
}

/// Applies the reflection from both sides to the leading block: A -= v w' + w v'.
void reflect_leading_block(const packed_problem& a, std::ptrdiff_t order, const double* v, double tau) noexcept {
  double* w = a.scratch;
  multiply_leading_block(a, order, v, w);
  for (std::ptrdiff_t k = 0; k < order; ++k) w[k] *= tau;
  add_multiple(-0.5 * tau * dot(w, v, order), v, w, order);
  for (std::ptrdiff_t j = 0; j < order; ++j) {
    add_multiple(-w[j], v, a.column(j), j + 1);
    add_multiple(-v[j], w, a.column(j), j + 1);
  }
}

/// Reduces the matrix from its last column on; the reflections stay in the columns.
void make_tridiagonal(const packed_problem& a) noexcept {
  for (std::ptrdiff_t i = a.n - 2; i >= 0; --i) {
    double* v = a.column(i + 1);
    a.d[i + 1] = v[i + 1];
    a.e[i] = make_reflection(v, i, a.tau[i]);
    if (a.tau[i] != 0) reflect_leading_block(a, i + 1, v, a.tau[i]);
  }
  a.d[0] = a.ap[0];
}

/// The columns of a square matrix; none of them when the vectors are not wanted.
struct vectors {
  double* z;
  std::ptrdiff_t n;
  std::ptrdiff_t ld;

  double* column(std::ptrdiff_t j) const noexcept { return z + j * ld; }

  void set_identity() const noexcept {
    for (std::ptrdiff_t j = 0; z != nullptr && j < n; ++j) {
      std::fill_n(column(j), n, 0.0);
      column(j)[j] = 1;
    }
  }

  void rotate(std::ptrdiff_t i, double c, double s) const noexcept {
    if (z == nullptr) return;
    double* x = column(i);
    double* y = column(i + 1);
    for (std::ptrdiff_t k = 0; k < n; ++k) {
      const double old_y = y[k];
      y[k] = s * x[k] + c * old_y;
      x[k] = c * x[k] - s * old_y;
    }
  }
};

/// z = the product of the reflections, the one of the largest block first.
void multiply_reflections(const packed_problem& a, const vectors& z) noexcept {
  z.set_identity();
  if (z.z == nullptr) return;
  for (std::ptrdiff_t i = 0; i + 1 < a.n; ++i) {
    const double* v = a.column(i + 1);
    for (std::ptrdiff_t j = 0; j <= i; ++j) add_multiple(-a.tau[i] * dot(v, z.column(j), i + 1), v, z.column(j), i + 1);
  }
}

/// The last row of the unreduced block that begins at row `first`.
std::ptrdiff_t block_end(const double* d, const double* e, std::ptrdiff_t first, std::ptrdiff_t n) noexcept {
  constexpr double relative = 0x1p-53;
  std::ptrdiff_t last = first;
  while (last + 1 < n) {
    const double bound = relative * std::sqrt(std::abs(d[last])) * std::sqrt(std::abs(d[last + 1]));
    if (std::abs(e[last]) <= std::max(bound, negligible)) break;
    ++last;
  }
  return last;
}

/// One implicit QL step with Wilkinson's shift on the rows first..last.
void ql_step(double* d, double* e, std::ptrdiff_t first, std::ptrdiff_t last, const vectors& z) noexcept {
  const double half = (d[first + 1] - d[first]) / (2 * e[first]);
  double g = d[last] - d[first] + e[first] / (half + std::copysign(hypotenuse(half, 1.0), half));
  double s = 1;
  double c = 1;
  double p = 0;
  for (std::ptrdiff_t i = last - 1; i >= first; --i) {
    const double f = s * e[i];
    const double b = c * e[i];
    const double r = hypotenuse(f, g);
    e[i + 1] = r;
    if (r == 0) {  // the block falls apart here
      d[i + 1] -= p;
      e[last] = 0;
      return;
    }
    s = f / r;
    c = g / r;
    g = d[i + 1] - p;
    const double t = (d[i] - g) * s + 2 * c * b;
    p = s * t;
    d[i + 1] = g + p;
    g = c * t - b;
    z.rotate(i, c, s);
  }
  d[first] -= p;
  e[first] = g;
  e[last] = 0;
}

/// Returns the number of off-diagonal entries that are left after 30 n steps.
std::ptrdiff_t diagonalise(double* d, double* e, std::ptrdiff_t n, const vectors& z) noexcept {
  e[n - 1] = 0;
  std::ptrdiff_t steps_left = 30 * n;
  for (std::ptrdiff_t first = 0; first < n; ++first) {
    for (std::ptrdiff_t last = block_end(d, e, first, n); last != first; last = block_end(d, e, first, n)) {
      if (steps_left-- == 0) return std::count_if(e, e + n - 1, [](double x) { return x != 0; });
      ql_step(d, e, first, last, z);
    }
    e[first] = 0;
  }
  return 0;
}

void sort_pairs(double* d, std::ptrdiff_t n, const vectors& z) noexcept {
  for (std::ptrdiff_t i = 0; i + 1 < n; ++i) {
    const std::ptrdiff_t least = std::min_element(d + i, d + n) - d;
    if (least == i) continue;
    std::swap(d[i], d[least]);
    if (z.z != nullptr) std::swap_ranges(z.column(i), z.column(i) + n, z.column(least));
  }
}

std::ptrdiff_t solve_any_order(std::ptrdiff_t n, double* ap, double* w, const vectors& z, double* work) noexcept {
  const std::ptrdiff_t count = packed_size(n);
  if (!std::all_of(ap, ap + count, [](double x) { return std::isfinite(x); })) {
    std::fill_n(w, n, std::numeric_limits<double>::quiet_NaN());
    z.set_identity();
    return n - 1;
  }
  const int exponent = scale_exponent(largest_magnitude(ap, ap + count));
  scale(ap, ap + count, exponent);
  const packed_problem a = {n, ap, w, work, work + n, work + 2 * n};
  make_tridiagonal(a);
  multiply_reflections(a, z);
  const std::ptrdiff_t left = diagonalise(a.d, a.e, n, z);
  if (left == 0) sort_pairs(w, n, z);
  scale(w, w + n, -exponent);
  return left;
}

std::ptrdiff_t solve_order_3(const double* ap, double* w, const vectors& z) noexcept {
  double v[9];
  const bool solved = z.z != nullptr ? eigen_pairs3(ap, w, v) : eigenvalues3(ap, w);
  for (std::ptrdiff_t j = 0; z.z != nullptr && j < 3; ++j) std::copy_n(v + 3 * j, 3, z.column(j));
  return solved ? 0 : 2;
}

std::ptrdiff_t solve(std::ptrdiff_t n, double* ap, double* w, const vectors& z, double* work) noexcept {
  if (n == 3) return solve_order_3(ap, w, z);
  if (n > 1) return solve_any_order(n, ap, w, z, work);
  if (n == 1) w[0] = ap[0];
  z.set_identity();
  return 0;
}

long first_invalid_argument(char jobz, char uplo, long n, long ldz) noexcept {
  const bool with_vectors = jobz == 'V' || jobz == 'v';
  if (!with_vectors && jobz != 'N' && jobz != 'n') return -1;
  if (uplo != 'U' && uplo != 'u' && uplo != 'L' && uplo != 'l') return -2;
  if (n < 0) return -3;
  return ldz < 1 || (with_vectors && ldz < n) ? -7 : 0;
}

}  // namespace

int dspev(char jobz, char uplo, long n, double* ap, double* w, double* z, long ldz, double* work, long& info) {
  info = first_invalid_argument(jobz, uplo, n, ldz);
  if (info != 0) return static_cast<int>(info);
  const bool lower = uplo == 'L' || uplo == 'l';
  const vectors columns = {jobz == 'V' || jobz == 'v' ? z : nullptr, n, ldz};
  // Read backwards, the lower triangle is the upper one of the matrix with its rows and columns in reverse order.
  if (lower) std::reverse(ap, ap + packed_size(n));
  info = static_cast<long>(solve(n, ap, w, columns, work));
  for (long j = 0; lower && columns.z != nullptr && j < n; ++j) std::reverse(columns.column(j), columns.column(j) + n);
  return static_cast<int>(info);
}

}  // namespace qel::lapack
