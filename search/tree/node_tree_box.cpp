// Nodes in a box.
#include <algorithm>

#include "core/limits.h"
#include "core/result.h"
#include "search/tree/node_tree.h"
#include "search/tree/query_stack.h"

namespace qel::gridwork::detail {
namespace {

/// Appends to a list in portions. From the first node on that does not fit, all are left out.
class list_appender {
 public:
  explicit list_appender(dense1D<unsigned>& list) noexcept : list_(list) {}
  ~list_appender() { flush(); }
  list_appender(const list_appender&) = delete;
  list_appender& operator=(const list_appender&) = delete;

  void append(unsigned id) noexcept {
    portion_[count_++] = id;
    if (count_ == capacity) flush();
  }

 private:
  static constexpr unsigned capacity = limits::box_portion;

  void flush() noexcept {
    if (!is_full_) append_portion();
    count_ = 0;
  }

  void append_portion() noexcept {
    const std::uint64_t size = list_.size();
    is_full_ = !list_.reserve(size + count_, 2) && !list_.reserve(size + count_);
    const std::uint64_t fitting = is_full_ ? std::min<std::uint64_t>(count_, list_.capacity() - size) : count_;
    if (list_.resize(size + fitting)) std::copy_n(portion_, fitting, list_.data() + size);
  }

  dense1D<unsigned>& list_;
  unsigned portion_[capacity];
  unsigned count_ = 0;
  bool is_full_ = false;
};

template <unsigned Dim>
bool inside(const double* p, const vector_fixed<double, Dim>& lower, const vector_fixed<double, Dim>& upper) noexcept {
  bool is_inside = true;
  for (unsigned a = 0; a < Dim; ++a) is_inside &= p[a] >= lower[a] && p[a] <= upper[a];
  return is_inside;
}

struct waiting_subtree {
  unsigned place, axis;
};

}  // namespace

/// Boxes with few nodes are answered by the balanced tree; its finds are sorted into pre-order, the order of the places
/// as long as no node was appended. Boxes with many are cheaper to walk in order.
template <unsigned Dim>
void node_tree<Dim>::find_in_box(const point& lower, const point& upper, dense1D<unsigned>& ids) const {
  if (nodes_.empty()) return;
  constexpr unsigned most = limits::most_in_sorted_box;
  node_in_order nodes[most];
  const query_tree<Dim>* tree = built_ == nodes_.size() ? tree_for_query() : nullptr;
  const unsigned found = tree != nullptr ? tree->find_in_box(lower, upper, nodes, most) : most;
  if (found == most) {
    find_in_box_in_order(lower, upper, ids);
    return;
  }
  std::sort(nodes, nodes + found);
  list_appender appender(ids);
  for (unsigned k = 0; k < found; ++k) appender.append(nodes[k].id);
}

template <unsigned Dim>
void node_tree<Dim>::find_in_box_in_order(const point& lower, const point& upper, dense1D<unsigned>& ids) const {
  const node* nodes = nodes_.data();
  list_appender found(ids);
  query_stack<waiting_subtree> right_subtrees;
  waiting_subtree current{0, 0};
  for (;;) {
    const node& at = nodes[current.place];
    waiting_subtree next{none, next_axis<Dim>(current.axis)};
    if (at.scan_length != 0) {
      for (const node* it = &at; it != &at + at.scan_length; ++it) {
        if (inside<Dim>(it->p, lower, upper)) found.append(it->id);
      }
    } else {
      if (inside<Dim>(at.p, lower, upper)) found.append(at.id);
      const double s = at.p[current.axis];
      const unsigned right = s <= upper[current.axis] ? at.right : none;
      next.place = s >= lower[current.axis] ? at.left : none;
      if (next.place == none) {
        next.place = right;
      } else if (right != none) {
        right_subtrees.push({right, next.axis});
      }
    }
    if (next.place == none) {
      if (right_subtrees.empty()) return;
      next = right_subtrees.pop();
    }
    current = next;
  }
}

template void node_tree<2>::find_in_box(const point&, const point&, dense1D<unsigned>&) const;
template void node_tree<3>::find_in_box(const point&, const point&, dense1D<unsigned>&) const;

}  // namespace qel::gridwork::detail
