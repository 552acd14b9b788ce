// Translation, rotation and scaling of all nodes, of the nodes of a list or of those of a connectivity.
#include "core/growth.h"
#include "ids/distinct_indices.h"
#include "qel/gridwork/transforms.h"
#include "transforms/motion.h"
#include "transforms/selection.h"

namespace qel::gridwork {

using namespace detail;

namespace {

template <unsigned Dim>
class scaling {
 public:
  scaling(const vector_fixed<double, Dim>& center, double factor) noexcept : center_(center), excess_(factor - 1) {}

  bool is_identity() const noexcept { return is_zero(excess_); }

  void operator()(double* p) const noexcept {
    for (unsigned k = 0; k < Dim; ++k) p[k] += excess_ * (p[k] - center_[k]);
  }

 private:
  vector_fixed<double, Dim> center_;
  double excess_;
};

/// Applies a motion to the selected nodes, after it has given `coords` the rows that the motion needs.
template <template <unsigned> class Motion, unsigned Dim, class Nodes>
int move_nodes(dense2D<double>& coords, const Motion<Dim>& motion, const Nodes& nodes) {
  if (coords.empty() || motion.is_identity() || nodes.empty()) return 0;
  if (coords.rows() < Dim && !grow(coords, Dim, coords.cols(), 0.0)) return 0;
  return nodes.visit(coords.cols(), [&coords, motion](std::uint64_t node) { motion(coords.column(node)); });
}

/// Applies a motion to the nodes of a connectivity, which are treated as a list of the given kind.
template <class List, class Motion>
int move_used_nodes(dense2D<double>& coords, const Motion& motion, const dense2D<unsigned>& connectivity) {
  dense1D<unsigned> nodes;
  if (coords.empty() || motion.is_identity() || list_distinct(connectivity, nodes) != 0) return 0;
  return move_nodes(coords, motion, List{nodes});
}

}  // namespace

int translate(dense2D<double>& coords, const vector_fixed<double, 2>& shift) {
  return move_nodes(coords, translation<2>(shift), every_node{});
}
int translate(dense2D<double>& coords, const vector_fixed<double, 3>& shift) {
  return move_nodes(coords, translation<3>(shift), every_node{});
}
int translate(dense2D<double>& coords, const vector_fixed<double, 2>& shift, const dense1D<unsigned>& ids) {
  return move_nodes(coords, translation<2>(shift), listed_nodes{ids});
}
int translate(dense2D<double>& coords, const vector_fixed<double, 3>& shift, const dense1D<unsigned>& ids) {
  return move_nodes(coords, translation<3>(shift), listed_nodes{ids});
}
int translate(dense2D<double>& coords, const vector_fixed<double, 2>& shift, const dense2D<unsigned>& connectivity) {
  return move_used_nodes<listed_nodes>(coords, translation<2>(shift), connectivity);
}
int translate(dense2D<double>& coords, const vector_fixed<double, 3>& shift, const dense2D<unsigned>& connectivity) {
  return move_used_nodes<listed_nodes>(coords, translation<3>(shift), connectivity);
}

int rotate(dense2D<double>& coords, const vector_fixed<double, 2>& center, double angle) {
  return move_nodes(coords, rotation<2>(center, angle), every_node{});
}
int rotate(dense2D<double>& coords, const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation) {
  return move_nodes(coords, detail::rotation<3>(center, rotation), every_node{});
}
int rotate(dense2D<double>& coords, const vector_fixed<double, 2>& center, double angle, const dense1D<unsigned>& ids) {
  return move_nodes(coords, rotation<2>(center, angle), listed_nodes{ids});
}
int rotate(dense2D<double>& coords, const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
           const dense1D<unsigned>& ids) {
  return move_nodes(coords, detail::rotation<3>(center, rotation), listed_nodes{ids});
}
int rotate(dense2D<double>& coords, const vector_fixed<double, 2>& center, double angle,
           const dense2D<unsigned>& connectivity) {
  return move_used_nodes<listed_nodes>(coords, rotation<2>(center, angle), connectivity);
}
int rotate(dense2D<double>& coords, const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
           const dense2D<unsigned>& connectivity) {
  return move_used_nodes<listed_nodes>(coords, detail::rotation<3>(center, rotation), connectivity);
}

int zoom(dense2D<double>& coords, const vector_fixed<double, 2>& center, double factor) {
  return move_nodes(coords, scaling<2>(center, factor), every_node{});
}
int zoom(dense2D<double>& coords, const vector_fixed<double, 3>& center, double factor) {
  return move_nodes(coords, scaling<3>(center, factor), every_node{});
}
int zoom(dense2D<double>& coords, const vector_fixed<double, 2>& center, double factor, const dense1D<unsigned>& ids) {
  return move_nodes(coords, scaling<2>(center, factor), trusted_nodes{ids});
}
int zoom(dense2D<double>& coords, const vector_fixed<double, 3>& center, double factor, const dense1D<unsigned>& ids) {
  return move_nodes(coords, scaling<3>(center, factor), trusted_nodes{ids});
}
int zoom(dense2D<double>& coords, const vector_fixed<double, 2>& center, double factor,
         const dense2D<unsigned>& connectivity) {
  return move_used_nodes<trusted_nodes>(coords, scaling<2>(center, factor), connectivity);
}
int zoom(dense2D<double>& coords, const vector_fixed<double, 3>& center, double factor,
         const dense2D<unsigned>& connectivity) {
  return move_used_nodes<trusted_nodes>(coords, scaling<3>(center, factor), connectivity);
}

}  // namespace qel::gridwork
