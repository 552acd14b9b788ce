#include "core/symmetric3.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "core/scaling.h"
#include "core/vectors.h"

namespace qel::gridwork::detail {
namespace {

/// A symmetric matrix as its diagonal and its off-diagonal entries, of which o[k] lies in the plane across axis k, with
/// the frame that it is written in: column j is axis j.
struct framed_matrix {
  double d[3];
  double o[3];
  double axes[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
};

constexpr unsigned next(unsigned k) noexcept { return k == 2 ? 0 : k + 1; }
constexpr unsigned previous(unsigned k) noexcept { return k == 0 ? 2 : k - 1; }

void turn(double& x, double& y, double s, double tau) noexcept {
  const double old_x = x;
  x -= s * (y + tau * x);
  y += s * (old_x - tau * y);
}

/// One Jacobi rotation: makes o[k] zero.
template <bool Vectors>
void rotate(framed_matrix& m, unsigned k) noexcept {
  const unsigned i = next(k);
  const unsigned j = previous(k);
  const double theta = (m.d[j] - m.d[i]) / (2 * m.o[k]);
  const double t = std::copysign(1 / (std::abs(theta) + std::sqrt(1 + theta * theta)), theta);
  const double c = 1 / std::sqrt(1 + t * t);
  const double s = t * c;
  const double tau = s / (1 + c);
  m.d[i] -= t * m.o[k];
  m.d[j] += t * m.o[k];
  m.o[k] = 0;
  turn(m.o[j], m.o[i], s, tau);  // the entries (i, k) and (j, k)
  if constexpr (Vectors) {
    for (unsigned row = 0; row < 3; ++row) turn(m.axes[3 * i + row], m.axes[3 * j + row], s, tau);
  }
}

/// Rotates, the largest entry first, until every off-diagonal entry is at most `limit`, or too small in relation to its
/// own two diagonal entries to change them.
template <bool Vectors>
void diagonalise(framed_matrix& m, double limit) noexcept {
  constexpr double relative = 0x1p-53;
  constexpr int most_rotations = 100;  // far more than the quadratic convergence ever takes
  for (int count = 0; count < most_rotations; ++count) {
    unsigned largest = 0;
    for (unsigned k = 1; k < 3; ++k) largest = std::abs(m.o[k]) > std::abs(m.o[largest]) ? k : largest;
    unsigned chosen = 3;
    for (unsigned step = 0, k = largest; step < 3 && chosen == 3; ++step, k = next(k)) {
      const double square = m.o[k] * m.o[k];
      const double bound = std::abs(relative * m.d[next(k)]) * std::abs(relative * m.d[previous(k)]);
      if (square > limit * limit && square > bound) chosen = k;
    }
    if (chosen == 3) return;
    rotate<Vectors>(m, chosen);
  }
}

/// The root in [sqrt 3, 2] of x^3 - 3 x = 2 r, for r from 0 to 1: 2 cos(acos(r) / 3). Newton's method from a parabola
/// that is off by less than 2e-3 squares the error in each step.
double largest_root(double r) noexcept {
  double x = 1.7320508075688772 + r * (0.3333333333333333 - 0.0653841409022105 * r);
  for (int step = 0; step < 3; ++step) x -= ((x * x - 3) * x - 2 * r) / (3 * (x * x - 1));
  return x;
}

/// The longest column of the adjugate of m - shift, which points along the axis of the eigenvalue `shift`.
void longest_adjugate_column(const framed_matrix& m, double shift, double* u) noexcept {
  const double x = m.d[0] - shift;
  const double y = m.d[1] - shift;
  const double z = m.d[2] - shift;
  const double diagonal[3] = {y * z - m.o[0] * m.o[0], x * z - m.o[1] * m.o[1], x * y - m.o[2] * m.o[2]};
  const double across[3] = {m.o[1] * m.o[2] - x * m.o[0], m.o[0] * m.o[2] - y * m.o[1], m.o[0] * m.o[1] - z * m.o[2]};
  unsigned k = 0;
  for (unsigned i = 1; i < 3; ++i) k = std::abs(diagonal[i]) > std::abs(diagonal[k]) ? i : k;
  u[k] = diagonal[k];
  u[next(k)] = across[previous(k)];
  u[previous(k)] = across[next(k)];
}

/// Makes `axes` a right-handed orthonormal frame whose first axis has the direction of u.
void complete_frame(const double* u, double* axes) noexcept {
  const double length = std::sqrt(dot(u, u));
  double* a = axes;
  double* b = axes + 3;
  double* c = axes + 6;
  for (unsigned i = 0; i < 3; ++i) a[i] = u[i] / length;
  const unsigned small = std::abs(a[0]) < std::abs(a[1]) ? 0 : 1;  // not the largest component
  const unsigned i = next(small);
  const unsigned j = previous(small);
  const double across = std::sqrt(a[i] * a[i] + a[j] * a[j]);
  b[small] = 0;
  b[i] = -a[j] / across;
  b[j] = a[i] / across;
  for (unsigned k = 0; k < 3; ++k) c[k] = a[next(k)] * b[previous(k)] - a[previous(k)] * b[next(k)];
}

void multiply(const framed_matrix& m, const double* x, double* y) noexcept {
  y[0] = m.d[0] * x[0] + m.o[2] * x[1] + m.o[1] * x[2];
  y[1] = m.o[2] * x[0] + m.d[1] * x[1] + m.o[0] * x[2];
  y[2] = m.o[1] * x[0] + m.o[0] * x[1] + m.d[2] * x[2];
}

/// The matrix `m`, which is still written in the coordinate axes, written in the frame `axes`.
framed_matrix in_frame(const framed_matrix& m, const double* axes) noexcept {
  framed_matrix turned;
  std::copy_n(axes, 9, turned.axes);
  double images[9];
  for (unsigned j = 0; j < 3; ++j) multiply(m, axes + 3 * j, images + 3 * j);
  for (unsigned j = 0; j < 3; ++j) {
    turned.d[j] = dot(axes + 3 * j, images + 3 * j);
    turned.o[j] = dot(axes + 3 * next(j), images + 3 * previous(j));
  }
  return turned;
}

/// A frame whose first axis is, but for rounding, that of the best separated eigenvalue, leaves one rotation to do and,
/// at times, a correction. The mean of the eigenvalues is taken out first, so that errors are in proportion to their
/// spread. False when the spread is too small to divide by.
template <bool Vectors>
bool diagonalise_by_best_axis(framed_matrix& m) noexcept {
  const double mean = (m.d[0] + m.d[1] + m.d[2]) / 3;
  framed_matrix spread = m;
  for (double& d : spread.d) d -= mean;
  const double spread2 = (dot(spread.d, spread.d) + 2 * dot(spread.o, spread.o)) / 6;
  const double p = std::sqrt(spread2);
  if (!(p > 0x1p-100)) return false;
  const double* d = spread.d;
  const double* o = spread.o;
  const double det =
      d[0] * (d[1] * d[2] - o[0] * o[0]) - o[2] * (o[2] * d[2] - o[0] * o[1]) + o[1] * (o[2] * o[0] - d[1] * o[1]);
  const double r = std::clamp(det / (2 * spread2 * p), -1.0, 1.0);
  double u[3];
  double axes[9];
  longest_adjugate_column(spread, std::copysign(p * largest_root(std::abs(r)), r), u);
  if (!(dot(u, u) > spread2 * spread2)) return false;  // 9 times that in exact arithmetic
  complete_frame(u, axes);
  m = in_frame(spread, axes);
  diagonalise<Vectors>(m, 0x1p-51 * p);
  for (double& eigenvalue : m.d) eigenvalue += mean;
  return true;
}

/// True when the frame of the coordinate axes must be kept to start with: an axis is without coupling, or the diagonal
/// is so graded that turning the matrix would drown its small entries.
bool needs_its_own_axes(const framed_matrix& m) noexcept {
  if (m.o[0] == 0 || m.o[1] == 0 || m.o[2] == 0) return true;
  const auto [least, most] = std::minmax({std::abs(m.d[0]), std::abs(m.d[1]), std::abs(m.d[2])});
  return least < 0x1p-20 * most;
}

template <bool Vectors>
void sort_pairs(framed_matrix& m) noexcept {
  constexpr unsigned pairs[3] = {0, 1, 0};
  for (const unsigned j : pairs) {
    if (!(m.d[j + 1] < m.d[j])) continue;
    std::swap(m.d[j], m.d[j + 1]);
    if constexpr (Vectors) std::swap_ranges(m.axes + 3 * j, m.axes + 3 * j + 3, m.axes + 3 * j + 3);
  }
}

template <bool Vectors>
bool solve(const double* packed, double* w, double* v) noexcept {
  framed_matrix m = {{packed[0], packed[2], packed[5]}, {packed[4], packed[3], packed[1]}};
  const bool finite = std::all_of(packed, packed + 6, [](double x) { return std::isfinite(x); });
  if (finite) {
    const int exponent = scale_exponent(largest_magnitude(packed, packed + 6));
    scale(m.d, m.d + 3, exponent);
    scale(m.o, m.o + 3, exponent);
    if (needs_its_own_axes(m) || !diagonalise_by_best_axis<Vectors>(m)) diagonalise<Vectors>(m, 0);
    sort_pairs<Vectors>(m);
    scale(m.d, m.d + 3, -exponent);
  } else {
    std::fill_n(m.d, 3, std::numeric_limits<double>::quiet_NaN());
  }
  std::copy_n(m.d, 3, w);
  if constexpr (Vectors) std::copy_n(m.axes, 9, v);
  return finite;
}

}  // namespace

bool eigenvalues3(const double* packed, double* w) noexcept { return solve<false>(packed, w, nullptr); }

bool eigen_pairs3(const double* packed, double* w, double* v) noexcept { return solve<true>(packed, w, v); }

}  // namespace qel::gridwork::detail
