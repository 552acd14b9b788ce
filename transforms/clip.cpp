// The part of a mesh on one side of a line or plane, cut off exactly.
#include <cstdint>
#include <limits>
#include <utility>

#include "core/coordinates.h"
#include "core/elements.h"
#include "core/growth.h"
#include "core/result.h"
#include "qel/gridwork/elements.h"
#include "qel/gridwork/transforms.h"
#include "transforms/cut_edges.h"
#include "transforms/cut_elements.h"
#include "transforms/half_space.h"
#include "transforms/selected_elements.h"

namespace qel::gridwork {

using namespace detail;

namespace {

constexpr fates exact_fates = make_fates([](unsigned sides) {
  if ((sides & lost) != 0) return fate::dropped;
  if ((sides & behind) == 0) return fate::kept;
  return (sides & before) == 0 ? fate::dropped : fate::cut;
});

constexpr bool can_be_cut(element_type type) noexcept {
  return type == ELT_EDGE2 || type == ELT_TRIA3 || type == ELT_QUAD4 || type == ELT_FACE_MIX || type == ELT_TETRA4;
}

/// The matrices of a mesh while its elements are cut.
struct cutting {
  const dense2D<unsigned>& connectivity;
  const node_sides& sides;
  cut_edges edges;
  element_pieces pieces;

  /// False when memory, or the indices for the new nodes, ran out.
  [[nodiscard]] bool cut(element_type type, const dense1D<unsigned>& elements) {
    if (type == ELT_EDGE2) return cut_each(elements, [this](unsigned e) { cut_simplex<2>(e); });
    if (type == ELT_TRIA3) return cut_each(elements, [this](unsigned e) { cut_simplex<3>(e); });
    if (type == ELT_TETRA4) return cut_each(elements, [this](unsigned e) { cut_simplex<4>(e); });
    return cut_each(elements, [this](unsigned e) { cut_triangle_or_quadrangle(e); });
  }

 private:
  template <class Cut>
  bool cut_each(const dense1D<unsigned>& elements, Cut cut_one) {
    for (const unsigned e : elements) {
      cut_one(e);
      if (!edges.complete() || !pieces.complete()) return false;
    }
    return true;
  }

  corner corner_at(unsigned node) const noexcept { return {node, sides.of(node)}; }

  template <std::size_t N>
  void cut_simplex(unsigned e) {
    simplex<N> corners;
    const unsigned* nodes = connectivity.column(e);
    for (std::size_t i = 0; i < N; ++i) corners[i] = corner_at(nodes[i]);
    bisect(corners, edges, [this, e](const simplex<N>& piece) { add_piece(e, piece, N); });
  }

  void cut_triangle_or_quadrangle(unsigned e) {
    polygon face;
    const unsigned* nodes = connectivity.column(e);
    for (unsigned i = 0; i < 4 && nodes[i] != none; ++i) face.add(corner_at(nodes[i]));
    cut_face(face, edges, [this, e](const polygon& piece) { add_piece(e, piece, piece.size()); });
  }

  template <class Corners>
  void add_piece(unsigned source, const Corners& corners, std::size_t size) {
    unsigned* nodes = pieces.add(source);
    if (nodes == nullptr) return;
    const std::uint64_t rows = connectivity.rows();
    for (unsigned i = 0; i < rows; ++i) nodes[i] = i < size ? corners[i].node : none;
  }
};

/// What a cut adds to the mesh, all memory taken.
struct new_nodes {
  dense2D<unsigned> edges;
  dense1D<double> weights;

  [[nodiscard]] bool reserve(std::uint64_t count) { return edges.resize(2, count) && weights.resize(count); }

  /// Writes nodes into the columns of `coords` from `first` on.
  template <unsigned Dim>
  void write(const cut_edges& cut, const half_space<Dim>& space, dense2D<double>& coords, std::uint64_t first) {
    for (std::uint64_t k = 0; k < weights.size(); ++k) {
      edges(0, k) = low_end(cut[k]);
      edges(1, k) = high_end(cut[k]);
      const double *a = coords.column(edges(0, k)), *b = coords.column(edges(1, k));
      const double from_a = space.distance(a);
      const double t = from_a / (from_a - space.distance(b));
      weights[k] = t;
      double* p = coords.column(first + k);
      for (std::uint64_t i = 0; i < coords.rows(); ++i) p[i] = a[i] + t * (b[i] - a[i]);
    }
  }
};

/// The outputs that belong together.
struct cut_outputs {
  dense2D<unsigned>& out;
  dense1D<unsigned>& elements;
  dense2D<unsigned>& edges;
  dense1D<double>& weights;

  void clear() noexcept {
    out.clear();
    elements.clear();
    edges.clear();
    weights.clear();
  }
};

/// Memory is all there before anything changes.
template <unsigned Dim>
int clip_exactly(dense2D<double>& coords, const half_space<Dim>& space, const dense2D<unsigned>& connectivity,
                 element_type type, const cut_outputs& outputs) {
  const std::uint64_t first = coords.cols();
  node_sides sides;
  selected_elements selected;
  if (!sides.find(coords, space) || !selected.select(connectivity, sides, exact_fates)) return out_of_memory;

  cutting work{connectivity, sides, cut_edges(first), element_pieces(connectivity.rows())};
  clipped_elements clipped;
  new_nodes added;
  if (!work.cut(type, selected.cut) || !work.edges.sort(work.pieces.columns())) return out_of_memory;
  const std::uint64_t count = work.edges.count();
  if (count > std::uint64_t{std::numeric_limits<int>::max()} || !added.reserve(count)) return out_of_memory;
  if (!clipped.assemble(connectivity, selected.kept, work.pieces)) return out_of_memory;
  if (!grow(coords, coords.rows(), first + count, 0.0)) return out_of_memory;

  added.write(work.edges, space, coords, first);
  outputs.out = std::move(clipped.columns);
  outputs.elements = std::move(clipped.sources);
  outputs.edges = std::move(added.edges);
  outputs.weights = std::move(added.weights);
  return static_cast<int>(count);
}

template <unsigned Dim>
int check_and_clip(dense2D<double>& coords, const vector_fixed<double, Dim>& point,
                   const vector_fixed<double, Dim>& normal, const dense2D<unsigned>& connectivity, element_type type,
                   double tol, cut_outputs outputs) {
  if (connectivity.empty()) {
    outputs.clear();
    return 0;
  }
  if (const int code = check_plane(coords, point, normal); code != 0) return code;
  if (!check_IDs(connectivity, type, node_bound(coords))) return -5;
  type = resolve_type(type, connectivity.rows());
  if (!can_be_cut(type)) return -6;
  if (!(tol >= 0)) return -7;
  return clip_exactly(coords, half_space<Dim>(point, normal, tol), connectivity, type, outputs);
}

}  // namespace

int clip(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 2>& point,
         const vector_fixed<double, 2>& normal, const dense2D<unsigned>& connectivity, element_type type, double tol,
         dense1D<unsigned>& elements, dense2D<unsigned>& edges, dense1D<double>& weights) {
  return check_and_clip(coords, point, normal, connectivity, type, tol, {out, elements, edges, weights});
}

int clip(dense2D<double>& coords, dense2D<unsigned>& out, const vector_fixed<double, 3>& point,
         const vector_fixed<double, 3>& normal, const dense2D<unsigned>& connectivity, element_type type, double tol,
         dense1D<unsigned>& elements, dense2D<unsigned>& edges, dense1D<double>& weights) {
  return check_and_clip(coords, point, normal, connectivity, type, tol, {out, elements, edges, weights});
}

}  // namespace qel::gridwork
