// Where the nodes of every element type lie when the element has its ideal shape, with edges of length 1.
#ifndef QEL_GRIDWORK_DOCS_IDEAL_ELEMENTS_H
#define QEL_GRIDWORK_DOCS_IDEAL_ELEMENTS_H

#include <cmath>
#include <stdexcept>
#include <vector>

#include "core/linear_shapes.h"
#include "docs/svg.h"

namespace docs {

namespace gw = qel::gridwork;

inline const gw::detail::shape* const linear_shapes[] = {&gw::detail::edge_shape,       &gw::detail::triangle_shape,
                                                         &gw::detail::quadrangle_shape, &gw::detail::tetrahedron_shape,
                                                         &gw::detail::pyramid_shape,    &gw::detail::wedge_shape,
                                                         &gw::detail::hexahedron_shape};

inline const gw::detail::shape& linear_shape(gw::element_type type) {
  for (const gw::detail::shape* s : linear_shapes) {
    if (gw::nbr_base_nodes(type) == s->nodes && gw::element_dim(type) == gw::element_dim(s->type)) return *s;
  }
  throw std::logic_error("a type without a shape");
}

inline std::vector<point> ideal_vertices(const gw::detail::shape& s) {
  const double h = std::sqrt(3.0) / 2;
  switch (s.type) {
    case gw::ELT_EDGE2:
      return {{0, 0, 0}, {1, 0, 0}};
    case gw::ELT_TRIA3:
      return {{0, 0, 0}, {1, 0, 0}, {0.5, h, 0}};
    case gw::ELT_QUAD4:
      return {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    case gw::ELT_TETRA4:
      return {{0, 0, 0}, {0.5, h, 0}, {1, 0, 0}, {0.5, h / 3, std::sqrt(2.0 / 3)}};
    case gw::ELT_PYRAMID5:
      return {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, h}};
    case gw::ELT_WEDGE6:
      return {{0, 0, 0}, {0.5, -h, 0}, {1, 0, 0}, {0, 0, 1}, {0.5, -h, 1}, {1, 0, 1}};
    default:
      return {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
  }
}

// The nodes behind the vertices: in the middle of the edges, then of the quadrangles, then of the element.
struct higher_nodes {
  gw::element_type type;
  bool edges, quadrangles, middle;
};

inline constexpr higher_nodes higher[] = {
    {gw::ELT_EDGE3, true, false, false},    {gw::ELT_TRIA6, true, false, false},
    {gw::ELT_QUAD8, true, false, false},    {gw::ELT_QUAD9, true, false, true},
    {gw::ELT_TETRA10, true, false, false},  {gw::ELT_PYRAMID13, true, false, false},
    {gw::ELT_PYRAMID14, true, true, false}, {gw::ELT_WEDGE15, true, false, false},
    {gw::ELT_WEDGE18, true, true, false},   {gw::ELT_HEXA20, true, false, false},
    {gw::ELT_HEXA27, true, true, true}};

// Middle nodes come in the order of the edges, but for wedges.
inline constexpr unsigned char wedge_middles[9][2] = {{0, 3}, {1, 4}, {2, 5}, {1, 2}, {2, 0},
                                                      {0, 1}, {4, 5}, {5, 3}, {3, 4}};

struct element {
  std::vector<point> nodes;
  std::vector<const char*> kinds;  // style of each node

  void add(const point& p, const char* kind) {
    nodes.push_back(p);
    kinds.push_back(kind);
  }
};

inline void add_middles(const gw::detail::shape& s, element& e) {
  const auto& edges = s.type == gw::ELT_WEDGE6 ? wedge_middles : s.edge;
  for (unsigned k = 0; k < s.edges; ++k) e.add(0.5 * (e.nodes[edges[k][0]] + e.nodes[edges[k][1]]), "middle");
}

inline std::vector<point> corners(const gw::detail::shape& s, unsigned boundary, const std::vector<point>& nodes) {
  std::vector<point> result;
  for (unsigned i = 0; i < s.boundary_sizes[boundary]; ++i) result.push_back(nodes[s.boundary[boundary][i]]);
  return result;
}

inline void add_quadrangle_middles(const gw::detail::shape& s, element& e) {
  for (unsigned k = 0; k < s.boundaries; ++k) {
    if (s.boundary_sizes[k] == 4) e.add(mean(corners(s, k, e.nodes)), "centre");
  }
}

// The nodes of one element of a type that has a shape.
inline element ideal_element(gw::element_type type) {
  const gw::detail::shape& s = linear_shape(type);
  element e;
  for (const point& p : ideal_vertices(s)) e.add(p, "vertex");
  for (const higher_nodes& row : higher) {
    if (row.type != type) continue;
    if (row.edges) add_middles(s, e);
    if (row.quadrangles) add_quadrangle_middles(s, e);
    if (row.middle) e.add(mean(ideal_vertices(s)), "centre");
  }
  if (e.nodes.size() != gw::nbr_nodes(type)) throw std::logic_error("a type with nodes that have no position");
  return e;
}

// True when the normal of a face, by the right-hand rule in the order of its nodes, points out of the solid.
inline bool points_outwards(const std::vector<point>& face, const std::vector<point>& vertices) {
  return dot(cross(face[1] - face[0], face[2] - face[0]), mean(face) - mean(vertices)) > 0;
}

// A view in which no two nodes of the largest type of a shape lie behind one another.
inline view view_of(const gw::detail::shape& s) {
  if (gw::element_dim(s.type) < 3) return view::of_plane();
  if (s.type == gw::ELT_PYRAMID5) return view::of_space(0.42);
  return view::of_space(s.type == gw::ELT_HEXA8 ? 0.30 : 0.16);
}

// True when the viewer sees the outside of a boundary of a solid.
inline bool faces_viewer(const gw::detail::shape& s, unsigned boundary, const std::vector<point>& vertices,
                         const view& v) {
  const std::vector<point> face = corners(s, boundary, vertices);
  const point normal = cross(face[1] - face[0], face[2] - face[0]);
  return dot(points_outwards(face, vertices) ? normal : -1.0 * normal, v.towards) > 1e-9;
}

// An edge is hidden when the viewer sees the outside of no face that holds it.
inline bool is_hidden(const gw::detail::shape& s, unsigned edge, const std::vector<point>& vertices, const view& v) {
  if (gw::element_dim(s.type) < 3) return false;
  for (unsigned k = 0; k < s.boundaries; ++k) {
    unsigned held = 0;
    for (unsigned i = 0; i < s.boundary_sizes[k]; ++i) {
      if (s.boundary[k][i] == s.edge[edge][0] || s.boundary[k][i] == s.edge[edge][1]) ++held;
    }
    if (held == 2 && faces_viewer(s, k, vertices, v)) return false;
  }
  return true;
}

inline void draw_edges(picture& p, const gw::detail::shape& s, const std::vector<point>& vertices) {
  for (const bool hidden : {true, false}) {
    for (unsigned k = 0; k < s.edges; ++k) {
      if (is_hidden(s, k, vertices, view_of(s)) != hidden) continue;
      p.line(vertices[s.edge[k][0]], vertices[s.edge[k][1]], hidden ? "hidden" : "shown");
    }
  }
}

}  // namespace docs

#endif
