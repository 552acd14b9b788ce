#include "placing.h"

#include <algorithm>
#include <cmath>

#include "turning.h"

namespace report {

namespace {

constexpr double degree = 3.14159265358979323846 / 180;

double product(const point& a, const point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

void reflect(qel::dense2D<double>& coords, const point& center, const point& normal) {
  const double squared = product(normal, normal);
  for (std::uint64_t n = 0; n < coords.cols(); ++n) {
    const point away = {{coords(0, n) - center[0], coords(1, n) - center[1], coords(2, n) - center[2]}};
    const double factor = 2 * product(away, normal) / squared;
    for (unsigned k = 0; k < 3; ++k) coords(k, n) -= factor * normal[k];
  }
}

void turn(qel::dense2D<double>& coords, const placing& step) {
  const double angle = step.number * degree / std::sqrt(product(step.vector, step.vector));
  gw::rotate(coords, step.center, point{{step.vector[0] * angle, step.vector[1] * angle, step.vector[2] * angle}});
}

outcome turn_all_over(mesh& m) {
  for (block& b : m.blocks) {
    const outcome done = turn_over(b);
    if (done.failed()) return done;
  }
  return {};
}

outcome apply(mesh& m, const placing& step) {
  if (step.what == placing::move) gw::translate(m.coords, step.vector);
  if (step.what == placing::turn) turn(m.coords, step);
  if (step.what == placing::scale) gw::zoom(m.coords, step.center, step.number);
  if (step.what == placing::mirror) reflect(m.coords, step.center, step.vector);
  const bool mirrors = step.what == placing::mirror || (step.what == placing::scale && step.number < 0);
  return mirrors ? turn_all_over(m) : outcome{};
}

// In space, whatever the mesh had.
bool lift(qel::dense2D<double>& coords) {
  qel::dense2D<double> lifted;
  if (!lifted.resize(3, coords.cols(), 0)) return false;
  for (std::uint64_t n = 0; n < coords.cols(); ++n) {
    std::copy_n(coords.begin_column(n), std::min<std::uint64_t>(coords.rows(), 3), lifted.begin_column(n));
  }
  coords = lifted;
  return true;
}

bool is_flat(const qel::dense2D<double>& coords) {
  for (std::uint64_t n = 0; n < coords.cols(); ++n) {
    if (coords(2, n) != 0) return false;
  }
  return true;
}

}  // namespace

outcome place(mesh& m, const std::vector<placing>& steps) {
  const std::uint64_t rows = m.coords.rows();
  if (!lift(m.coords)) return outcome::of_memory(false);
  for (const placing& step : steps) {
    const outcome done = apply(m, step);
    if (done.failed()) return done;
  }
  if (rows < 3 && is_flat(m.coords)) m.coords = m.coords.sub_matrix(0, 0, 2, m.coords.cols());
  return {};
}

}  // namespace report
