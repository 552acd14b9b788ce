// The node closest to a point.
//
// The answer that must come out is that of a plain walk: the way of an insertion first, then node, right subtree, left
// subtree, and only a strictly smaller distance replaces the best one. A search that looks at near subtrees first is
// several times faster. It gives the same node unless another one is as near, but for rounding; then, and where
// squares over- or underflow or a NaN hides part of the tree, the plain walk decides.
#include <cmath>
#include <limits>

#include "core/result.h"
#include "search/geometry.h"
#include "search/node_tree.h"
#include "search/query_stack.h"

namespace qel::gridwork::detail {
namespace {

constexpr double largest = std::numeric_limits<double>::max();

// Squared distances that differ by less than this factor may compare either way after rounding, which is below 1e-14.
constexpr double tie_factor = 1 + 4e-13;

// Between these bounds neither a squared distance nor its terms that matter have over- or underflowed.
constexpr double smallest_safe_square = 1e-280;
constexpr double largest_safe_square = 1e280;

/// The nearest node so far, and how near the nearest one besides it is.
struct closest_two {
  double best = largest;
  double second = largest;
  unsigned id = none;

  void consider(double square, unsigned candidate) noexcept {
    if (square < best) {
      if (candidate != id) second = best;
      best = square;
      id = candidate;
    } else if (square < second && candidate != id) {
      second = square;
    }
  }

  bool is_clear() const noexcept {
    if (id == none || best >= largest_safe_square) return false;
    if (best == 0) return second >= smallest_safe_square;
    return best >= smallest_safe_square && second > best * tie_factor;
  }
};

/// A subtree beyond a splitting plane, and how far off it is at least: one square for each axis.
template <unsigned Dim>
struct far_subtree {
  unsigned place, axis;
  double squares[Dim];

  double bound() const noexcept {
    double sum = 0;
    for (const double square : squares) sum += square;
    return sum;
  }
};

struct left_subtree {
  unsigned place, axis;
  double split;
};

}  // namespace

template <unsigned Dim>
unsigned node_tree<Dim>::find_closest(const point& p, unsigned excluded) const {
  unsigned winner = none;
  if (nodes_.empty()) return none;
  if (!has_nan_ && find_clear_winner(p, excluded, winner)) return winner;
  return find_closest_in_order(p, excluded);
}

template <unsigned Dim>
unsigned node_tree<Dim>::find_closest_to_node(unsigned id) const {
  if (id >= coords_->cols() || coords_->rows() < Dim) return none;
  point p;
  for (unsigned a = 0; a < Dim; ++a) p[a] = (*coords_)(a, id);
  return find_closest(p, id);
}

template <unsigned Dim>
bool node_tree<Dim>::find_clear_winner(const point& p, unsigned excluded, unsigned& winner) const {
  const node* nodes = nodes_.data();
  query_stack<far_subtree<Dim>> far_subtrees;
  far_subtree<Dim> current{};
  closest_two closest;
  const auto consider = [&](const node& candidate) {
    if (candidate.id != excluded) closest.consider(squared_distance<Dim>(candidate.p, p.data()), candidate.id);
  };
  for (;;) {
    const node& at = nodes[current.place];
    unsigned next = none;
    if (at.run != 0) {
      for (const node* it = &at; it != &at + at.run; ++it) consider(*it);
      if (closest.second == 0) return false;
    } else {
      consider(at);
      const double offset = p[current.axis] - at.p[current.axis];
      const bool right = offset >= 0;
      next = right ? at.right : at.left;
      const unsigned far = right ? at.left : at.right;
      const unsigned axis = next_axis<Dim>(current.axis);
      if (far != none) {
        far_subtree<Dim> pushed = current;
        pushed.place = far;
        pushed.axis = axis;
        pushed.squares[current.axis] = offset * offset;
        if (pushed.bound() <= closest.best * tie_factor) far_subtrees.push(pushed);
      }
      current.axis = axis;
    }
    while (next == none) {
      if (far_subtrees.empty()) {
        winner = closest.id;
        return closest.is_clear();
      }
      current = far_subtrees.pop();
      if (current.bound() <= closest.best * tie_factor) next = current.place;
    }
    current.place = next;
  }
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
    for (;;) {
      const unsigned parent_axis = left.axis == 0 ? Dim - 1 : left.axis - 1;
      if (left.place != none && left.split > p[parent_axis] - radius) break;
      if (left_subtrees.empty()) return best;
      left = left_subtrees.pop();
    }
    place = left.place;
    axis = left.axis;
  }
}

template unsigned node_tree<2>::find_closest(const point&, unsigned) const;
template unsigned node_tree<3>::find_closest(const point&, unsigned) const;
template unsigned node_tree<2>::find_closest_to_node(unsigned) const;
template unsigned node_tree<3>::find_closest_to_node(unsigned) const;

}  // namespace qel::gridwork::detail
