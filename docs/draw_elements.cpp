// Draws the element types and writes their tables: local nodes, boundaries and edges, as the library's own tables have
// them.
//
// usage: draw_elements FOLDER
#include <fstream>
#include <string>
#include <vector>

#include "core/elements.h"
#include "core/result.h"
#include "docs/ideal_elements.h"
#include "docs/svg.h"

namespace docs {
namespace {

constexpr const char* type_names[] = {"ELT_UNKNOWN",   "ELT_NODE",      "ELT_EDGE_MIX", "ELT_EDGE2",   "ELT_EDGE3",
                                      "ELT_FACE_MIX",  "ELT_TRIA3",     "ELT_QUAD4",    "ELT_TRIA6",   "ELT_QUAD8",
                                      "ELT_QUAD9",     "ELT_SOLID_MIX", "ELT_TETRA4",   "ELT_TETRA10", "ELT_PYRAMID5",
                                      "ELT_PYRAMID13", "ELT_PYRAMID14", "ELT_WEDGE6",   "ELT_WEDGE15", "ELT_WEDGE18",
                                      "ELT_HEXA8",     "ELT_HEXA20",    "ELT_HEXA27"};
constexpr unsigned types = sizeof(type_names) / sizeof(type_names[0]);
static_assert(types == gw::ELT_HEXA27 + 1);

constexpr double size = 250;    // pixels of a drawing
constexpr double length = 150;  // pixels of an edge of length 1

void draw_nodes(picture& p, const element& e) {
  for (unsigned k = 0; k < e.nodes.size(); ++k) {
    p.dot(e.nodes[k], 4.5, e.kinds[k]);
    p.text(e.nodes[k], std::to_string(k), e.kinds[k], 11, -9);
  }
}

void draw_type(gw::element_type type, const std::string& path) {
  const element e = ideal_element(type);
  const gw::detail::shape& s = linear_shape(type);
  const std::vector<point> vertices(e.nodes.begin(), e.nodes.begin() + s.nodes);
  const bool line = s.type == gw::ELT_EDGE2;
  const double height = line ? size / 3 : 1.15 * size;
  picture p(size, height);
  p.place(view_of(s), mean(vertices), length, size / 2, height / 2 - 10);
  draw_edges(p, s, vertices);
  draw_nodes(p, e);
  p.text(mean(vertices), type_names[type], "title", 0, height / 2 - 6);
  p.save(path);
}

// The edges with their numbers, from their first node to the second.
void draw_edge_numbers(const gw::detail::shape& s, const std::string& path) {
  const element e = ideal_element(s.type);
  const point centre = mean(e.nodes);
  const double height = s.edges == 1 ? size / 3 : 1.4 * size;
  picture p(1.3 * size, height);
  p.place(view_of(s), centre, 1.3 * length, 0.65 * size, height / 2);
  draw_edges(p, s, e.nodes);
  for (unsigned k = 0; k < s.edges; ++k) {
    const point a = e.nodes[s.edge[k][0]], b = e.nodes[s.edge[k][1]];
    p.line(a + 0.3 * (b - a), a + 0.62 * (b - a), "arrow");
    const point beside = 0.42 * (a + b) + 0.16 * centre;
    p.text(beside, std::to_string(k), "edge", 0, s.edges == 1 ? 14 : 0);
  }
  draw_nodes(p, e);
  p.save(path);
}

std::vector<point> shrunk(const std::vector<point>& corners, double factor) {
  std::vector<point> result = corners;
  for (point& c : result) c = mean(corners) + factor * (c - mean(corners));
  return result;
}

// A boundary apart from the element, with its number and an arrow through its nodes in their order.
void draw_boundary(picture& p, const gw::detail::shape& s, unsigned boundary, const std::vector<point>& vertices) {
  std::vector<point> face = corners(s, boundary, vertices);
  const point away = 1.1 * (mean(face) - mean(vertices));
  for (point& corner : face) corner = corner + away;
  if (face.size() == 1) p.dot(face[0], 4.5, "vertex");
  if (face.size() == 2) p.line(face[0], face[1], "arrow");
  if (face.size() > 2) {
    p.polygon(face, faces_viewer(s, boundary, vertices, view_of(s)) ? "front" : "back");
    p.polygon(shrunk(face, 0.66), "arrow", false);
  }
  const point aside = face.size() < 3 ? 0.13 / std::sqrt(dot(away, away)) * away : point{};
  const std::vector<point> labels = shrunk(face, 0.84);
  for (unsigned i = 0; i < face.size(); ++i) {
    p.text(labels[i] + aside, std::to_string(s.boundary[boundary][i]), "vertex");
  }
  p.text(mean(face) - aside, std::to_string(boundary), "face");
}

void draw_boundaries(const gw::detail::shape& s, const std::string& path) {
  const std::vector<point> vertices = ideal_element(s.type).nodes;
  const view v = view_of(s);
  const double height = s.type == gw::ELT_EDGE2 ? size / 3 : 1.8 * size;
  picture p(1.8 * size, height);
  p.place(v, mean(vertices), s.boundaries == 5 || s.type == gw::ELT_TETRA4 ? 1.2 * length : length, 0.9 * size,
          height / 2);
  for (const bool front : {false, true}) {
    for (unsigned k = 0; k < s.boundaries; ++k) {
      if (s.boundary_nodes < 3 ? front : faces_viewer(s, k, vertices, v) == front) draw_boundary(p, s, k, vertices);
    }
  }
  p.save(path);
}

// --- Tables --------------------------------------------------------------------------------------------------------

std::string picture_name(const char* of, gw::element_type type) { return std::string(of) + type_names[type] + ".svg"; }

void write_catalogue(std::ofstream& out) {
  out << "\n## The catalogue\n\n| value | type | nodes | vertices | dimension | boundaries "
         "|\n|---|---|---|---|---|---|\n";
  for (unsigned t = 0; t < types; ++t) {
    const auto type = static_cast<gw::element_type>(t);
    out << "| " << t << " | `" << type_names[t] << "` | " << gw::nbr_nodes(type) << " | " << gw::nbr_base_nodes(type)
        << " | " << gw::element_dim(type) << " | " << gw::nbr_boundaries(type) << " |\n";
  }
  out << "\n";
}

std::string node_list(const unsigned char* nodes, unsigned count) {
  std::string text = "(";
  for (unsigned i = 0; i < count; ++i) text += (i != 0 ? " " : "") + std::to_string(nodes[i]);
  return text + ")";
}

void write_boundaries(std::ofstream& out, const gw::detail::shape& s) {
  const std::vector<point> vertices = ideal_element(s.type).nodes;
  const bool solid = gw::element_dim(s.type) == 3;
  out << "| boundary | nodes |" << (solid ? " normal |" : "") << "\n|---|---|" << (solid ? "---|" : "") << "\n";
  for (unsigned k = 0; k < s.boundaries; ++k) {
    out << "| " << k << " | " << node_list(s.boundary[k], s.boundary_sizes[k]) << " |";
    if (solid) out << (points_outwards(corners(s, k, vertices), vertices) ? " outwards |" : " inwards |");
    out << "\n";
  }
  out << "\nEdges:";
  for (unsigned k = 0; k < s.edges; ++k) out << " " << node_list(s.edge[k], 2);
  out << "\n\n";
}

void write_family(std::ofstream& out, const std::string& folder, const gw::detail::shape& s) {
  out << "## " << type_names[s.type] << " and its relatives\n\n@htmlonly <div class='drawings'> @endhtmlonly\n";
  for (unsigned t = 0; t < types; ++t) {
    const auto type = static_cast<gw::element_type>(t);
    if (t == gw::ELT_EDGE_MIX || t == gw::ELT_FACE_MIX || t == gw::ELT_SOLID_MIX || t <= gw::ELT_NODE) continue;
    if (&linear_shape(type) != &s) continue;
    draw_type(type, folder + "/" + picture_name("nodes_", type));
    out << "@image{inline} html " << picture_name("nodes_", type) << "\n";
  }
  out << "@htmlonly </div> @endhtmlonly\n\nBoundaries, drawn apart, and edges. An arrow follows the nodes in their "
         "order.\n\n"
      << "@htmlonly <div class='drawings'> @endhtmlonly\n"
      << "@image{inline} html " << picture_name("boundaries_", s.type) << "\n"
      << "@image{inline} html " << picture_name("edges_", s.type) << "\n@htmlonly </div> @endhtmlonly\n\n";
  draw_boundaries(s, folder + "/" + picture_name("boundaries_", s.type));
  draw_edge_numbers(s, folder + "/" + picture_name("edges_", s.type));
  write_boundaries(out, s);
}

void write_all(const std::string& folder) {
  std::ofstream out(folder + "/element_drawings.md");
  write_catalogue(out);
  for (const gw::detail::shape* s : linear_shapes) write_family(out, folder, *s);
  if (!out.flush()) throw std::runtime_error("element_drawings.md cannot be written");
}

}  // namespace
}  // namespace docs

int main(int argc, char** argv) { return docs::run(argc, argv, docs::write_all); }
