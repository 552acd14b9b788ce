#include "search/merging/element_merge.h"

#include <algorithm>
#include <cmath>

#include "core/identity_map.h"
#include "core/limits.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "search/geometry.h"
#include "search/merging/box_tree.h"
#include "search/merging/ranked_positions.h"

namespace qel::gridwork::detail {
namespace {

/// Two near nodes of one element. Recorded from both ends, so that of equally close records the lower node leads.
struct near_pair {
  double distance;
  unsigned first, second;
};

bool operator<(const near_pair& a, const near_pair& b) noexcept {
  if (a.distance != b.distance) return a.distance < b.distance;
  return a.first != b.first ? a.first < b.first : a.second < b.second;
}

template <unsigned Dim>
class element_merger {
 public:
  element_merger(const dense2D<double>& coords, double tol, dense1D<unsigned>& new_IDs) noexcept
      : positions_(coords), tol_(tol), new_IDs_(new_IDs) {}

  /// Collects the near pairs of one matrix.
  [[nodiscard]] bool add_pairs(const dense2D<unsigned>& connectivity) {
    const bool is_tall = connectivity.rows() > limits::most_rows_for_pairs;
    for (std::uint64_t j = 0; j < connectivity.cols(); ++j) {
      const unsigned* begin = connectivity.begin_column(j);
      const unsigned* end = connectivity.end_column(j);
      if (!(is_tall ? add_pairs_by_tree(begin, end) : add_all_pairs(begin, end))) return false;
    }
    return true;
  }

  /// Merges the closest pairs first, each node at most once. Returns the number of merged nodes.
  int merge_pairs() {
    std::sort(pairs_.begin(), pairs_.end());
    int merged = 0;
    for (const near_pair& pair : pairs_) {
      if (is_merged(pair.first) || is_merged(pair.second)) continue;
      new_IDs_[pair.second] = pair.first;
      ++merged;
    }
    pairs_.clear();
    return merged;
  }

 private:
  bool is_merged(unsigned node) const noexcept { return new_IDs_[node] != node; }

  [[nodiscard]] bool add_all_pairs(const unsigned* begin, const unsigned* end) {
    for (const unsigned* a = begin; a != end; ++a) {
      if (*a == none || is_merged(*a)) continue;
      for (const unsigned* b = begin; b != end; ++b) {
        if (*b == none || *b == *a || is_merged(*b)) continue;
        if (in_box_around<Dim>(positions_[*a], positions_[*b], tol_) && !add_pair_if_near(*a, *b)) return false;
      }
    }
    return true;
  }

  /// For tall columns, whose pairs are too many.
  [[nodiscard]] bool add_pairs_by_tree(const unsigned* begin, const unsigned* end) {
    if (!collect_nodes(begin, end) || !tree_.build({nodes_.data(), nodes_.size()}, none)) return false;
    for (const placed_node<Dim>& a : nodes_) {
      const auto add = [&](unsigned b) { return b == a.rank || add_pair_if_near(a.rank, b); };
      if (!tree_.for_each_in_box(a.p, tol_, add)) return false;
    }
    return true;
  }

  /// The distinct nodes of a column that may be merged, in the order of their indices. One with a NaN is near to none;
  /// one at infinity is within an infinite tolerance of others.
  [[nodiscard]] bool collect_nodes(const unsigned* begin, const unsigned* end) {
    IDs_.clear();
    for (const unsigned* id = begin; id != end; ++id) {
      if (*id == none || is_merged(*id) || has_nan<Dim>(positions_[*id])) continue;
      if (!IDs_.push_back(*id)) return false;
    }
    std::sort(IDs_.begin(), IDs_.end());
    return place_nodes(IDs_.begin(), std::unique(IDs_.begin(), IDs_.end()));
  }

  [[nodiscard]] bool place_nodes(const unsigned* begin, const unsigned* end) {
    nodes_.clear();
    for (const unsigned* id = begin; id != end; ++id) {
      placed_node<Dim> node{{}, *id, true};
      std::copy_n(positions_[*id], Dim, node.p);
      if (!nodes_.push_back(node)) return false;
    }
    return true;
  }

  /// The nodes lie in the box of the tolerance.
  [[nodiscard]] bool add_pair_if_near(unsigned a, unsigned b) {
    const double distance = std::sqrt(squared_distance<Dim>(positions_[a], positions_[b]));
    return !(distance <= tol_) || pairs_.push_back({distance, a, b});
  }

  ranked_positions<Dim> positions_;
  double tol_;
  dense1D<unsigned>& new_IDs_;
  dense1D<near_pair> pairs_;
  dense1D<unsigned> IDs_;            // of a tall column
  dense1D<placed_node<Dim>> nodes_;  // of the same
  box_tree<Dim> tree_;               // of the same
};

/// Lets every node on the way from `node` to its survivor point at the survivor.
void shorten_path(dense1D<unsigned>& new_IDs, unsigned node) noexcept {
  unsigned survivor = node;
  while (new_IDs[survivor] != survivor) survivor = new_IDs[survivor];
  while (node != survivor) {
    const unsigned next = new_IDs[node];
    new_IDs[node] = survivor;
    node = next;
  }
}

template <unsigned Dim>
int merge_elements(const dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last,
                   const dense1D<unsigned>& nodes, dense1D<unsigned>& new_IDs, double tol, bool repeat) {
  element_merger<Dim> merger(coords, tol, new_IDs);
  int total = 0;
  for (;;) {
    for (const dense2D<unsigned>* matrix = first; matrix != last; ++matrix) {
      if (!merger.add_pairs(*matrix)) return out_of_memory;
    }
    const int merged = merger.merge_pairs();
    for (const unsigned node : nodes) {
      if (node != none) shorten_path(new_IDs, node);
    }
    for (dense2D<unsigned>* matrix = first; matrix != last; ++matrix) change_indices(*matrix, new_IDs);
    total += merged;
    if (merged == 0 || !repeat) return total;
  }
}

}  // namespace

int element_merge(const dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last,
                  const dense1D<unsigned>& nodes, dense1D<unsigned>& new_IDs, double tol, bool repeat) {
  if (!set_identity(new_IDs, coords.cols())) return out_of_memory;
  return coords.rows() == 2 ? merge_elements<2>(coords, first, last, nodes, new_IDs, tol, repeat)
                            : merge_elements<3>(coords, first, last, nodes, new_IDs, tol, repeat);
}

}  // namespace qel::gridwork::detail
