// Sizes and tensors along the edges of a mesh.
#include "core.h"
#include "failure.h"
#include "recorder.h"

namespace core {

namespace {

using gw::element_type;
using gw::operation;

values metrics_gen_iso(const matrix& coords, const cells& connectivity, element_type type, unsigned rule) {
  // Of a number beyond the enumerators nothing is known; the one behind them the library refuses.
  const auto valid = static_cast<gw::size_rule>(std::min(rule, 3U));
  values sizes;
  checked(operation::metrics_gen_iso, gw::metrics_gen_iso(coords, connectivity, type, sizes, valid));
  return sizes;
}

values h_shock(const values& lengths, const values& h1, const values& h2) {
  values shocks = copied(lengths);
  for (std::uint64_t k = 0; k < shocks.size(); ++k) {
    checked(operation::H_shock_edge, gw::H_shock(lengths[k], h1[k], h2[k], shocks[k]));
  }
  return shocks;
}

/// Sizes or tensors.
template <class Metric>
values h_shocks(const matrix& coords, const cells& connectivity, element_type type, const Metric& metric) {
  recorder edges;
  checked(operation::H_shock, gw::H_shock(coords, connectivity, type, metric, edges));
  return edges.samples();
}

template <class Metric>
indices bound_metric_variations(const matrix& coords, const cells& connectivity, element_type type,
                                in_place<Metric> metric, double max_variation) {
  indices changed;
  checked(operation::bound_metric_variations,
          gw::bound_metric_variations(coords, connectivity, type, metric.array, max_variation, changed));
  return changed;
}

template <class Metric>
indices bound_metric_gradations(const matrix& coords, const cells& connectivity, element_type type,
                                in_place<Metric> metric, double max_gradation) {
  indices changed;
  checked(operation::bound_metric_gradations,
          gw::bound_metric_gradations(coords, connectivity, type, metric.array, max_gradation, changed));
  return changed;
}

}  // namespace

void bind_gradation(py::module_& m) {
  def(m, "metrics_gen_iso", metrics_gen_iso);
  def(m, "h_shock", h_shock);
  def(m, "h_shocks", h_shocks<values>);
  def(m, "h_shocks", h_shocks<matrix>);
  def(m, "bound_metric_variations", bound_metric_variations<values>);
  def(m, "bound_metric_variations", bound_metric_variations<matrix>);
  def(m, "bound_metric_gradations", bound_metric_gradations<values>);
  def(m, "bound_metric_gradations", bound_metric_gradations<matrix>);
}

}  // namespace core
