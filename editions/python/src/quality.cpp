#include "core.h"
#include "failure.h"
#include "recorder.h"

namespace core {

namespace {

using gw::element_type;
using gw::operation;

values shape_qualities(const matrix& coords, const cells& connectivity, element_type type) {
  values q;
  checked(operation::shape_qualities, gw::shape_qualities(coords, connectivity, type, q));
  return q;
}

values jacobians(const matrix& coords, const cells& connectivity, element_type type) {
  values j;
  checked(operation::jacobians, gw::jacobians(coords, connectivity, type, j));
  return j;
}

std::pair<double, unsigned> min_quality(const matrix& coords, const cells& connectivity, element_type type) {
  std::pair<double, unsigned> worst = {1, ~0U};
  checked(operation::min_quality, gw::min_quality(coords, connectivity, type, worst.first, worst.second));
  return worst;
}

values edge_quality(const values& lengths, const values& h1, const values& h2) {
  values q = copied(lengths);
  for (std::uint64_t k = 0; k < q.size(); ++k) {
    checked(operation::edge_quality, gw::edge_quality(lengths[k], h1[k], h2[k], q[k]));
  }
  return q;
}

/// Sizes or tensors.
template <class Metric>
values edge_qualities(const matrix& coords, const blocks& all, const std::vector<int>& types, const Metric& metric,
                      const cells& excluded) {
  recorder edges;
  checked(operation::edge_qualities_range,
          gw::edge_qualities(coords, all.data(), all.data() + all.size(), type_list(types), metric, edges, excluded));
  return edges.samples();
}

}  // namespace

void bind_quality(py::module_& m) {
  def(m, "shape_qualities", shape_qualities);
  def(m, "jacobians", jacobians);
  def(m, "min_quality", min_quality);
  def(m, "edge_quality", edge_quality);
  def(m, "edge_qualities", edge_qualities<values>);
  def(m, "edge_qualities", edge_qualities<matrix>);
}

}  // namespace core
