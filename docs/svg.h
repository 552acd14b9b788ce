// A picture in SVG, drawn in the plane of the picture or, by an orthographic projection, in space.
#ifndef QEL_GRIDWORK_DOCS_SVG_H
#define QEL_GRIDWORK_DOCS_SVG_H

#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace docs {

using point = std::array<double, 3>;

inline point operator+(const point& a, const point& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline point operator-(const point& a, const point& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline point operator*(double s, const point& a) { return {s * a[0], s * a[1], s * a[2]}; }
inline double dot(const point& a, const point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline point cross(const point& a, const point& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline point mean(const std::vector<point>& points) {
  point sum = {};
  for (const point& p : points) sum = sum + p;
  return 1.0 / static_cast<double>(points.size()) * sum;
}

// In space: z is up, seen slightly from above; the x axis, turned by an angle, runs to the right.
struct view {
  point right, up, towards;  // the viewer
  static view of_space(double turn) {
    const double rise = 0.36;
    const point right = {std::cos(turn), std::sin(turn), 0};
    const point back = {-std::sin(turn), std::cos(turn), 0};
    const point up = std::sin(rise) * back + std::cos(rise) * point{0, 0, 1};
    return {right, up, cross(right, up)};
  }
  static view of_plane() { return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}; }
};

class picture {
 public:
  picture(double width, double height) : width_(width), height_(height) {}

  // Draws from here on with `centre` at the pixel (x, y), and `scale` pixels for a length of 1.
  void place(const view& v, const point& centre, double scale, double x, double y) {
    view_ = v, centre_ = centre, scale_ = scale, x_ = x, y_ = y;
  }

  void line(const point& a, const point& b, const char* style) {
    element("<line x1='%.1f' y1='%.1f' x2='%.1f' y2='%.1f' class='%s'/>\n", x(a), y(a), x(b), y(b), style);
  }

  void polygon(const std::vector<point>& corners, const char* style, bool closed = true) {
    body_ += closed ? "<polygon points='" : "<polyline points='";
    for (const point& p : corners) element("%.1f,%.1f ", x(p), y(p));
    element("' class='%s'/>\n", style);
  }

  void dot(const point& p, double radius, const char* style) {
    element("<circle cx='%.1f' cy='%.1f' r='%.1f' class='%s'/>\n", x(p), y(p), radius, style);
  }

  // The text is centred at the point, moved by pixels.
  void text(const point& p, const std::string& words, const char* style, double right = 0, double down = 0) {
    element("<text x='%.1f' y='%.1f' class='%s'>", x(p) + right, y(p) + down + 4, style);
    body_ += words + "</text>\n";
  }

  void rectangle(double left, double top, double width, double height, const std::string& colour) {
    element("<rect x='%.1f' y='%.1f' width='%.1f' height='%.1f' fill='%s'/>\n", left, top, width, height,
            colour.c_str());
  }

  void save(const std::string& path) const {
    std::ofstream out(path);
    out << "<svg xmlns='http://www.w3.org/2000/svg' width='" << width_ << "' height='" << height_ << "' viewBox='0 0 "
        << width_ << ' ' << height_ << "'>\n"
        << "<style>" << styles << "</style>\n"
        << "<defs><marker id='head' viewBox='0 0 10 10' refX='8' refY='5' markerWidth='7' markerHeight='7' "
           "orient='auto'>"
        << "<path d='M0,1 L9,5 L0,9 z' fill='#b03a2e'/></marker></defs>\n"
        << "<rect width='100%' height='100%' fill='white'/>\n"
        << body_ << "</svg>\n";
    if (!out.flush()) throw std::runtime_error(path + " cannot be written");
  }

 private:
  static constexpr const char* styles =
      "text{font:13px sans-serif;text-anchor:middle;paint-order:stroke;stroke:white;stroke-width:3px}"
      ".title{font-size:14px;font-weight:bold}.note{fill:#444}.vertex{fill:#111}.middle{fill:#1f618d}"
      ".centre{fill:#b9770e}.edge{fill:#b03a2e}.face{fill:#b03a2e;font-weight:bold}"
      "line,polyline{fill:none;stroke:#111;stroke-width:1.6}.hidden{stroke:#999;stroke-dasharray:4 3}"
      ".arrow{stroke:#b03a2e;stroke-width:1.5;marker-end:url(#head)}"
      "polygon{stroke:#555;stroke-width:1;stroke-linejoin:round}"
      ".front{fill:#d6e4f0;fill-opacity:.85}.back{fill:#eeeeee;fill-opacity:.85}"
      "circle{stroke:white;stroke-width:1}";

  double x(const point& p) const { return x_ + scale_ * docs::dot(p - centre_, view_.right); }
  double y(const point& p) const { return y_ - scale_ * docs::dot(p - centre_, view_.up); }

  template <class... Values>
  void element(const char* format, Values... values) {
    char text[512];
    std::snprintf(text, sizeof text, format, values...);
    body_ += text;
  }

  double width_, height_;
  view view_ = view::of_plane();
  point centre_ = {};
  double scale_ = 1, x_ = 0, y_ = 0;
  std::string body_;
};

// The program: draws into the folder that is its one argument.
inline int run(int argc, char** argv, void (*draw)(const std::string& folder)) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  try {
    draw(argv[1]);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s: %s\n", argv[0], problem.what());
    return 1;
  }
  return 0;
}

}  // namespace docs

#endif
