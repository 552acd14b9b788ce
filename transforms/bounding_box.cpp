// Enlarges a box until it holds all nodes, the nodes of a list or those of a connectivity.
#include "core/result.h"
#include "ids/distinct_indices.h"
#include "qel/gridwork/transforms.h"
#include "transforms/selection.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// The comparisons are not symmetric: a NaN gets into the lower corner and gives way to the next node, but never gets
/// into the upper one.
template <unsigned Dim, class Nodes>
int enlarge_box(const dense2D<double>& coords, const Nodes& nodes, vector_fixed<double, Dim>& box_min,
                vector_fixed<double, Dim>& box_max) {
  if (nodes.empty()) return 0;
  if (coords.rows() != Dim) return -1;
  if (!nodes.exist_in(coords)) return -2;
  vector_fixed<double, Dim> low = box_min;
  vector_fixed<double, Dim> high = box_max;
  nodes.visit(coords.cols(), [&](std::uint64_t node) {
    const double* p = coords.column(node);
    for (unsigned k = 0; k < Dim; ++k) {
      if (!(p[k] >= low[k])) low[k] = p[k];
      if (p[k] > high[k]) high[k] = p[k];
    }
  });
  box_min = low;
  box_max = high;
  return 0;
}

template <unsigned Dim>
int enlarge_box_by_used(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                        vector_fixed<double, Dim>& box_min, vector_fixed<double, Dim>& box_max) {
  dense1D<unsigned> nodes;
  if (list_distinct(connectivity, nodes) != 0) return out_of_memory;
  return enlarge_box(coords, listed_nodes{nodes}, box_min, box_max);
}

}  // namespace

int inc_bounding_box(const dense2D<double>& coords, vector_fixed<double, 2>& box_min,
                     vector_fixed<double, 2>& box_max) {
  return enlarge_box(coords, every_node{}, box_min, box_max);
}
int inc_bounding_box(const dense2D<double>& coords, vector_fixed<double, 3>& box_min,
                     vector_fixed<double, 3>& box_max) {
  return enlarge_box(coords, every_node{}, box_min, box_max);
}
int inc_bounding_box(const dense2D<double>& coords, const dense1D<unsigned>& ids, vector_fixed<double, 2>& box_min,
                     vector_fixed<double, 2>& box_max) {
  return enlarge_box(coords, listed_nodes{ids}, box_min, box_max);
}
int inc_bounding_box(const dense2D<double>& coords, const dense1D<unsigned>& ids, vector_fixed<double, 3>& box_min,
                     vector_fixed<double, 3>& box_max) {
  return enlarge_box(coords, listed_nodes{ids}, box_min, box_max);
}
int inc_bounding_box(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                     vector_fixed<double, 2>& box_min, vector_fixed<double, 2>& box_max) {
  return enlarge_box_by_used(coords, connectivity, box_min, box_max);
}
int inc_bounding_box(const dense2D<double>& coords, const dense2D<unsigned>& connectivity,
                     vector_fixed<double, 3>& box_min, vector_fixed<double, 3>& box_max) {
  return enlarge_box_by_used(coords, connectivity, box_min, box_max);
}

}  // namespace qel::gridwork
