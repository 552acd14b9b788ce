// Rigid motions of one node. They are built once, from what the caller gives, and then applied to many nodes.
#ifndef QEL_GRIDWORK_TRANSFORMS_MOTION_H
#define QEL_GRIDWORK_TRANSFORMS_MOTION_H

#include <cmath>

#include "core/elementary.h"
#include "qel/fixed.h"

namespace qel::gridwork::detail {

/// The test for "does not move": there, NaN counts as 0.
inline bool is_zero(double x) noexcept { return !(x < 0 || x > 0); }

template <unsigned Dim>
bool is_zero(const vector_fixed<double, Dim>& v) noexcept {
  for (const double x : v) {
    if (!is_zero(x)) return false;
  }
  return true;
}

template <unsigned Dim>
class translation {
 public:
  explicit translation(const vector_fixed<double, Dim>& shift) noexcept : shift_(shift), is_identity_(is_zero(shift)) {}

  bool is_identity() const noexcept { return is_identity_; }

  void operator()(double* p) const noexcept {
    for (unsigned k = 0; k < Dim; ++k) p[k] += shift_[k];
  }

 private:
  vector_fixed<double, Dim> shift_;
  bool is_identity_;
};

/// rotation<Dim>::amount tells how far: an angle in the plane, a rotation vector in space.
template <unsigned Dim>
class rotation;

template <>
class rotation<2> {
 public:
  using amount = double;

  rotation(const vector_fixed<double, 2>& center, amount angle) noexcept
      : center_(center), turn_(sine_and_cosine(angle)), is_identity_(is_zero(angle)) {}

  bool is_identity() const noexcept { return is_identity_; }

  void operator()(double* p) const noexcept {
    const double x = p[0] - center_[0];
    const double y = p[1] - center_[1];
    p[0] = center_[0] + turn_.cosine * x - turn_.sine * y;
    p[1] = center_[1] + turn_.sine * x + turn_.cosine * y;
  }

 private:
  vector_fixed<double, 2> center_;
  sine_cosine turn_;
  bool is_identity_;
};

/// R = I + a K + b K^2 with the cross-product matrix K of the rotation vector w, angle = |w|, a = sin(angle) / angle and
/// b = (1 - cos(angle)) / angle^2 (Rodrigues' formula). K^2 = w w^T - |w|^2 I.
template <>
class rotation<3> {
 public:
  using amount = vector_fixed<double, 3>;

  rotation(const vector_fixed<double, 3>& center, const amount& w) noexcept
      : center_(center), is_identity_(is_zero(w)) {
    const double xx = w[0] * w[0], yy = w[1] * w[1], zz = w[2] * w[2];
    const auto [a, b] = factors(xx + yy + zz);
    const double ax = a * w[0], ay = a * w[1], az = a * w[2];
    const double xy = b * (w[0] * w[1]), xz = b * (w[0] * w[2]), yz = b * (w[1] * w[2]);
    matrix_ = {1 - b * (yy + zz), az + xy, xz - ay, xy - az,          1 - b * (xx + zz),
               ax + yz,           ay + xz, yz - ax, 1 - b * (xx + yy)};
  }

  bool is_identity() const noexcept { return is_identity_; }

  void operator()(double* p) const noexcept {
    const double x = p[0] - center_[0];
    const double y = p[1] - center_[1];
    const double z = p[2] - center_[2];
    for (unsigned i = 0; i < 3; ++i) {
      p[i] = center_[i] + (matrix_(i, 0) * x + matrix_(i, 1) * y + matrix_(i, 2) * z);
    }
  }

 private:
  struct factor_pair {
    double a, b;
  };

  /// a and b at angle^2 = t. Small angles go by the series up to t^5 and t^4, nested: 1 - cos(angle) would cancel, and
  /// t may underflow to 0.
  static factor_pair factors(double t) noexcept {
    const double angle = std::sqrt(t);
    if (angle > 0.1) {
      const sine_cosine turn = sine_and_cosine(angle);
      return {turn.sine / angle, (1 - turn.cosine) / t};
    }
    return {1 - t / 6 * (1 - t / 20 * (1 - t / 42 * (1 - t / 72 * (1 - t / 110)))),
            (1 - t / 12 * (1 - t / 30 * (1 - t / 56 * (1 - t / 90)))) / 2};
  }

  vector_fixed<double, 3> center_;
  matrix_fixed<double, 3, 3> matrix_;
  bool is_identity_;
};

}  // namespace qel::gridwork::detail

#endif
