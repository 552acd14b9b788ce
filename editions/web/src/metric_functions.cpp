// Qualities of elements and edges, size metrics.
#include "functions.h"

namespace web {

namespace {

using gw::element_type;
using gw::operation;
using histogram = qel::misc::histogram;
using metric2 = qel::symmetric_fixed<double, 2>;
using metric3 = qel::symmetric_fixed<double, 3>;
using frame = qel::matrix_fixed<double, 3, 2>;
using plane = qel::vector_fixed<double, 2>;
using space = qel::vector_fixed<double, 3>;
using matrix2 = qel::matrix_fixed<double, 2, 2>;
using matrix3 = qel::matrix_fixed<double, 3, 3>;

constexpr function rows[] = {
    row<gw::shape_qualities>("shape_qualities", "coords connectivity type >Q"),
    row<gw::min_quality>("min_quality", "coords connectivity type >qmin >jmin"),
    row<gw::jacobians>("jacobians", "coords connectivity type >J"),
    row<gw::edge_quality>("edge_quality", "L h1 h2 >q"),
    row<overload<int(const points&, const elements&, element_type, const values&, histogram&, const elements&)>(
        gw::edge_qualities)>("edge_qualities", "coords connectivity type sizes >H excluded_edges?",
                             operation::edge_qualities),
    row<overload<int(const points&, const elements&, element_type, const points&, histogram&, const elements&)>(
        gw::edge_qualities)>("edge_qualities", "coords connectivity type metrics >H excluded_edges?",
                             operation::edge_qualities),
    row<[](const points& coords, const matrices& all, const codes& types, const values& sizes, histogram& H,
           const elements& excluded) {
      return gw::edge_qualities(coords, all.data(), all.data() + all.size(), types, sizes, H, excluded);
    }>("edge_qualities", "coords connectivities types sizes >H excluded_edges?", operation::edge_qualities_range),
    row<[](const points& coords, const matrices& all, const codes& types, const points& metrics, histogram& H,
           const elements& excluded) {
      return gw::edge_qualities(coords, all.data(), all.data() + all.size(), types, metrics, H, excluded);
    }>("edge_qualities", "coords connectivities types metrics >H excluded_edges?", operation::edge_qualities_range),

    row<overload<bool(const metric2&)>(gw::is_valid_metric)>("is_valid_metric", "M"),
    row<overload<bool(const metric3&)>(gw::is_valid_metric)>("is_valid_metric", "M"),
    row<overload<unsigned(const values&)>(gw::first_invalid_metric)>("first_invalid_metric", "sizes"),
    row<overload<unsigned(const points&)>(gw::first_invalid_metric)>("first_invalid_metric", "tensors"),
    row<overload<unsigned(const list&, const values&)>(gw::first_invalid_metric)>("first_invalid_metric", "ids sizes"),
    row<overload<unsigned(const list&, const points&)>(gw::first_invalid_metric)>("first_invalid_metric",
                                                                                  "ids tensors"),
    row<overload<bool(const values&)>(gw::are_valid_metrics)>("are_valid_metrics", "sizes"),
    row<overload<bool(const points&)>(gw::are_valid_metrics)>("are_valid_metrics", "tensors"),
    row<overload<bool(const list&, const values&)>(gw::are_valid_metrics)>("are_valid_metrics", "ids sizes"),
    row<overload<bool(const list&, const points&)>(gw::are_valid_metrics)>("are_valid_metrics", "ids tensors"),
    row<gw::valid_metrics>("valid_metrics", "tensors >ids"),
    row<overload<bool(const metric2&, plane&, matrix2&)>(gw::eigen_pairs)>("eigen_pairs", "M >w >V"),
    row<overload<bool(const metric3&, space&, matrix3&)>(gw::eigen_pairs)>("eigen_pairs", "M >w >V"),
    row<overload<bool(const metric2&, const metric2&, plane&, matrix2&)>(gw::eigen_pairs)>("eigen_pairs",
                                                                                           "M1 M2 >w >V"),
    row<overload<bool(const metric3&, const metric3&, space&, matrix3&)>(gw::eigen_pairs)>("eigen_pairs",
                                                                                           "M1 M2 >w >V"),
    row<overload<int(metric2&, double, double)>(gw::bound_metric)>("bound_metric", "+M hmin hmax"),
    row<overload<int(metric3&, double, double)>(gw::bound_metric)>("bound_metric", "+M hmin hmax"),
    row<overload<int(values&, double, double, list&)>(gw::bound_metrics)>("bound_metrics", "+sizes hmin hmax >ids"),
    row<overload<int(points&, double, double, list&)>(gw::bound_metrics)>("bound_metrics", "+tensors hmin hmax >ids"),
    row<overload<bool(const metric2&, const metric2&, metric2&)>(gw::minimum_metric)>("minimum_metric", "M1 M2 >M"),
    row<overload<bool(const metric3&, const metric3&, metric3&)>(gw::minimum_metric)>("minimum_metric", "M1 M2 >M"),
    row<overload<bool(const metric2&, const metric2&, metric2&)>(gw::maximum_metric)>("maximum_metric", "M1 M2 >M"),
    row<overload<bool(const metric3&, const metric3&, metric3&)>(gw::maximum_metric)>("maximum_metric", "M1 M2 >M"),
    row<overload<void(double, metric3&)>(gw::metric_iso_to_aniso)>("metric_iso_to_aniso", "h >M"),
    row<gw::metric_iso_to_aniso2d>("metric_iso_to_aniso2d", "h F >M"),
    row<gw::metric_aniso3d_to_aniso2d>("metric_aniso3d_to_aniso2d", "M3 F >M2"),
    row<overload<int(const values&, points&)>(gw::metrics_iso_to_aniso2d)>("metrics_iso_to_aniso2d", "sizes +tensors"),
    row<gw::metrics_iso_to_aniso3d>("metrics_iso_to_aniso3d", "sizes +tensors"),
    row<overload<int(const values&, const points&, points&)>(gw::metrics_iso_to_aniso2d)>("metrics_iso_to_aniso2d",
                                                                                          "sizes frames +tensors"),
    row<gw::metrics_aniso3d_to_aniso2d>("metrics_aniso3d_to_aniso2d", "tensors3d frames +tensors2d"),
    row<overload<int(values&, const values&)>(gw::overwrite_invalid_metrics)>("overwrite_invalid_metrics",
                                                                              "+sizes defaults"),
    row<overload<int(points&, const points&)>(gw::overwrite_invalid_metrics)>("overwrite_invalid_metrics",
                                                                              "+tensors defaults"),
    row<overload<int(points&, const values&)>(gw::overwrite_invalid_metrics)>("overwrite_invalid_metrics",
                                                                              "+tensors default_sizes"),
    row<gw::metrics_gen_iso>("metrics_gen_iso", "coords connectivity type >sizes rule?"),
    row<overload<int(double, double, double, double&)>(gw::H_shock)>("H_shock", "L h1 h2 >shock",
                                                                     operation::H_shock_edge),
    row<overload<int(const points&, const elements&, element_type, const values&, double&)>(gw::H_shock)>(
        "H_shock", "coords connectivity type sizes >largest", operation::H_shock),
    row<overload<int(const points&, const elements&, element_type, const points&, double&)>(gw::H_shock)>(
        "H_shock", "coords connectivity type tensors >largest", operation::H_shock),
    row<overload<int(const points&, const elements&, element_type, const values&, histogram&)>(gw::H_shock)>(
        "H_shock_histogram", "coords connectivity type sizes >H", operation::H_shock),
    row<overload<int(const points&, const elements&, element_type, const points&, histogram&)>(gw::H_shock)>(
        "H_shock_histogram", "coords connectivity type tensors >H", operation::H_shock),
    row<overload<int(const points&, const elements&, element_type, values&, double, list&)>(
        gw::bound_metric_variations)>("bound_metric_variations", "coords connectivity type +sizes max_variation >ids"),
    row<overload<int(const points&, const elements&, element_type, points&, double, list&)>(
        gw::bound_metric_variations)>("bound_metric_variations",
                                      "coords connectivity type +tensors max_variation >ids"),
    row<overload<int(const points&, const elements&, element_type, values&, double, list&)>(
        gw::bound_metric_gradations)>("bound_metric_gradations", "coords connectivity type +sizes max_gradation >ids"),
    row<overload<int(const points&, const elements&, element_type, points&, double, list&)>(
        gw::bound_metric_gradations)>("bound_metric_gradations",
                                      "coords connectivity type +tensors max_gradation >ids"),
};

}  // namespace

std::span<const function> metric_functions() { return rows; }

}  // namespace web
