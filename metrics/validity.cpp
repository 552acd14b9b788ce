// Which sizes are positive, which tensors positive definite.
#include "metrics/spectrum.h"
#include "qel/gridwork/metrics.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// True when the leading minors leave no doubt that the smallest eigenvalue is greater than 0, as computed too: it is
/// at least 4 det / trace^2, which the bound on the determinant keeps far above the rounding errors of any of these
/// numbers.
bool is_clearly_positive(const tensor<3>& M) noexcept {
  constexpr double margin = 1e-12;
  constexpr double largest_trace = 1e80;  // its cube stays in range
  const double trace = M[0] + M[2] + M[5];
  if (!(trace > 1 / largest_trace && trace < largest_trace)) return false;
  const double minor = M[0] * M[2] - M[1] * M[1];
  const double det = M[5] * minor - M[4] * (M[0] * M[4] - M[1] * M[3]) + M[3] * (M[1] * M[4] - M[2] * M[3]);
  return M[0] > margin * trace && minor > margin * trace * trace && det > margin * trace * trace * trace;
}

/// The first of `count` items that fails, or `count`.
template <class IsValid>
unsigned first_failing(std::uint64_t count, IsValid is_valid) {
  std::uint64_t i = 0;
  while (i < count && is_valid(i)) ++i;
  return static_cast<unsigned>(i);
}

/// Calls action(is_valid), where is_valid(j) tests column j.
template <class Result, class Action>
Result with_column_test(const dense2D<double>& tensors, Result otherwise, Action action) {
  return visit_dimension(tensors.rows(), otherwise, [&](auto n) {
    return action([&](std::uint64_t j) { return is_valid_metric(tensor_at<n()>(tensors, j)); });
  });
}

}  // namespace

bool is_valid_metric(const symmetric_fixed<double, 2>& M) {
  vector_fixed<double, 2> w;
  (void)eigenvalues(M, w);  // an infinite larger one does not matter
  return w[0] > 0;
}

bool is_valid_metric(const symmetric_fixed<double, 3>& M) {
  vector_fixed<double, 3> w;
  return is_clearly_positive(M) || (eigenvalues3(M.data(), w.data()) && w[0] > 0);
}

unsigned first_invalid_metric(const dense1D<double>& sizes) {
  return first_failing(sizes.size(), [&](std::uint64_t i) { return is_positive_number(sizes[i]); });
}

unsigned first_invalid_metric(const dense2D<double>& tensors) {
  return with_column_test(tensors, 0U, [&](auto is_valid) { return first_failing(tensors.cols(), is_valid); });
}

unsigned first_invalid_metric(const dense1D<unsigned>& ids, const dense1D<double>& sizes) {
  return first_failing(ids.size(),
                       [&](std::uint64_t i) { return ids[i] < sizes.size() && is_positive_number(sizes[ids[i]]); });
}

unsigned first_invalid_metric(const dense1D<unsigned>& ids, const dense2D<double>& tensors) {
  return with_column_test(tensors, 0U, [&](auto is_valid) {
    return first_failing(ids.size(), [&](std::uint64_t i) { return ids[i] < tensors.cols() && is_valid(ids[i]); });
  });
}

bool are_valid_metrics(const dense1D<double>& sizes) { return first_invalid_metric(sizes) == sizes.size(); }

bool are_valid_metrics(const dense2D<double>& tensors) { return first_invalid_metric(tensors) == tensors.cols(); }

bool are_valid_metrics(const dense1D<unsigned>& ids, const dense1D<double>& sizes) {
  return first_invalid_metric(ids, sizes) == ids.size();
}

bool are_valid_metrics(const dense1D<unsigned>& ids, const dense2D<double>& tensors) {
  return first_invalid_metric(ids, tensors) == ids.size();
}

void valid_metrics(const dense2D<double>& tensors, dense1D<unsigned>& ids) {
  with_column_test(tensors, false, [&](auto is_valid) {
    for (std::uint64_t j = 0; j < tensors.cols(); ++j) {
      if (is_valid(j) && !ids.push_back(static_cast<unsigned>(j))) return false;
    }
    return true;
  });
}

}  // namespace qel::gridwork
