// The node closest to a point.
//
// The answer that must come out is that of a plain walk: the way of an insertion first, then node, right subtree, left
// subtree, and only a strictly smaller distance replaces the best one. A balanced tree is several times faster. It
// gives the same node unless another one is as near, but for rounding; then, and where squares over- or underflow or a
// NaN hides part of the tree, the plain walk decides.
#include <cmath>
#include <limits>

#include "core/result.h"
#include "search/geometry.h"
#include "search/tree/node_tree.h"
#include "search/tree/query_stack.h"

namespace qel::gridwork::detail {
namespace {

constexpr double largest = std::numeric_limits<double>::max();

struct left_subtree {
  unsigned place, axis;
  double split;
};

/// Goes up from a left side that is out of reach to the nearest one that is not; false when there is none.
template <unsigned Dim>
bool find_in_reach(left_subtree& left, query_stack<left_subtree>& waiting, const vector_fixed<double, Dim>& p,
                   double radius) {
  for (;;) {
    const unsigned parent_axis = left.axis == 0 ? Dim - 1 : left.axis - 1;
    if (left.place != none && left.split > p[parent_axis] - radius) return true;
    if (waiting.empty()) return false;
    left = waiting.pop();
  }
}

}  // namespace

template <unsigned Dim>
unsigned node_tree<Dim>::find_closest(const point& p, unsigned excluded) const {
  if (nodes_.empty()) return none;
  if (const query_tree<Dim>* tree = tree_for_query()) {
    const unsigned closest = tree->find_clear_closest(p, excluded);
    if (closest != none) return closest;
  }
  return find_closest_in_order(p, excluded);
}

template <unsigned Dim>
unsigned node_tree<Dim>::find_closest_to_node(unsigned id) const {
  if (id >= coords_->cols() || coords_->rows() < Dim) return none;
  point p;
  for (unsigned a = 0; a < Dim; ++a) p[a] = (*coords_)(a, id);
  return find_closest(p, id);
}

/// The nearest node on the way that an insertion of `p` would take, the first of equally near ones.
template <unsigned Dim>
unsigned node_tree<Dim>::first_on_path(const point& p, unsigned excluded, double& radius) const {
  const node* nodes = nodes_.data();
  unsigned best = none;
  double best_square = largest;
  unsigned axis = 0;
  for (unsigned at = 0; at != none && best_square != 0;) {
    const node& it = nodes[at];
    const double square = squared_distance<Dim>(it.p, p.data());
    if (it.id != excluded && square < best_square) {
      best_square = square;
      best = it.id;
    }
    at = p[axis] >= it.p[axis] ? it.right : it.left;
    axis = next_axis<Dim>(axis);
  }
  radius = best == none ? largest : std::sqrt(best_square);
  return best;
}

template <unsigned Dim>
unsigned node_tree<Dim>::find_closest_in_order(const point& p, unsigned excluded) const {
  double radius = largest;
  unsigned best = first_on_path(p, excluded, radius);
  if (radius == 0) return best;
  const node* nodes = nodes_.data();
  query_stack<left_subtree> left_subtrees;
  unsigned place = 0;
  unsigned axis = 0;
  for (;;) {
    const node& at = nodes[place];
    if (at.id != excluded && in_box_around<Dim>(p.data(), at.p, radius)) {
      const double distance = std::sqrt(squared_distance<Dim>(at.p, p.data()));
      if (distance < radius) {
        radius = distance;
        best = at.id;
      }
    }
    const double split = at.p[axis];
    const unsigned next = split < p[axis] + radius ? at.right : none;
    left_subtree left{at.left, next_axis<Dim>(axis), split};
    if (next != none) {
      if (left.place != none) left_subtrees.push(left);
      place = next;
      axis = left.axis;
      continue;
    }
    // The right side is done; on with the left side of this node, or of one further up that is still within reach.
    if (!find_in_reach(left, left_subtrees, p, radius)) return best;
    place = left.place;
    axis = left.axis;
  }
}

template unsigned node_tree<2>::find_closest(const point&, unsigned) const;
template unsigned node_tree<3>::find_closest(const point&, unsigned) const;
template unsigned node_tree<2>::find_closest_to_node(unsigned) const;
template unsigned node_tree<3>::find_closest_to_node(unsigned) const;

}  // namespace qel::gridwork::detail
