// Removal of elements that repeat a node and of nodes that no element uses.
#include <algorithm>

#include "core/columns.h"
#include "core/compact_columns.h"
#include "core/coordinates.h"
#include "core/index_flags.h"
#include "core/limits.h"
#include "core/outputs.h"
#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/search.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// Tells degenerate elements from sound ones.
class repetition_test {
 public:
  [[nodiscard]] bool prepare(std::uint64_t rows, bool strict) {
    rows_ = rows;
    strict_ = strict;
    return rows <= limits::most_rows_for_pairs || sorted_.resize(rows);
  }

  bool operator()(const unsigned* nodes) noexcept {
    if (rows_ == 3) {
      return (nodes[0] == nodes[1] && counts(nodes[0])) || (nodes[1] == nodes[2] && counts(nodes[1])) ||
             (nodes[2] == nodes[0] && counts(nodes[2]));
    }
    return rows_ <= limits::most_rows_for_pairs ? repeats_in_pairs(nodes) : repeats_when_sorted(nodes);
  }

 private:
  /// Repeated unused rows are the normal filling of mixed elements.
  bool counts(unsigned node) const noexcept { return strict_ || node != none; }

  bool repeats_in_pairs(const unsigned* nodes) const noexcept {
    for (std::uint64_t i = 1; i < rows_; ++i) {
      for (std::uint64_t k = 0; k < i; ++k) {
        if (nodes[i] == nodes[k] && counts(nodes[i])) return true;
      }
    }
    return false;
  }

  bool repeats_when_sorted(const unsigned* nodes) noexcept {
    std::copy_n(nodes, rows_, sorted_.begin());
    std::sort(sorted_.begin(), sorted_.end());
    const unsigned* repeated = std::adjacent_find(sorted_.begin(), sorted_.end());
    return repeated != sorted_.end() && counts(*repeated);
  }

  std::uint64_t rows_ = 0;
  bool strict_ = false;
  dense1D<unsigned> sorted_;
};

void mark_used(const dense2D<unsigned>& connectivity, index_flags& used) {
  for_each_run(connectivity, [&](const unsigned* begin, const unsigned* end) {
    for (; begin != end; ++begin) used.insert(*begin);
    return true;
  });
}

int remove_repeating(dense2D<unsigned>& connectivity, dense1D<unsigned>& new_elements, bool strict) {
  const std::uint64_t rows = connectivity.rows();
  const std::uint64_t count = connectivity.cols();
  repetition_test is_degenerate;
  new_elements.clear();
  // A compact matrix can be cut at the end without new memory, so nothing fails once columns have moved.
  if (count >= none || !connectivity.resize(rows, count)) return out_of_memory;
  if (!is_degenerate.prepare(rows, strict) || !new_elements.resize(count, none)) return out_of_memory;
  unsigned kept = 0;
  for (std::uint64_t j = 0; j < count; ++j) {
    const unsigned* element = connectivity.column(j);
    if (is_degenerate(element)) continue;
    if (kept < j) std::copy_n(element, rows, connectivity.column(kept));
    new_elements[j] = kept++;
  }
  return connectivity.resize(rows, kept) ? static_cast<int>(count - kept) : out_of_memory;
}

int remove_unused(dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last,
                  dense1D<unsigned>& new_IDs, unsigned first_node) {
  new_IDs.clear();
  if (first == last) return 0;
  if (last < first) return -3;
  const std::uint64_t count = coords.cols();
  for (const dense2D<unsigned>* matrix = first; matrix != last; ++matrix) {
    if (!check_IDs(*matrix, node_bound(coords))) return -2;
  }
  if (coords.empty() || first_node >= count) return 0;
  index_flags used;
  if (count >= none || !coords.resize(coords.rows(), count) || !used.reset(count)) return out_of_memory;
  if (!new_IDs.resize(count, none)) return out_of_memory;

  for (const dense2D<unsigned>* matrix = first; matrix != last; ++matrix) mark_used(*matrix, used);
  const unsigned kept = compact_columns(coords, used, new_IDs, first_node);
  if (!coords.resize(coords.rows(), kept)) return out_of_memory;
  if (kept < count) {
    for (dense2D<unsigned>* matrix = first; matrix != last; ++matrix) change_indices(*matrix, new_IDs);
  }
  return static_cast<int>(count - kept);
}

}  // namespace

int remove_degenerated(dense2D<unsigned>& connectivity, dense1D<unsigned>& new_elements, bool strict) {
  return remove_repeating(connectivity, output(new_elements, connectivity), strict);
}

int remove_degenerated(dense2D<unsigned>& connectivity, bool strict) {
  dense1D<unsigned> new_elements;
  return remove_degenerated(connectivity, new_elements, strict);
}

int simplify(dense2D<double>& coords, dense2D<unsigned>* first, dense2D<unsigned>* last, dense1D<unsigned>& new_IDs,
             unsigned first_node) {
  return remove_unused(coords, first, last, output(new_IDs, input_matrices{first, last}), first_node);
}

int simplify(dense2D<double>& coords, dense2D<unsigned>& connectivity, dense1D<unsigned>& new_IDs,
             unsigned first_node) {
  return simplify(coords, &connectivity, &connectivity + 1, new_IDs, first_node);
}

int simplify(dense2D<double>& coords, dense2D<unsigned>& connectivity, unsigned first_node) {
  dense1D<unsigned> new_IDs;
  return simplify(coords, connectivity, new_IDs, first_node);
}

int simplify(dense2D<double>& coords, dense2D<unsigned>& connectivity1, dense2D<unsigned>& connectivity2,
             unsigned first_node) {
  dense2D<unsigned> both[] = {connectivity1, connectivity2};        // views: renumbering reaches the caller's entries
  const bool is_one = are_same_view(connectivity1, connectivity2);  // which must not be renumbered twice
  dense1D<unsigned> new_IDs;
  return simplify(coords, both, both + (is_one ? 1 : 2), new_IDs, first_node);
}

}  // namespace qel::gridwork
