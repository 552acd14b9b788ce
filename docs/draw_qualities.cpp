// Draws what the shape qualities say: every shape with the quality that the library gives it, from the ideal one to the
// flat and the turned one, and the quality of triangles and quadrangles over the place of one node.
//
// usage: draw_qualities FOLDER
#include <qel/gridwork.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "docs/ideal_elements.h"
#include "docs/svg.h"

namespace docs {
namespace {

double quality(const gw::detail::shape& s, const std::vector<point>& nodes) {
  const bool plane = gw::element_dim(s.type) == 2;
  qel::dense2D<double> coords(plane ? 2 : 3, s.nodes);
  qel::dense2D<unsigned> connectivity(s.nodes, 1);
  for (unsigned k = 0; k < s.nodes; ++k) {
    for (unsigned axis = 0; axis < coords.rows(); ++axis) coords(axis, k) = nodes[k][axis];
    connectivity(k, 0) = k;
  }
  qel::dense1D<double> q;
  const int result = gw::shape_qualities(coords, connectivity, s.type, q);
  if (result != 0) throw std::runtime_error(gw::message(gw::operation::shape_qualities, result));
  return q[0];
}

std::string words(const char* format, double value) {
  char text[32];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

// --- A row of elements ---------------------------------------------------------------------------------------------

// What becomes of the ideal element: its last axis (y of a face, z of a solid) is scaled, and sheared along x.
struct deformation {
  const char* name;
  double height, shear;
};
constexpr deformation deformations[] = {
    {"ideal", 1, 0}, {"half as high", 0.5, 0}, {"sheared", 1, 0.6}, {"flat", 0.12, 0}, {"turned inside out", -0.6, 0}};

std::vector<point> deformed(const gw::detail::shape& s, const deformation& d) {
  std::vector<point> nodes = ideal_vertices(s);
  const unsigned axis = gw::element_dim(s.type) == 2 ? 1 : 2;
  for (point& p : nodes) {
    p[0] += d.shear * p[axis];
    p[axis] *= d.height;
  }
  return nodes;
}

void draw_row(const gw::detail::shape& s, const std::string& path) {
  constexpr double width = 165, height = 190;
  picture p(width * std::size(deformations), height);
  double left = 0;
  for (const deformation& d : deformations) {
    const std::vector<point> nodes = deformed(s, d);
    p.place(view_of(s), mean(nodes), 82, left + width / 2, height / 2 - 22);
    draw_edges(p, s, nodes);
    p.text(mean(nodes), words("%.3f", quality(s, nodes)), "title", 0, height / 2 - 4);
    p.text(mean(nodes), d.name, "note", 0, height / 2 + 12);
    left += width;
  }
  p.save(path);
}

// --- A map over the place of one node ------------------------------------------------------------------------------

// Red for -1, through white for 0, to blue for 1, in steps of a tenth.
std::string colour(double q) {
  const double step = std::round(10 * std::clamp(q, -1.0, 1.0)) / 10;
  const auto faded = [&](int channel) { return 255 - static_cast<int>((255 - channel) * std::abs(step)); };
  char text[16];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", faded(step < 0 ? 200 : 30), faded(80), faded(step < 0 ? 50 : 200));
  return text;
}

struct box {
  double left, right, bottom, top;
};

// The last node of the ideal face goes everywhere in the box.
void draw_map(const gw::detail::shape& s, const box& b, const std::string& path) {
  constexpr double scale = 150, cell = 5;
  const double width = scale * (b.right - b.left), height = scale * (b.top - b.bottom);
  picture p(width, height);
  p.place(view::of_plane(), {b.left, b.top, 0}, scale, 0, 0);
  std::vector<point> nodes = ideal_vertices(s);
  const point ideal = nodes.back();
  for (double y = 0; y < height; y += cell) {
    for (double x = 0; x < width; x += cell) {
      nodes.back() = {b.left + (x + cell / 2) / scale, b.top - (y + cell / 2) / scale, 0};
      p.rectangle(x, y, cell + 0.3, cell + 0.3, colour(quality(s, nodes)));
    }
  }
  nodes.back() = ideal;
  draw_edges(p, s, nodes);
  for (unsigned k = 0; k < s.nodes; ++k) {
    p.dot(nodes[k], 4.5, "vertex");
    p.text(nodes[k], std::to_string(k), "vertex", 11, -9);
  }
  p.text({(b.left + b.right) / 2, b.bottom, 0}, "quality over the place of node " + std::to_string(s.nodes - 1), "note",
         0, -14);
  p.save(path);
}

void draw_scale(const std::string& path) {
  picture p(460, 44);
  for (int tenth = -10; tenth <= 10; ++tenth) {
    const double left = 20 + 20.0 * (tenth + 10);
    p.rectangle(left, 4, 20, 18, colour(tenth / 10.0));
    p.place(view::of_plane(), {}, 1, left + 10, 33);
    if (tenth % 5 == 0) p.text({}, words("%.1f", tenth / 10.0), "note");
  }
  p.save(path);
}

void draw_all(const std::string& folder) {
  for (const gw::detail::shape* s : linear_shapes) {
    const double ideal = quality(*s, ideal_vertices(*s));
    if (std::abs(ideal - 1) > 1e-12)
      throw std::logic_error("the ideal element has the quality " + words("%.17g", ideal));
    if (gw::element_dim(s->type) > 1) draw_row(*s, folder + "/quality_" + std::to_string(s->type) + ".svg");
  }
  draw_map(gw::detail::triangle_shape, {-1, 2, -1, 1.5}, folder + "/quality_map_triangle.svg");
  draw_map(gw::detail::quadrangle_shape, {-1, 2, -0.5, 2}, folder + "/quality_map_quadrangle.svg");
  draw_scale(folder + "/quality_scale.svg");
}

}  // namespace
}  // namespace docs

int main(int argc, char** argv) { return docs::run(argc, argv, docs::draw_all); }
