#include "arrays.h"
#include "core.h"
#include "failure.h"

namespace core {

namespace {

using gw::operation;
using flags = qel::dense1D<bool>;

template <unsigned Dim>
using tensor = qel::symmetric_fixed<double, Dim>;

template <unsigned Dim>
tensor<Dim> column(const matrix& tensors, std::uint64_t j) {
  tensor<Dim> m;
  std::copy_n(tensors.column(j), m.size(), m.begin());
  return m;
}

flags sized_flags(std::uint64_t count) {
  flags list(count);
  if (list.size() != count) throw std::bad_alloc();
  return list;
}

matrix sized(std::uint64_t rows, std::uint64_t cols) {
  matrix m(rows, cols);
  if (m.cols() != cols) throw std::bad_alloc();
  return m;
}

/// Calls f with 2 or 3 as a constant, by the rows of the tensors; the Python layer has tested that they are 3 or 6.
template <class Function>
auto by_dimension(const matrix& tensors, Function f) {
  return tensors.rows() == 3 ? f(std::integral_constant<unsigned, 2>()) : f(std::integral_constant<unsigned, 3>());
}

flags are_valid(const matrix& tensors) {
  flags valid = sized_flags(tensors.cols());
  by_dimension(tensors, [&](auto dim) {
    for (std::uint64_t j = 0; j < tensors.cols(); ++j) valid[j] = gw::is_valid_metric(column<dim>(tensors, j));
  });
  return valid;
}

using eigen = std::tuple<matrix, matrix, flags>;

/// Eigenvalues, eigenvectors as the rows of numpy's matrices have them, and whether there are any. solve(dim, j, w, V).
template <class Solve>
eigen eigen_columns(const matrix& tensors, const Solve& solve) {
  return by_dimension(tensors, [&](auto dim) {
    eigen all = {sized(dim, tensors.cols()), sized(dim * dim, tensors.cols()), sized_flags(tensors.cols())};
    for (std::uint64_t j = 0; j < tensors.cols(); ++j) {
      qel::vector_fixed<double, dim> w = {};
      qel::matrix_fixed<double, dim, dim> v = {};
      std::get<2>(all)[j] = solve(dim, j, w, v);
      std::copy(w.begin(), w.end(), std::get<0>(all).column(j));
      for (unsigned k = 0; k < dim * dim; ++k) std::get<1>(all)(k, j) = v(k / dim, k % dim);
    }
    return all;
  });
}

eigen eigen_pairs(const matrix& tensors) {
  return eigen_columns(tensors, [&](auto dim, std::uint64_t j, auto& w, auto& v) {
    return gw::eigen_pairs(column<dim>(tensors, j), w, v);
  });
}

eigen general_eigen_pairs(const matrix& m1, const matrix& m2) {
  return eigen_columns(m1, [&](auto dim, std::uint64_t j, auto& w, auto& v) {
    return gw::eigen_pairs(column<dim>(m1, j), column<dim>(m2, j), w, v);
  });
}

/// combine(M1, M2, M) of all columns.
template <class Combine>
std::pair<matrix, flags> combined(const matrix& m1, const matrix& m2, const Combine& combine) {
  return by_dimension(m1, [&](auto dim) {
    std::pair<matrix, flags> all = {sized(m1.rows(), m1.cols()), sized_flags(m1.cols())};
    for (std::uint64_t j = 0; j < m1.cols(); ++j) {
      tensor<dim> result;
      all.second[j] = combine(column<dim>(m1, j), column<dim>(m2, j), result);
      std::copy(result.begin(), result.end(), all.first.column(j));
    }
    return all;
  });
}

std::pair<matrix, flags> minimum_metric(const matrix& m1, const matrix& m2) {
  return combined(m1, m2, [](const auto& a, const auto& b, auto& m) { return gw::minimum_metric(a, b, m); });
}

std::pair<matrix, flags> maximum_metric(const matrix& m1, const matrix& m2) {
  return combined(m1, m2, [](const auto& a, const auto& b, auto& m) { return gw::maximum_metric(a, b, m); });
}

matrix iso_to_aniso(const values& sizes, unsigned dim) {
  matrix tensors = sized(dim == 2 ? 3 : 6, sizes.size());
  if (dim == 2) {
    checked(operation::metrics_iso_to_aniso2d, gw::metrics_iso_to_aniso2d(sizes, tensors));
  } else {
    checked(operation::metrics_iso_to_aniso3d, gw::metrics_iso_to_aniso3d(sizes, tensors));
  }
  return tensors;
}

matrix iso_to_aniso_frames(const values& sizes, const matrix& frames) {
  matrix tensors = sized(3, sizes.size());
  checked(operation::metrics_iso_to_aniso2d, gw::metrics_iso_to_aniso2d(sizes, frames, tensors));
  return tensors;
}

matrix aniso3d_to_aniso2d(const matrix& tensors3d, const matrix& frames) {
  matrix tensors = sized(3, tensors3d.cols());
  checked(operation::metrics_aniso3d_to_aniso2d, gw::metrics_aniso3d_to_aniso2d(tensors3d, frames, tensors));
  return tensors;
}

template <class Metric>
indices bound_metrics(in_place<Metric> metric, double hmin, double hmax) {
  indices changed;
  checked(operation::bound_metrics, gw::bound_metrics(metric.array, hmin, hmax, changed));
  return changed;
}

template <class Metric, class Defaults>
int overwrite_invalid_metrics(in_place<Metric> metric, const Defaults& defaults) {
  return checked(operation::overwrite_invalid_metrics, gw::overwrite_invalid_metrics(metric.array, defaults));
}

}  // namespace

void bind_metrics(py::module_& m) {
  def(m, "are_valid_metrics", are_valid);
  def(m, "eigen_pairs", eigen_pairs);
  def(m, "eigen_pairs", general_eigen_pairs);
  def(m, "minimum_metric", minimum_metric);
  def(m, "maximum_metric", maximum_metric);
  def(m, "iso_to_aniso", iso_to_aniso);
  def(m, "iso_to_aniso", iso_to_aniso_frames);
  def(m, "aniso3d_to_aniso2d", aniso3d_to_aniso2d);
  def(m, "bound_metrics", bound_metrics<values>);
  def(m, "bound_metrics", bound_metrics<matrix>);
  def(m, "overwrite_invalid_metrics", overwrite_invalid_metrics<values, values>);
  def(m, "overwrite_invalid_metrics", overwrite_invalid_metrics<matrix, values>);
  def(m, "overwrite_invalid_metrics", overwrite_invalid_metrics<matrix, matrix>);
}

}  // namespace core
