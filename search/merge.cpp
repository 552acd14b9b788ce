// The doors of the merge family: checks, by nearness or element by element, and what is done with the map.
#include "core/coordinates.h"
#include "core/outputs.h"
#include "core/result.h"
#include "ids/distinct_indices.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/search.h"
#include "search/merging/element_merge.h"
#include "search/merging/proximity_merge.h"
#include "search/node_list.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// Leaves `new_IDs` empty when the merge failed.
int finish(int result, dense1D<unsigned>& new_IDs) noexcept {
  if (result < 0) new_IDs.clear();
  return result;
}

/// Gives every merged node its survivor's position. Survivors are read from the old matrix, so order does not matter.
bool move_merged_nodes(dense2D<double>& coords, const dense1D<unsigned>& new_IDs) {
  dense2D<double> moved;
  if (!moved.copy(coords)) return false;
  for (std::uint64_t i = 0; i < new_IDs.size(); ++i) {
    if (new_IDs[i] == i) continue;
    for (std::uint64_t k = 0; k < coords.rows(); ++k) moved(k, i) = coords(k, new_IDs[i]);
  }
  return coords.copy(moved);
}

/// The distinct nodes of a list; kept in `storage` unless they are 0, 1, 2, ...
bool distinct_nodes(const dense1D<unsigned>& IDs, dense1D<unsigned>& storage, node_list& nodes) {
  nodes = node_list::of(IDs);
  if (nodes.ids == nullptr) return true;
  if (list_distinct(IDs, storage) != 0) return false;
  nodes = node_list::of(storage);
  return true;
}

int merge_lists(const dense2D<double>& coords, const dense1D<unsigned>& IDs1, const dense1D<unsigned>& IDs2,
                dense1D<unsigned>& new_IDs, double tol) {
  dense1D<unsigned> storage1;
  dense1D<unsigned> storage2;
  node_list moving;
  node_list fixed;
  if (!distinct_nodes(IDs1, storage1, moving)) return out_of_memory;
  if (&IDs1 == &IDs2 || IDs1 == IDs2) return proximity_merge(coords, moving, new_IDs, tol);
  if (!distinct_nodes(IDs2, storage2, fixed)) return out_of_memory;
  return proximity_merge(coords, moving, fixed, new_IDs, tol);
}

int merge_checked(const dense2D<double>& coords, const dense1D<unsigned>& IDs1, const dense1D<unsigned>& IDs2,
                  dense1D<unsigned>& new_IDs, double tol) {
  new_IDs.clear();
  if (coords.cols() == 0) return 0;
  if (!in_plane_or_space(coords)) return -1;
  if (!check_IDs(IDs1, node_bound(coords))) return -2;
  if (&IDs1 != &IDs2 && !check_IDs(IDs2, node_bound(coords))) return -3;
  if (!(tol >= 0)) return -4;
  if (IDs1.empty() || IDs2.empty()) return 0;
  return finish(merge_lists(coords, IDs1, IDs2, new_IDs, tol), new_IDs);
}

int merge_used_nodes(const dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last,
                     const dense1D<unsigned>& nodes, dense1D<unsigned>& new_IDs, double tol, unsigned mode) {
  if (mode != 0) return element_merge(coords, first, last, nodes, new_IDs, tol, mode == 2);
  const int merged = proximity_merge(coords, node_list::of(nodes), new_IDs, tol);
  if (merged < 0) return merged;
  for (dense2D<unsigned>* matrix = first; matrix != last; ++matrix) change_indices(*matrix, new_IDs);
  return merged;
}

int merge_checked(const dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last,
                  dense1D<unsigned>& new_IDs, double tol, unsigned mode) {
  new_IDs.clear();
  if (coords.cols() == 0 || first == last) return 0;
  if (!in_plane_or_space(coords)) return -1;
  if (last < first) return -3;
  if (!(tol >= 0)) return -5;
  if (mode > 2) return -6;
  dense1D<unsigned> nodes;
  if (list_distinct(first, last, nodes) != 0) return out_of_memory;
  if (nodes.empty()) return 0;
  if (!check_IDs(nodes, node_bound(coords))) return -2;
  return finish(merge_used_nodes(coords, first, last, nodes, new_IDs, tol, mode), new_IDs);
}

}  // namespace

int merge(dense2D<double>& coords, dense1D<unsigned>& new_IDs, double tol) {
  new_IDs.clear();
  if (coords.cols() == 0) return 0;
  if (!in_plane_or_space(coords)) return -1;
  if (!(tol >= 0)) return -3;
  const int merged = proximity_merge(coords, node_list::all(coords.cols()), new_IDs, tol);
  if (merged > 0 && !move_merged_nodes(coords, new_IDs)) return finish(out_of_memory, new_IDs);
  return finish(merged, new_IDs);
}

int merge(dense2D<double>& coords, double tol) {
  dense1D<unsigned> new_IDs;
  return merge(coords, new_IDs, tol);
}

int merge(const dense2D<double>& coords, const dense1D<unsigned>& IDs1, const dense1D<unsigned>& IDs2,
          dense1D<unsigned>& new_IDs, double tol) {
  return merge_checked(coords, IDs1, IDs2, output(new_IDs, IDs1, IDs2), tol);
}

int merge(const dense2D<double>& coords, const dense1D<unsigned>& IDs, dense1D<unsigned>& new_IDs, double tol) {
  return merge(coords, IDs, IDs, new_IDs, tol);
}

int merge(const dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last, dense1D<unsigned>& new_IDs,
          double tol, unsigned mode) {
  return merge_checked(coords, first, last, output(new_IDs, input_matrices{first, last}), tol, mode);
}

int merge(const dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last, double tol, unsigned mode) {
  dense1D<unsigned> new_IDs;
  return merge(coords, first, last, new_IDs, tol, mode);
}

int merge(const dense2D<double>& coords, dense2D<unsigned>& connectivity, dense1D<unsigned>& new_IDs, double tol,
          unsigned mode) {
  return merge(coords, &connectivity, &connectivity + 1, new_IDs, tol, mode);
}

int merge(const dense2D<double>& coords, dense2D<unsigned>& connectivity, double tol, unsigned mode) {
  return merge(coords, &connectivity, &connectivity + 1, tol, mode);
}

int merge(const dense2D<double>& coords, dense2D<unsigned>& connectivity1, dense2D<unsigned>& connectivity2,
          dense1D<unsigned>& new_IDs, double tol, unsigned mode) {
  dense2D<unsigned> both[] = {connectivity1, connectivity2};  // views: renumbering reaches the caller's entries
  const bool is_one = are_same_view(connectivity1, connectivity2);
  return merge(coords, both, both + (is_one ? 1 : 2), new_IDs, tol, mode);
}

int merge(const dense2D<double>& coords, dense2D<unsigned>& connectivity1, dense2D<unsigned>& connectivity2, double tol,
          unsigned mode) {
  dense1D<unsigned> new_IDs;
  return merge(coords, connectivity1, connectivity2, new_IDs, tol, mode);
}

}  // namespace qel::gridwork
