// Draws two metrics of the plane with their intersection and their union: the sizes they prescribe in every direction.
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

}  // namespace
}  // namespace docs

int main(int argc, char** argv) { return docs::run(argc, argv, docs::draw_pair); }
