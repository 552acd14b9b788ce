// The k-d tree behind node_detector.
//
// Nodes that were inserted in bulk lie in pre-order; nodes inserted later are appended and reached by links, until
// there are so many of them that the tree is built anew. Each node carries a copy of its position, so a search reads
// memory in one place. Once there have been many queries, a balanced tree of the same nodes answers most of them.
#ifndef QEL_GRIDWORK_SEARCH_TREE_NODE_TREE_H
#define QEL_GRIDWORK_SEARCH_TREE_NODE_TREE_H

#include <atomic>
#include <cstdint>

#include "qel/dense.h"
#include "qel/fixed.h"
#include "search/tree/bulk_insertion.h"
#include "search/tree/query_tree.h"

namespace qel::gridwork::detail {

template <unsigned Dim>
class node_tree {
 public:
  using point = vector_fixed<double, Dim>;

  node_tree() noexcept = default;
  explicit node_tree(const dense2D<double>& coords) noexcept : coords_(&coords) {}
  node_tree(const node_tree&) = delete;
  node_tree& operator=(const node_tree&) = delete;
  ~node_tree() { drop_query_tree(); }

  /// Makes this an independent tree with the other's nodes and coordinates.
  [[nodiscard]] bool copy(const node_tree& other) noexcept;

  /// Adds the nodes of the list in shuffled order; entries that are no column of the coordinates are skipped.
  [[nodiscard]] bool insert(const dense1D<unsigned>& ids);

  unsigned size() const noexcept { return static_cast<unsigned>(nodes_.size()); }

  /// Nodes that were there when the tree was last built in bulk.
  std::uint64_t built_count() const noexcept { return built_; }

  /// The node closest to `p`, nodes with the index `excluded` left out.
  unsigned find_closest(const point& p, unsigned excluded) const;

  /// The node closest to the position of a column of the coordinates, other than itself.
  unsigned find_closest_to_node(unsigned id) const;

  void find_in_box(const point& lower, const point& upper, dense1D<unsigned>& ids) const;

 private:
  using node = tree_node<Dim>;
  using listed = listed_node<Dim>;

  listed read_node(unsigned id, unsigned ordinal) const noexcept;
  bool insert_one_by_one(const dense1D<unsigned>& ids);
  std::uint64_t descend(const listed& added);
  void append(const listed& added);
  bool build_anew(const dense1D<unsigned>& ids);
  bool list_nodes(const dense1D<unsigned>& ids, listed* list) const noexcept;

  unsigned first_on_path(const point& p, unsigned excluded, double& radius) const;
  unsigned find_closest_in_order(const point& p, unsigned excluded) const;
  void find_in_box_in_order(const point& lower, const point& upper, dense1D<unsigned>& ids) const;

  const query_tree<Dim>* tree_for_query() const;
  void drop_query_tree() noexcept;

  const dense2D<double>* coords_ = nullptr;
  dense1D<node> nodes_;
  dense1D<unsigned> ordinals_;  // place of each node in the order of insertion
  std::uint64_t built_ = 0;
  bool has_nan_ = false;

  // Made by the query that finds it worth while. Of queries that make one at the same time, the first one's is kept.
  mutable std::atomic<const query_tree<Dim>*> query_tree_{nullptr};
  mutable std::atomic<std::uint64_t> queries_without_tree_{0};
};

}  // namespace qel::gridwork::detail

#endif
