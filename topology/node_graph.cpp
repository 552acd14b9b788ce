// Elements of nodes and nodes of nodes, in compressed rows.
#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "core/check.h"
#include "core/columns.h"
#include "core/distribute.h"
#include "core/growth.h"
#include "core/limits.h"
#include "core/outputs.h"
#include "core/position_table.h"
#include "core/result.h"
#include "qel/gridwork/topology.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// Calls action(rows), with a constant for the most frequent numbers of rows: short loops over a column are unrolled.
template <class Action>
auto with_rows(std::uint64_t rows, Action action) {
  switch (rows) {
    case 3:
      return action(std::integral_constant<std::uint64_t, 3>());
    case 4:
      return action(std::integral_constant<std::uint64_t, 4>());
    case 8:
      return action(std::integral_constant<std::uint64_t, 8>());
    default:
      return action(rows);
  }
}

template <class Visit>
void visit_corners(const dense2D<unsigned>& connectivity, Visit visit) {
  const unsigned* first = connectivity.data();
  const std::uint64_t ld = connectivity.ld();
  const auto count = static_cast<unsigned>(connectivity.cols());
  with_rows(connectivity.rows(), [=](auto rows) {
    for (unsigned e = 0; e < count; ++e) {
      const unsigned* nodes = first + e * ld;
      for (std::uint64_t i = 0; i < rows; ++i) {
        if (nodes[i] != none) visit(nodes[i], e);
      }
    }
  });
}

bool list_elements(const dense2D<unsigned>& connectivity, dense1D<unsigned>& offsets, dense1D<unsigned>& elements) {
  offsets.clear();
  elements.clear();
  const std::uint64_t nodes = index_bound(connectivity);
  if (nodes == 0) return offsets.resize(1, 0);
  if (connectivity.size() >= none || connectivity.cols() >= none) return false;
  return distribute(
      nodes, [&](auto visit) { visit_corners(connectivity, visit); }, elements, offsets);
}

/// Writes the rows of the node graph.
template <class Rows>
class row_writer {
 public:
  row_writer(const dense2D<unsigned>& connectivity, Rows rows, const dense1D<unsigned>& elements,
             dense1D<unsigned>& marks) noexcept
      : nodes_(connectivity.data()),
        rows_(rows),
        ld_(connectivity.ld()),
        end_of_elements_(elements.end()),
        marks_(marks.data()) {}

  /// Writes the nodes of some of the elements, the ones round `node`, each once and without `node`; returns the end.
  unsigned* write(unsigned node, const unsigned* begin, const unsigned* end, unsigned* out) const noexcept {
    constexpr std::ptrdiff_t ahead = limits::elements_ahead;
    marks_[node] = node;
    for (const unsigned* element = begin; element != end; ++element) {
      prefetch(column(end_of_elements_ - element > ahead ? element[ahead] : *element));
      const unsigned* nodes = column(*element);
      for (std::uint64_t i = 0; i < rows_; ++i) {
        if (nodes[i] == none || marks_[nodes[i]] == node) continue;
        marks_[nodes[i]] = node;
        *out++ = nodes[i];
      }
    }
    return out;
  }

 private:
  const unsigned* column(unsigned element) const noexcept { return nodes_ + element * ld_; }

  const unsigned* nodes_;
  Rows rows_;
  std::uint64_t ld_;
  const unsigned* end_of_elements_;
  unsigned* marks_;  // the node that saw a node last
};

template <class Rows>
bool list_nodes(const dense2D<unsigned>& connectivity, Rows rows, dense1D<unsigned>& offsets,
                dense1D<unsigned>& adjacency) {
  dense1D<unsigned> first;
  dense1D<unsigned> elements;
  dense1D<unsigned> marks;
  if (!list_elements(connectivity, first, elements)) return false;
  const std::uint64_t nodes = first.size() - 1;
  offsets.clear();
  adjacency.clear();
  if (!offsets.resize(nodes + 1, 0) || !marks.resize(nodes, none) || !adjacency.reserve(elements.size())) return false;
  const row_writer writer(connectivity, rows, elements, marks);
  std::uint64_t size = 0;
  const unsigned* element = elements.data();
  for (unsigned node = 0; node < nodes; ++node) {
    const unsigned* last_element = elements.data() + first[node + std::uint64_t{1}];
    const std::uint64_t most = size + static_cast<std::uint64_t>(last_element - element) * rows;
    if (most > adjacency.capacity() && (!adjacency.resize(size) || !adjacency.reserve(most, 2))) return false;
    size = static_cast<std::uint64_t>(writer.write(node, element, last_element, adjacency.data() + size) -
                                      adjacency.data());
    QEL_GRIDWORK_CHECK(size <= most && most <= adjacency.capacity());
    if (size >= none) return false;
    offsets[node + std::uint64_t{1}] = static_cast<unsigned>(size);
    element = last_element;
  }
  if (!adjacency.resize(size)) return false;
  trim(adjacency, size);  // where less than half is used
  return true;
}

/// Has make(offsets, list) fill both outputs, which are empty when it fails.
template <class Make>
int fill(dense1D<unsigned>& offsets, dense1D<unsigned>& list, Make make) {
  if (make(offsets, list)) return 0;
  offsets.clear_hard();
  list.clear_hard();
  return out_of_memory;
}

}  // namespace

int get_ancestors(const dense2D<unsigned>& connectivity, dense1D<unsigned>& ancestors) {
  if (connectivity.empty()) return 0;
  if (connectivity.cols() >= none) return out_of_memory;
  // Without any node there is still one entry.
  appended list(ancestors, connectivity);
  if (!list.keep_entries()) return out_of_memory;
  dense1D<unsigned>& elements = list;
  if (elements.empty() && !elements.resize(std::max<std::uint64_t>(index_bound(connectivity), 1), none)) {
    return out_of_memory;
  }
  visit_corners(connectivity, [&](unsigned node, unsigned e) {
    if (node < elements.size()) elements[node] = e;
  });
  return 0;
}

int get_connected_elements(const dense2D<unsigned>& connectivity, dense1D<unsigned>& offsets,
                           dense1D<unsigned>& elements) {
  return fill(output(offsets, connectivity), output(elements, connectivity, offsets),
              [&](auto& first, auto& list) { return list_elements(connectivity, first, list); });
}

int get_node_graph(const dense2D<unsigned>& connectivity, dense1D<unsigned>& offsets, dense1D<unsigned>& adjacency) {
  return fill(output(offsets, connectivity), output(adjacency, connectivity, offsets), [&](auto& first, auto& list) {
    return with_rows(connectivity.rows(), [&](auto rows) { return list_nodes(connectivity, rows, first, list); });
  });
}

}  // namespace qel::gridwork
