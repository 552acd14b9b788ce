// Predicates on node positions, each exactly as evaluated in doubles.
#ifndef QEL_GRIDWORK_SEARCH_GEOMETRY_H
#define QEL_GRIDWORK_SEARCH_GEOMETRY_H

namespace qel::gridwork::detail {

/// Where nodes are merged by nearness, one that is not finite is near to none: every way of doing so asks this first.
template <unsigned Dim>
bool is_finite(const double* p) noexcept {
  double sum = 0;  // of differences that are 0 or NaN
  for (unsigned a = 0; a < Dim; ++a) sum += p[a] - p[a];
  return sum == 0;
}

template <unsigned Dim>
bool has_nan(const double* p) noexcept {
  bool found = false;
  for (unsigned a = 0; a < Dim; ++a) found |= p[a] != p[a];
  return found;
}

template <unsigned Dim>
bool same_position(const double* p, const double* q) noexcept {
  for (unsigned a = 0; a < Dim; ++a) {
    if (p[a] != q[a]) return false;
  }
  return true;
}

template <unsigned Dim>
double squared_distance(const double* p, const double* q) noexcept {
  double sum = 0;
  for (unsigned a = 0; a < Dim; ++a) {
    const double difference = p[a] - q[a];
    sum += difference * difference;
  }
  return sum;
}

/// True when q lies in the closed box p - reach .. p + reach.
template <unsigned Dim>
bool in_box_around(const double* p, const double* q, double reach) noexcept {
  bool in_box = true;
  for (unsigned a = 0; a < Dim; ++a) in_box &= q[a] >= p[a] - reach && q[a] <= p[a] + reach;
  return in_box;
}

/// True when q lies in the box and in the ball around p. Nearly all nodes that are asked about lie outside of both; the
/// ball is tested sooner.
template <unsigned Dim>
bool is_near(const double* p, const double* q, double tol) noexcept {
  return squared_distance<Dim>(p, q) <= tol * tol && in_box_around<Dim>(p, q, tol);
}

}  // namespace qel::gridwork::detail

#endif
