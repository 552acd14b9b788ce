// Single elements that cross the plane, cut into what is left of them. Corners on the plane belong to both halves.
#ifndef QEL_GRIDWORK_TRANSFORMS_CUT_ELEMENTS_H
#define QEL_GRIDWORK_TRANSFORMS_CUT_ELEMENTS_H

#include <algorithm>
#include <array>
#include <cstddef>

#include "core/result.h"
#include "transforms/cut_edges.h"
#include "transforms/half_space.h"

namespace qel::gridwork::detail {

struct corner {
  unsigned node;
  unsigned side;
};

/// An edge, a triangle or a tetrahedron.
template <std::size_t N>
using simplex = std::array<corner, N>;

template <std::size_t N>
edge_key lowest_crossing(const simplex<N>& corners) noexcept {
  edge_key lowest = no_edge;
  for (std::size_t i = 1; i < N; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (!crosses(corners[i].side, corners[j].side)) continue;
      lowest = std::min(lowest, key_of(corners[i].node, corners[j].node));
    }
  }
  return lowest;
}

/// The corners with another one wherever `node` stands: a degenerate element may hold it twice.
template <std::size_t N>
simplex<N> with_replaced(simplex<N> corners, unsigned node, const corner& by) noexcept {
  for (corner& c : corners) c = c.node == node ? by : c;
  return corners;
}

/// Splits a simplex at its lowest crossing edge, then its halves, and calls emit(corners) for the pieces that are not
/// behind the plane. Which edge comes first depends on nothing but its nodes, so that a face is split alike from both
/// sides. A split takes away one crossing edge at least: the depth is at most 4.
template <std::size_t N, class Emit>
void bisect(const simplex<N>& corners, cut_edges& edges, const Emit& emit) {
  const edge_key edge = lowest_crossing(corners);
  if (edge != no_edge) {
    const corner middle = {edges.node_of(edge), on_plane};
    bisect(with_replaced(corners, high_end(edge), middle), edges, emit);
    bisect(with_replaced(corners, low_end(edge), middle), edges, emit);
  } else if (std::none_of(corners.begin(), corners.end(), [](const corner& c) { return c.side == behind; })) {
    emit(corners);
  }
}

/// The corners of a face in their cyclic order; five when a quadrangle loses one.
class polygon {
 public:
  void add(const corner& c) noexcept { corners_[size_++] = c; }
  unsigned size() const noexcept { return size_; }
  const corner& operator[](unsigned k) const noexcept { return corners_[k < size_ ? k : k - size_]; }
  edge_key edge(unsigned k) const noexcept { return key_of((*this)[k].node, (*this)[k + 1].node); }
  bool edge_crosses(unsigned k) const noexcept { return crosses((*this)[k].side, (*this)[k + 1].side); }

  unsigned joined_sides() const noexcept {
    unsigned joined = 0;
    for (unsigned k = 0; k < size_; ++k) joined |= corners_[k].side;
    return joined;
  }

  /// Corners on the plane and edges that cross it; two for convex faces in a plane.
  unsigned places_on_plane() const noexcept {
    unsigned count = 0;
    for (unsigned k = 0; k < size_; ++k) count += (corners_[k].side == on_plane || edge_crosses(k)) ? 1 : 0;
    return count;
  }

 private:
  corner corners_[5] = {};
  unsigned size_ = 0;
};

inline polygon make_polygon(std::initializer_list<corner> corners) noexcept {
  polygon made;
  for (const corner& c : corners) made.add(c);
  return made;
}

/// The outline of what a face that meets the plane in two places has before it or on it.
inline polygon part_in_front(const polygon& face, cut_edges& edges) noexcept {
  polygon part;
  for (unsigned k = 0; k < face.size(); ++k) {
    if (face[k].side != behind) part.add(face[k]);
    if (face.edge_crosses(k)) part.add({edges.node_of(face.edge(k)), on_plane});
  }
  return part;
}

/// Cuts a face that meets the plane in two places, and calls emit(polygon) for triangles and quadrangles.
template <class Emit>
void cut_outline(const polygon& face, cut_edges& edges, const Emit& emit) {
  const polygon part = part_in_front(face, edges);
  if (part.size() <= 4) return emit(part);
  unsigned q = 0;
  while (face[q].side != behind) ++q;
  const corner a = face[q + 1], b = face[q + 2], c = face[q + 3];
  emit(make_polygon({a, b, c}));
  emit(make_polygon({a, c, {edges.node_of(face.edge(q + 3)), on_plane}, {edges.node_of(face.edge(q)), on_plane}}));
}

/// The part of a crossed triangle or quadrangle before the plane. One that meets it in more places, being warped or not
/// convex, is first split into triangles at its lowest node, which does not depend on where its list of nodes begins.
template <class Emit>
void cut_face(const polygon& face, cut_edges& edges, const Emit& emit) {
  if (face.places_on_plane() == 2) return cut_outline(face, edges, emit);
  unsigned l = 0;
  for (unsigned k = 1; k < 4; ++k) l = face[k].node < face[l].node ? k : l;
  for (const unsigned k : {l + 1, l + 2}) {
    const polygon half = make_polygon({face[l], face[k], face[k + 1]});
    const unsigned sides = half.joined_sides();
    if ((sides & behind) == 0)
      emit(half);
    else if ((sides & before) != 0)
      cut_outline(half, edges, emit);
  }
}

}  // namespace qel::gridwork::detail

#endif
