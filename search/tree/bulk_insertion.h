// Builds in bulk the k-d tree that inserting a list of nodes one by one would give.
//
// The first node of a list becomes the root; those that go left of it and those that go right keep their order, because
// a node reaches its subtree when its turn in the list comes. So splitting the list stably by its first node, again
// and again, gives the same tree, and gives it in pre-order.
#ifndef QEL_GRIDWORK_SEARCH_TREE_BULK_INSERTION_H
#define QEL_GRIDWORK_SEARCH_TREE_BULK_INSERTION_H

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

#include "core/check.h"
#include "core/limits.h"
#include "core/result.h"

namespace qel::gridwork::detail {

/// A node to insert; `ordinal` is its place in the order of insertion.
template <unsigned Dim>
struct listed_node {
  double p[Dim];
  unsigned id, ordinal;
};

/// A node of the tree. `scan_length` is 0 or the size of the subtree, when that is small, free of NaN, and lies in
/// consecutive places from here on: it is scanned, not descended.
template <unsigned Dim>
struct tree_node {
  double p[Dim];
  unsigned id, left, right, scan_length;
};

template <unsigned Dim>
constexpr unsigned next_axis(unsigned axis) noexcept {
  return axis + 1 == Dim ? 0 : axis + 1;
}

/// Number of nodes before the first one whose successors do not all lie on one side of it.
template <unsigned Dim>
unsigned chain_length(const listed_node<Dim>* list, unsigned count, unsigned first_axis) noexcept {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  struct {
    double min = infinity, max = -infinity;
    bool has_number = false, has_nan = false;
  } later[Dim];
  unsigned length = count;
  unsigned axis = (first_axis + count - 1) % Dim;
  for (unsigned k = count; k-- > 0;) {
    const listed_node<Dim>& it = list[k];
    const double s = it.p[axis];
    const bool all_right = !later[axis].has_nan && later[axis].min >= s;
    const bool all_left = !(later[axis].has_number && later[axis].max >= s);
    if (!all_right && !all_left) length = k;
    for (unsigned a = 0; a < Dim; ++a) {
      later[a].min = it.p[a] < later[a].min ? it.p[a] : later[a].min;
      later[a].max = it.p[a] > later[a].max ? it.p[a] : later[a].max;
      later[a].has_nan |= it.p[a] != it.p[a];
      later[a].has_number |= it.p[a] == it.p[a];
    }
    axis = axis == 0 ? Dim - 1 : axis - 1;
  }
  return length;
}

template <unsigned Dim>
bool has_nan(const listed_node<Dim>* list, unsigned count) noexcept {
  bool found = false;
  for (unsigned k = 0; k < count; ++k) {
    for (unsigned a = 0; a < Dim; ++a) found |= list[k].p[a] != list[k].p[a];
  }
  return found;
}

template <unsigned Dim>
class bulk_inserter {
 public:
  using listed = listed_node<Dim>;
  using node = tree_node<Dim>;

  bulk_inserter(node* nodes, unsigned* ordinals) noexcept : nodes_(nodes), ordinals_(ordinals) {}

  /// Builds the tree of list[0 .. count); `spare` has room for as many. Both are overwritten.
  void build(listed* list, listed* spare, unsigned count) noexcept {
    unbuilt pending[40];  // the smaller part is always done first, so 32 would do
    unsigned waiting = 0;
    unbuilt current{list, spare, count, 0, 0};
    for (;;) {
      if (current.count <= limits::longest_scan) {
        build_small(current);
        if (waiting == 0) return;
        current = pending[--waiting];
        continue;
      }
      unbuilt other = split(current);
      if (other.count == 0) {
        skip_chain(current);
        continue;
      }
      if (other.count < current.count) std::swap(other, current);
      QEL_GRIDWORK_CHECK(waiting < std::size(pending));
      pending[waiting++] = other;
    }
  }

 private:
  /// A subtree to build: a list in insertion order, the memory for splitting it, and the place of its root.
  struct unbuilt {
    listed* list;
    listed* spare;
    unsigned count, place, axis;
  };

  /// Makes the first node of the list one of the tree. `current` becomes one of the two parts of the others and the
  /// result the second one, which is empty when all of them lie on one side.
  unbuilt split(unbuilt& current) noexcept {
    const listed root = current.list[0];
    const double pivot = root.p[current.axis];
    listed* left = current.list + 1;
    listed* right = current.spare;
    for (const listed* it = current.list + 1; it != current.list + current.count; ++it) {
      const listed moved = *it;
      const bool goes_right = moved.p[current.axis] >= pivot;
      *left = moved;  // written to both sides: no branch on a coin toss
      *right = moved;
      left += goes_right ? 0 : 1;
      right += goes_right ? 1 : 0;
    }
    const auto left_count = static_cast<unsigned>(left - current.list - 1);
    const auto right_count = static_cast<unsigned>(right - current.spare);
    const unsigned axis = next_axis<Dim>(current.axis);
    const unsigned place = current.place + 1;
    emit(current.place, root, left_count, right_count);

    // The left list stayed where it was, the right one lies at the start of the spare memory.
    const unbuilt left_list{current.list + 1, current.spare + right_count, left_count, place, axis};
    const unbuilt right_list{current.spare, left, right_count, place + left_count, axis};
    current = left_count != 0 ? left_list : right_list;
    return left_count != 0 ? right_list : unbuilt{};
  }

  /// Coincident nodes give long chains in which no node parts the rest. Makes nodes of the list up to the first one
  /// that does, at the cost of a single pass.
  void skip_chain(unbuilt& current) noexcept {
    if (current.count <= limits::longest_scan) return;
    const unsigned length =
        std::min(chain_length(current.list, current.count, current.axis), current.count - limits::longest_scan);
    for (unsigned k = 0; k < length; ++k) {
      const listed& it = current.list[k];
      const bool right = current.list[k + 1].p[current.axis] >= it.p[current.axis];
      emit(current.place, it, right ? 0 : 1, right ? 1 : 0);
      ++current.place;
      current.axis = next_axis<Dim>(current.axis);
    }
    current.list += length;
    current.count -= length;
  }

  void emit(unsigned place, const listed& it, unsigned left_count, unsigned right_count) noexcept {
    node& out = nodes_[place];
    std::copy(it.p, it.p + Dim, out.p);
    out.id = it.id;
    out.left = left_count != 0 ? place + 1 : none;
    out.right = right_count != 0 ? place + 1 + left_count : none;
    out.scan_length = 0;
    ordinals_[place] = it.ordinal;
  }

  /// Small subtrees: their depth is bounded, so plain recursion serves.
  void build_small(unbuilt current) noexcept {
    if (current.count == 0) return;
    const bool is_scanned = !has_nan(current.list, current.count);
    build_recursively(current);
    if (is_scanned) nodes_[current.place].scan_length = current.count;
  }

  void build_recursively(unbuilt current) noexcept {
    QEL_GRIDWORK_CHECK(current.count != 0 && current.count <= limits::longest_scan);
    if (current.count == 1) {
      emit(current.place, current.list[0], 0, 0);
      return;
    }
    if (current.count == 2) {
      const bool right = current.list[1].p[current.axis] >= current.list[0].p[current.axis];
      emit(current.place, current.list[0], right ? 0 : 1, right ? 1 : 0);
      emit(current.place + 1, current.list[1], 0, 0);
      return;
    }
    const unbuilt other = split(current);
    build_recursively(current);
    if (other.count != 0) build_recursively(other);
  }

  node* nodes_;
  unsigned* ordinals_;
};

}  // namespace qel::gridwork::detail

#endif
