// Qualities of edges by the sizes or tensors at their ends.
#include <algorithm>
#include <cmath>
#include <iterator>

#include "core/coordinates.h"
#include "core/edge_vector.h"
#include "core/elementary.h"
#include "core/elements.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/metrics.h"
#include "qel/gridwork/quality.h"
#include "qel/gridwork/topology.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// The logarithmic mean of two sizes greater than 0. Nearly equal sizes take its series, where nothing cancels.
double reference_length(double a, double b) noexcept {
  constexpr double series_below = 0.1;
  const double m = std::min(a, b);
  const double r = (std::max(a, b) - m) / m;
  if (r >= series_below) return m * r / logarithm(1 + r);
  const double x = r / 2;
  return m * (1 + x * (1 - (x / 3) * (1 - x * (1 - 1.2666666666666666 * x))));
}

double relative_length(double length, double a, double b) noexcept {
  const double reference = reference_length(a, b);
  return reference > 0 ? length / reference : 0;
}

struct edge_ends {
  unsigned a;
  unsigned b;

  friend bool operator<(const edge_ends& x, const edge_ends& y) noexcept { return x.a != y.a ? x.a < y.a : x.b < y.b; }
};

/// One size per node.
template <unsigned Dim>
class isotropic_field {
 public:
  isotropic_field(const dense2D<double>& coords, const dense1D<double>& sizes) noexcept
      : coords_(coords), sizes_(sizes), count_(std::min(coords.cols(), sizes.size())) {}

  bool is_sound(edge_ends edge) const noexcept { return has_size(edge.a) && has_size(edge.b); }

  double quality(edge_ends edge) const noexcept {
    return relative_length(edge_vector<Dim>(coords_, edge.a, edge.b).length(), sizes_[edge.a], sizes_[edge.b]);
  }

 private:
  bool has_size(unsigned node) const noexcept { return node < count_ && sizes_[node] > 0; }

  const dense2D<double>& coords_;
  const dense1D<double>& sizes_;
  std::uint64_t count_;
};

/// One tensor per node; with another row count than Dim asks for, no node has one.
template <unsigned Dim>
class anisotropic_field {
 public:
  anisotropic_field(const dense2D<double>& coords, const dense2D<double>& metrics) noexcept
      : coords_(coords),
        metrics_(metrics),
        count_(metrics.rows() == tensor::size() ? std::min(coords.cols(), metrics.cols()) : 0) {}

  bool is_sound(edge_ends edge) const noexcept { return has_metric(edge.a) && has_metric(edge.b); }

  double quality(edge_ends edge) const noexcept {
    const edge_vector<Dim> along(coords_, edge.a, edge.b);
    const double a2 = squared_length(metric(edge.a), along.e);
    const double b2 = squared_length(metric(edge.b), along.e);
    if (!(a2 > 0 && b2 > 0)) return 0;
    const double a = std::sqrt(a2);
    const double b = std::sqrt(b2);
    return relative_length(a * b, a, b);
  }

 private:
  using tensor = symmetric_fixed<double, Dim>;

  tensor metric(unsigned node) const noexcept {
    tensor M;
    std::copy_n(metrics_.column(node), tensor::size(), M.data());
    return M;
  }

  bool has_metric(unsigned node) const noexcept { return node < count_ && is_valid_metric(metric(node)); }

  const dense2D<double>& coords_;
  const dense2D<double>& metrics_;
  std::uint64_t count_;
};

/// Both lists are sorted; calls action for the edges of the first that the second does not hold. Returns their number.
template <class Action>
int for_each_kept_edge(const dense2D<unsigned>& edges, const dense2D<unsigned>& excluded, Action action) {
  const auto edge_at = [](const dense2D<unsigned>& list, std::uint64_t j) { return edge_ends{list(0, j), list(1, j)}; };
  int kept = 0;
  std::uint64_t next = 0;
  for (std::uint64_t j = 0; j < edges.cols(); ++j) {
    const edge_ends edge = edge_at(edges, j);
    while (next < excluded.cols() && edge_at(excluded, next) < edge) ++next;
    if (next < excluded.cols() && !(edge < edge_at(excluded, next))) continue;
    action(edge);
    ++kept;
  }
  return kept;
}

/// Results below 0, as the forms for a range of meshes number them: by argument.
enum range_code : int {
  invalid_coordinates = -1,
  invalid_connectivity = -2,
  invalid_types = -4,
  skipped_edge = -5,
  invalid_exclusion = -7
};

/// The same for one mesh, whose type is no list that could have a wrong size, and which takes one argument less.
int code_of_one_mesh(int result) noexcept {
  if (result == skipped_edge) return -4;
  return result == invalid_exclusion ? -6 : result;
}

/// The number of edges, or a code when one of them was skipped.
template <class Field>
int feed_edges(const dense2D<unsigned>& edges, const dense2D<unsigned>& excluded, const Field& field, histogram& H) {
  bool faulty = false;
  const int kept = for_each_kept_edge(edges, excluded, [&](edge_ends edge) {
    if (field.is_sound(edge)) {
      H.process(field.quality(edge));
    } else {
      faulty = true;
    }
  });
  return faulty ? skipped_edge : kept;
}

using meshes = const dense2D<unsigned>*;

bool fits(const dense2D<unsigned>& connectivity, int type, unsigned nodes) {
  return is_element_type(type) && check_IDs(connectivity, static_cast<element_type>(type), nodes);
}

/// 0, or the code of the first argument that is invalid.
int check_arguments(const dense2D<double>& coords, meshes first, meshes last, const dense1D<int>& types,
                    const dense2D<unsigned>& excluded) {
  if (!in_plane_or_space(coords)) return invalid_coordinates;
  if (types.size() != static_cast<std::uint64_t>(std::distance(first, last))) return invalid_types;
  for (std::uint64_t i = 0; i < types.size(); ++i) {
    if (!fits(first[i], types[i], node_bound(coords))) return invalid_connectivity;
  }
  return check_IDs(excluded, ELT_EDGE2, node_bound(coords)) ? 0 : invalid_exclusion;
}

/// `Field<Dim>` is made of the coordinates and `prescribed`.
template <template <unsigned> class Field, class Prescribed>
int measure_edges(const dense2D<double>& coords, meshes first, meshes last, const dense1D<int>& types,
                  const Prescribed& prescribed, histogram& H, const dense2D<unsigned>& excluded_edges) {
  if (first == last) return 0;
  const int code = check_arguments(coords, first, last, types, excluded_edges);
  if (code != 0) return code;
  dense2D<unsigned> edges;
  dense2D<unsigned> excluded;  // listed like the edges: lower node first, sorted, each once
  if (copy_edges(first, last, types, edges) != 0) return out_of_memory;
  if (copy_edges(excluded_edges, ELT_EDGE2, excluded) != 0) return out_of_memory;
  return coords.rows() == 2 ? feed_edges(edges, excluded, Field<2>(coords, prescribed), H)
                            : feed_edges(edges, excluded, Field<3>(coords, prescribed), H);
}

/// One mesh as a range.
template <class Prescribed>
int measure_one(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                const Prescribed& prescribed, histogram& H, const dense2D<unsigned>& excluded_edges) {
  const dense1D<int> types(1, type);
  if (types.empty()) return out_of_memory;
  return code_of_one_mesh(
      edge_qualities(coords, &connectivity, &connectivity + 1, types, prescribed, H, excluded_edges));
}

}  // namespace

int edge_quality(double L, double h1, double h2, double& q) {
  if (!(h1 > 0)) return -2;
  if (!(h2 > 0)) return -3;
  q = relative_length(L, h1, h2);
  return 0;
}

int edge_qualities(const dense2D<double>& coords, const dense2D<unsigned>* first, const dense2D<unsigned>* last,
                   const dense1D<int>& types, const dense1D<double>& sizes, histogram& H,
                   const dense2D<unsigned>& excluded_edges) {
  return measure_edges<isotropic_field>(coords, first, last, types, sizes, H, excluded_edges);
}

int edge_qualities(const dense2D<double>& coords, const dense2D<unsigned>* first, const dense2D<unsigned>* last,
                   const dense1D<int>& types, const dense2D<double>& metrics, histogram& H,
                   const dense2D<unsigned>& excluded_edges) {
  return measure_edges<anisotropic_field>(coords, first, last, types, metrics, H, excluded_edges);
}

int edge_qualities(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                   const dense1D<double>& sizes, histogram& H, const dense2D<unsigned>& excluded_edges) {
  return measure_one(coords, connectivity, type, sizes, H, excluded_edges);
}

int edge_qualities(const dense2D<double>& coords, const dense2D<unsigned>& connectivity, element_type type,
                   const dense2D<double>& metrics, histogram& H, const dense2D<unsigned>& excluded_edges) {
  return measure_one(coords, connectivity, type, metrics, H, excluded_edges);
}

}  // namespace qel::gridwork
