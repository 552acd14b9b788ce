// Draws two metrics of the plane with their intersection and their union, the sizes they prescribe in every direction;
// sizes across a front, and metrics round a front, before and after they are bounded.
//
// usage: draw_metrics FOLDER
#include <qel/gridwork.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "docs/svg.h"

namespace docs {
namespace {

namespace gw = qel::gridwork;
using tensor = qel::symmetric_fixed<double, 2>;

constexpr double pi = 3.14159265358979323846;

// The tensor that prescribes the size h1 in a direction and h2 across.
tensor metric_of(double angle, double h1, double h2) {
  const double c = std::cos(angle), s = std::sin(angle), a = 1 / (h1 * h1), b = 1 / (h2 * h2);
  return {a * c * c + b * s * s, (a - b) * c * s, a * s * s + b * c * c};
}

// The point at the size of the metric in each direction u: u / sqrt(u' M u).
std::vector<point> sizes(const tensor& m) {
  std::vector<point> curve;
  for (int k = 0; k <= 240; ++k) {
    const double x = std::cos(pi * k / 120), y = std::sin(pi * k / 120);
    const double h = 1 / std::sqrt(m(0, 0) * x * x + 2 * m(0, 1) * x * y + m(1, 1) * y * y);
    curve.push_back({h * x, h * y, 0});
  }
  return curve;
}

void draw_pair(const std::string& folder) {
  const tensor first = metric_of(0.3, 1.5, 0.5), second = metric_of(1.75, 1.15, 0.6);
  tensor intersection = {}, both = {};
  if (!gw::minimum_metric(first, second, intersection) || !gw::maximum_metric(first, second, both)) {
    throw std::logic_error("two sound metrics have no intersection, or no union");
  }
  picture p(640, 330);
  const struct {
    const char* name;
    const tensor& result;
    double left;
  } panels[] = {{"minimum_metric", intersection, 160}, {"maximum_metric", both, 480}};
  for (const auto& panel : panels) {
    p.place(view::of_plane(), {}, 90, panel.left, 150);
    p.polygon(sizes(panel.result), "front");
    p.polygon(sizes(first), "shown", false);
    p.polygon(sizes(second), "shown", false);
    p.text({}, panel.name, "title", 0, 160);
  }
  p.save(folder + "/metrics.svg");
}

int checked(int result) {
  if (result < 0) throw std::logic_error("sound sizes or metrics are refused");
  return result;
}

// Nodes on the x axis, each joined with the next; sizes that are small in the middle, as given and bounded.
void draw_front(const std::string& folder) {
  constexpr unsigned n = 121;
  qel::dense2D<double> coords(2, n);
  qel::dense2D<unsigned> edges(2, n - 1);
  for (unsigned i = 0; i < n; ++i) coords(0, i) = i / (n - 1.0);
  for (unsigned i = 0; i + 1 < n; ++i) edges(0, i) = i, edges(1, i) = i + 1;
  picture p(640, 300);
  p.place(view::of_plane(), {}, 540, 60, 240);
  p.line({0, 0, 0}, {1, 0, 0}, "axis"), p.line({0, 0, 0}, {0, 0.4, 0}, "axis");
  p.text({0.5, 0, 0}, "position", "note", 0, 22), p.text({0, 0.4, 0}, "size", "note", 0, -14);
  const struct {
    double gradation;
    const char* name;
    double label;
  } curves[] = {{1e9, "as given", 0.6}, {1.5, "1.5", 0.69}, {1.2, "1.2", 0.8}, {1.05, "1.05", 0.9}};
  for (const auto& curve : curves) {
    qel::dense1D<double> sizes(n);
    for (unsigned i = 0; i < n; ++i) sizes[i] = std::abs(coords(0, i) - 0.45) < 0.06 ? 0.02 : 0.3;
    checked(gw::bound_metric_gradations(coords, edges, gw::ELT_EDGE2, sizes, curve.gradation));
    std::vector<point> line;
    for (unsigned i = 0; i < n; ++i) line.push_back({coords(0, i), sizes[i], 0});
    p.polygon(line, curve.gradation > 9 ? "hidden" : "shown", false);
    const auto at = static_cast<unsigned>(curve.label * n);
    p.text({coords(0, at), sizes[at], 0}, curve.name, "note", 0, -12);
  }
  p.save(folder + "/gradation_sizes.svg");
}

// Half the size in every direction round a point; few corners, and more of them where the ellipse turns.
std::vector<point> ellipse(const point& centre, const tensor& m) {
  qel::vector_fixed<double, 2> w = {};
  qel::matrix_fixed<double, 2, 2> axes = {};
  if (!gw::eigen_pairs(m, w, axes)) throw std::logic_error("a metric without eigen-pairs");
  std::vector<point> corners;
  for (int k = 0; k < 24; ++k) {
    const double c = std::cos(pi * k / 12) / std::sqrt(w[0]) / 2, s = std::sin(pi * k / 12) / std::sqrt(w[1]) / 2;
    corners.push_back(centre + point{c * axes(0, 0) + s * axes(0, 1), c * axes(1, 0) + s * axes(1, 1), 0});
  }
  return corners;
}

// Nodes of a lattice of triangles, and at each a metric that is thin across a circular front.
struct front {
  static constexpr unsigned columns = 11, rows = 9;
  qel::dense2D<double> coords{2, columns*rows}, metrics{3, columns*rows};
  qel::dense2D<unsigned> triangles{3, 2 * (columns - 1) * (rows - 1)};

  front() {
    std::uint64_t e = 0;
    for (unsigned j = 0; j < columns * rows; ++j) {
      const double x = coords(0, j) = j % columns, y = coords(1, j) = j / columns;
      const double distance = std::hypot(x + 3, y + 3) - 9.5;
      const tensor m = metric_of(std::atan2(y + 3, x + 3), std::abs(distance) < 0.5 ? 0.06 : 0.9, 0.9);
      for (unsigned k = 0; k < 3; ++k) metrics(k, j) = m[k];
      if (j % columns + 1 == columns || j + columns >= columns * rows) continue;
      for (const unsigned corner : {j + 1, j + columns}) {
        triangles(0, e) = j, triangles(1, e) = corner, triangles(2, e++) = j + columns + 1;
      }
    }
  }

  void draw(picture& p, const std::string& title, double left) const {
    p.place(view::of_plane(), {}, 28, left, 250);
    for (unsigned j = 0; j < coords.cols(); ++j) {
      p.polygon(ellipse({coords(0, j), coords(1, j), 0}, {metrics(0, j), metrics(1, j), metrics(2, j)}), "front");
    }
    p.text({(columns - 1) / 2.0, 0, 0}, title, "title", 0, 36);
  }
};

void draw_ellipses(const std::string& folder) {
  picture p(1000, 300);
  front f;
  f.draw(p, "as given", 24);
  for (const bool keeps_shape : {true, false}) {
    front bounded;
    checked(keeps_shape ? gw::bound_metric_gradations(f.coords, f.triangles, gw::ELT_TRIA3, bounded.metrics, 1.3)
                        : gw::bound_metric_variations(f.coords, f.triangles, gw::ELT_TRIA3, bounded.metrics, 0.26));
    bounded.draw(p, keeps_shape ? "bound_metric_gradations" : "bound_metric_variations", keeps_shape ? 356 : 688);
  }
  p.save(folder + "/gradation_metrics.svg");
}

void draw(const std::string& folder) {
  draw_pair(folder);
  draw_front(folder);
  draw_ellipses(folder);
}

}  // namespace
}  // namespace docs

int main(int argc, char** argv) { return docs::run(argc, argv, docs::draw); }
