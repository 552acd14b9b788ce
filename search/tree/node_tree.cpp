// Insertion: in bulk, or one by one below the tree that is there.
#include "search/tree/node_tree.h"

#include <algorithm>
#include <new>

#include "core/check.h"
#include "core/limits.h"
#include "core/position_table.h"
#include "core/result.h"
#include "search/tree/shuffle.h"

namespace qel::gridwork::detail {

template <unsigned Dim>
bool node_tree<Dim>::copy(const node_tree& other) noexcept {
  drop_query_tree();
  if (!nodes_.copy(other.nodes_) || !ordinals_.copy(other.ordinals_)) return false;
  coords_ = other.coords_;
  built_ = other.built_;
  has_nan_ = other.has_nan_;
  return true;
}

/// The balanced tree, or null as long as it does not pay. Its construction costs about as much as plain walks for some
/// queries, so it waits for as many.
template <unsigned Dim>
const query_tree<Dim>* node_tree<Dim>::tree_for_query() const {
  if (has_nan_) return nullptr;
  if (const query_tree<Dim>* tree = query_tree_.load(std::memory_order_acquire)) return tree;
  const std::uint64_t enough =
      nodes_.size() / limits::nodes_per_query_before_query_tree + limits::queries_before_query_tree;
  if (queries_without_tree_.fetch_add(1, std::memory_order_relaxed) < enough) return nullptr;
  queries_without_tree_.store(0, std::memory_order_relaxed);

  auto* fresh = new (std::nothrow) query_tree<Dim>;
  if (fresh == nullptr || !fresh->build(nodes_)) {
    delete fresh;
    return nullptr;
  }
  const query_tree<Dim>* present = nullptr;
  if (query_tree_.compare_exchange_strong(present, fresh, std::memory_order_acq_rel)) return fresh;
  delete fresh;
  return present;
}

template <unsigned Dim>
void node_tree<Dim>::drop_query_tree() noexcept {
  delete query_tree_.exchange(nullptr, std::memory_order_acq_rel);
  queries_without_tree_.store(0, std::memory_order_relaxed);
}

template <unsigned Dim>
bool node_tree<Dim>::insert(const dense1D<unsigned>& ids) {
  if (coords_->rows() < Dim) return true;
  const std::uint64_t bound = coords_->cols();
  dense1D<unsigned> shuffled;
  if (!shuffled.copy(ids)) return false;
  shuffle(shuffled.data(), shuffled.size());
  unsigned* kept = shuffled.data();
  for (const unsigned id : shuffled) {
    if (id < bound) *kept++ = id;
  }
  if (!shuffled.resize(static_cast<std::uint64_t>(kept - shuffled.data()))) return false;
  if (nodes_.size() + shuffled.size() >= none) return false;
  drop_query_tree();

  // Building anew costs in proportion to all nodes, so it waits until the tree has grown by a fraction of its size.
  const std::uint64_t added_since = nodes_.size() - built_ + shuffled.size();
  if (added_since > built_ / limits::nodes_per_node_before_rebuild + limits::nodes_before_rebuild)
    return build_anew(shuffled);
  return insert_one_by_one(shuffled);
}

template <unsigned Dim>
typename node_tree<Dim>::listed node_tree<Dim>::read_node(unsigned id, unsigned ordinal) const noexcept {
  QEL_GRIDWORK_CHECK(id < coords_->cols() && coords_->rows() >= Dim);
  listed read;
  std::copy_n(coords_->column(id), Dim, read.p);
  read.id = id;
  read.ordinal = ordinal;
  return read;
}

/// Where the tree is one long chain, descending for each node of a long list would be quadratic: past a number of steps
/// in proportion to the tree's size, what is left of the list is built in. Without memory for that, descending goes on.
/// Each list has its own account: the chain stays one when it is built anew, so that short lists would gain nothing.
template <unsigned Dim>
bool node_tree<Dim>::insert_one_by_one(const dense1D<unsigned>& ids) {
  if (!nodes_.reserve(nodes_.size() + ids.size(), 2) || !ordinals_.reserve(nodes_.size() + ids.size(), 2)) return false;
  std::uint64_t steps = 0;
  for (std::uint64_t k = 0; k < ids.size(); ++k) {
    const std::uint64_t most = limits::steps_per_node_before_rebuild * nodes_.size() + limits::steps_before_rebuild;
    if (steps > most && build_anew(ids.sub_vector(k, ids.size() - k))) return true;
    steps += descend(read_node(ids[k], size()));
  }
  return true;
}

/// Appends a node where the tree leads it. Returns the steps it took.
template <unsigned Dim>
std::uint64_t node_tree<Dim>::descend(const listed& added) {
  const unsigned place = size();
  unsigned* link = nullptr;
  unsigned axis = 0;
  std::uint64_t steps = 0;
  for (unsigned at = place == 0 ? none : 0; at != none; at = *link) {
    node& parent = nodes_[at];
    parent.scan_length = 0;
    link = added.p[axis] >= parent.p[axis] ? &parent.right : &parent.left;
    axis = next_axis<Dim>(axis);
    ++steps;
  }
  if (link != nullptr) *link = place;
  append(added);
  return steps;
}

/// Appends a node that no other one leads to. There is room.
template <unsigned Dim>
void node_tree<Dim>::append(const listed& added) {
  node fresh;
  std::copy_n(added.p, Dim, fresh.p);
  fresh.id = added.id;
  fresh.left = fresh.right = none;
  fresh.scan_length = 0;
  for (const double x : added.p) has_nan_ |= x != x;
  (void)nodes_.push_back(fresh);
  (void)ordinals_.push_back(added.ordinal);
}

/// Lists the nodes of the tree and those of `ids` in the order of insertion. True when one of them has a NaN.
template <unsigned Dim>
bool node_tree<Dim>::list_nodes(const dense1D<unsigned>& ids, listed* list) const noexcept {
  for (std::uint64_t place = 0; place < nodes_.size(); ++place) {
    listed& it = list[ordinals_[place]];
    std::copy_n(nodes_[place].p, Dim, it.p);
    it.id = nodes_[place].id;
    it.ordinal = ordinals_[place];
  }
  constexpr std::uint64_t ahead = limits::nodes_ahead;
  bool has_nan = has_nan_;
  for (std::uint64_t k = 0; k < ids.size(); ++k) {
    if (k + ahead < ids.size()) prefetch(coords_->column(ids[k + ahead]));
    const listed it = read_node(ids[k], static_cast<unsigned>(nodes_.size() + k));
    for (const double x : it.p) has_nan |= x != x;
    list[nodes_.size() + k] = it;
  }
  return has_nan;
}

template <unsigned Dim>
bool node_tree<Dim>::build_anew(const dense1D<unsigned>& ids) {
  const std::uint64_t count = nodes_.size() + ids.size();
  dense1D<listed> list;
  dense1D<listed> spare;
  dense1D<node> nodes;
  dense1D<unsigned> ordinals;
  if (!list.resize(count) || !spare.resize(count) || !nodes.resize(count) || !ordinals.resize(count)) return false;
  has_nan_ = list_nodes(ids, list.data());
  bulk_inserter<Dim>(nodes.data(), ordinals.data()).build(list.data(), spare.data(), static_cast<unsigned>(count));
  nodes_.shallow_copy(nodes);
  ordinals_.shallow_copy(ordinals);
  built_ = count;
  return true;
}

template class node_tree<2>;
template class node_tree<3>;

}  // namespace qel::gridwork::detail
