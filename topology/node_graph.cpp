// Elements of nodes and nodes of nodes, in compressed rows.
#include <algorithm>

#include "core/columns.h"
#include "core/distribute.h"
#include "core/result.h"
#include "qel/gridwork/topology.h"

namespace qel::gridwork {
namespace {

/// Largest node index plus one; 0 when there is no node.
std::uint64_t node_bound(const dense2D<unsigned>& connectivity) {
  unsigned bound = 0;  // `none` wraps to 0
  for_each_run(connectivity, [&](const unsigned* begin, const unsigned* end) {
    for (const unsigned* p = begin; p != end; ++p) bound = std::max(bound, *p + 1);
    return true;
  });
  return bound;
}

template <class Visit>
void visit_corners(const dense2D<unsigned>& connectivity, Visit visit) {
  const auto count = static_cast<unsigned>(connectivity.cols());
  for (unsigned e = 0; e < count; ++e) {
    for (const unsigned* p = connectivity.begin_column(e); p != connectivity.end_column(e); ++p) {
      if (*p != none) visit(*p, e);
    }
  }
}

bool list_elements(const dense2D<unsigned>& connectivity, dense1D<unsigned>& offsets, dense1D<unsigned>& elements) {
  offsets.clear();
  elements.clear();
  const std::uint64_t nodes = node_bound(connectivity);
  if (nodes == 0) return offsets.resize(1, 0);
  if (connectivity.size() >= none || connectivity.cols() >= none) return false;
  return distribute(
      nodes, offsets, [&](auto visit) { visit_corners(connectivity, visit); },
      [&](unsigned total) { return elements.resize(total); },
      [&](unsigned position, unsigned e) { elements.data()[position] = e; });
}

/// Writes the nodes round one node, each once, and returns the end. `marks` holds the node that saw a node last.
unsigned* write_row(const dense2D<unsigned>& connectivity, unsigned node, const unsigned* element,
                    const unsigned* last_element, unsigned* marks, unsigned* out) noexcept {
  marks[node] = node;
  for (; element != last_element; ++element) {
    for (const unsigned* p = connectivity.begin_column(*element); p != connectivity.end_column(*element); ++p) {
      if (*p == none || marks[*p] == node) continue;
      marks[*p] = node;
      *out++ = *p;
    }
  }
  return out;
}

/// Gives back what doubling took too much. Without memory for a copy, the list stays as it is.
void trim(dense1D<unsigned>& list) {
  dense1D<unsigned> fitting;
  if (list.capacity() > list.size() + list.size() / 4 && fitting.copy(list)) list.shallow_copy(fitting);
}

bool list_nodes(const dense2D<unsigned>& connectivity, dense1D<unsigned>& offsets, dense1D<unsigned>& adjacency) {
  dense1D<unsigned> first;
  dense1D<unsigned> elements;
  dense1D<unsigned> marks;
  if (!list_elements(connectivity, first, elements)) return false;
  const std::uint64_t nodes = first.size() - 1;
  offsets.clear();
  adjacency.clear();
  if (!offsets.resize(nodes + 1, 0) || !marks.resize(nodes, none) || !adjacency.reserve(elements.size())) return false;
  for (unsigned node = 0; node < nodes; ++node) {
    const std::uint64_t size = adjacency.size();
    const std::uint64_t most = (first[node + std::uint64_t{1}] - first[node]) * connectivity.rows();
    if (!adjacency.reserve(size + most, 2)) return false;
    unsigned* row = adjacency.data() + size;
    const unsigned* element = elements.data() + first[node];
    const unsigned* last_element = elements.data() + first[node + std::uint64_t{1}];
    const unsigned* end = write_row(connectivity, node, element, last_element, marks.data(), row);
    const std::uint64_t new_size = size + static_cast<std::uint64_t>(end - row);
    if (new_size >= none || !adjacency.resize(new_size)) return false;
    offsets[node + std::uint64_t{1}] = static_cast<unsigned>(new_size);
  }
  trim(adjacency);
  return true;
}

int fail(dense1D<unsigned>& offsets, dense1D<unsigned>& list) noexcept {
  offsets.clear_hard();
  list.clear_hard();
  return out_of_memory;
}

}  // namespace

int get_ancestors(const dense2D<unsigned>& connectivity, dense1D<unsigned>& ancestors) {
  if (connectivity.empty()) return 0;
  if (connectivity.cols() >= none) return out_of_memory;
  // Without any node there is still one entry.
  if (ancestors.empty() && !ancestors.resize(std::max<std::uint64_t>(node_bound(connectivity), 1), none)) {
    return out_of_memory;
  }
  visit_corners(connectivity, [&](unsigned node, unsigned e) {
    if (node < ancestors.size()) ancestors[node] = e;
  });
  return 0;
}

int get_connected_elements(const dense2D<unsigned>& connectivity, dense1D<unsigned>& offsets,
                           dense1D<unsigned>& elements) {
  return list_elements(connectivity, offsets, elements) ? 0 : fail(offsets, elements);
}

int get_node_graph(const dense2D<unsigned>& connectivity, dense1D<unsigned>& offsets, dense1D<unsigned>& adjacency) {
  return list_nodes(connectivity, offsets, adjacency) ? 0 : fail(offsets, adjacency);
}

}  // namespace qel::gridwork
