// Unique edges: collected by their lower node, then sorted in short lists.
#include <algorithm>
#include <numeric>

#include "core/append_columns.h"
#include "core/check.h"
#include "core/distribute.h"
#include "core/elements.h"
#include "core/limits.h"
#include "core/linear_shapes.h"
#include "core/outputs.h"
#include "qel/gridwork/topology.h"

namespace qel::gridwork {

using namespace detail;

namespace {

/// The linear type whose edges a type has; ELT_UNKNOWN for types without edges.
constexpr element_type types_of_edges[] = {
    ELT_UNKNOWN,    // ELT_UNKNOWN
    ELT_UNKNOWN,    // ELT_NODE
    ELT_UNKNOWN,    // ELT_EDGE_MIX
    ELT_EDGE2,      // ELT_EDGE2
    ELT_EDGE2,      // ELT_EDGE3
    ELT_FACE_MIX,   // ELT_FACE_MIX
    ELT_TRIA3,      // ELT_TRIA3
    ELT_QUAD4,      // ELT_QUAD4
    ELT_TRIA3,      // ELT_TRIA6
    ELT_QUAD4,      // ELT_QUAD8
    ELT_QUAD4,      // ELT_QUAD9
    ELT_SOLID_MIX,  // ELT_SOLID_MIX
    ELT_TETRA4,     // ELT_TETRA4
    ELT_TETRA4,     // ELT_TETRA10
    ELT_PYRAMID5,   // ELT_PYRAMID5
    ELT_UNKNOWN,    // ELT_PYRAMID13
    ELT_PYRAMID5,   // ELT_PYRAMID14
    ELT_WEDGE6,     // ELT_WEDGE6
    ELT_UNKNOWN,    // ELT_WEDGE15
    ELT_WEDGE6,     // ELT_WEDGE18
    ELT_HEXA8,      // ELT_HEXA8
    ELT_UNKNOWN,    // ELT_HEXA20
    ELT_HEXA8,      // ELT_HEXA27
};
static_assert(sizeof(types_of_edges) / sizeof(types_of_edges[0]) == ELT_HEXA27 + 1);

/// An array of matrices, each with its type.
struct typed_range {
  const dense2D<unsigned>* first;
  const dense2D<unsigned>* last;
  const int* types;

  element_type type(const dense2D<unsigned>* matrix) const noexcept {
    return resolve_type(static_cast<element_type>(types[matrix - first]), matrix->rows());
  }
};

/// Calls visit(shape, nodes) for each element whose type has edges.
template <class Visit>
void visit_elements(const typed_range& range, Visit visit) {
  for (const dense2D<unsigned>* matrix = range.first; matrix != range.last; ++matrix) {
    if (matrix->empty()) continue;
    visit_shape(types_of_edges[range.type(matrix)], 0, [&](auto columns) {
      for (std::uint64_t e = 0; e < matrix->cols(); ++e) {
        const unsigned* nodes = matrix->column(e);
        visit(columns.of(nodes), nodes);
      }
      return 0;
    });
  }
}

/// Calls visit(lower, higher) for each edge of each element.
template <class Visit>
void visit_edges(const typed_range& range, Visit visit) {
  visit_elements(range, [&](const shape& s, const unsigned* nodes) {
    for (unsigned k = 0; k < s.edges; ++k) {
      const unsigned a = nodes[s.edge[k][0]];
      const unsigned b = nodes[s.edge[k][1]];
      visit(std::min(a, b), std::max(a, b));
    }
  });
}

struct edge_statistics {
  std::uint64_t count = 0;
  unsigned largest = 0;

  /// Every node of a linear shape has an edge.
  explicit edge_statistics(const typed_range& range) {
    visit_elements(range, [this](const shape& s, const unsigned* nodes) {
      count += s.edges;
      largest = std::accumulate(nodes, nodes + s.nodes, largest, [](unsigned a, unsigned b) { return std::max(a, b); });
    });
  }
};

/// The list of the edges' higher nodes, by lower node: each list sorted and without duplicates.
class edges_by_lower_node {
 public:
  [[nodiscard]] bool build(const typed_range& range, const edge_statistics& statistics) {
    const std::uint64_t nodes = std::uint64_t{statistics.largest} + 1;
    const auto walk = [&](auto visit) { visit_edges(range, visit); };
    return distribute(nodes, walk, higher_, offsets_) && marks_.resize(nodes, none) && make_unique();
  }

  std::uint64_t count() const noexcept { return count_; }

  /// Writes the edges in order.
  void write(unsigned* out) const noexcept {
    for (unsigned lower = 0; lower < sizes_.size(); ++lower) {
      const unsigned* higher = higher_.data() + offsets_[lower];
      for (unsigned k = 0; k < sizes_[lower]; ++k) {
        QEL_GRIDWORK_CHECK(higher[k] >= lower && (k == 0 || higher[k] > higher[k - 1]));
        *out++ = lower;
        *out++ = higher[k];
      }
    }
  }

 private:
  /// Most edges come several times: they are dropped before the lists are sorted.
  bool make_unique() {
    const std::uint64_t nodes = offsets_.size() - 1;
    if (!sizes_.resize(nodes)) return false;
    for (unsigned lower = 0; lower < nodes; ++lower) {
      unsigned* begin = higher_.data() + offsets_[lower];
      const unsigned* end = higher_.data() + offsets_[lower + std::uint64_t{1}];
      unsigned* kept = begin;
      for (const unsigned* p = begin; p != end; ++p) {
        if (marks_[*p] == lower) continue;
        marks_[*p] = lower;
        *kept++ = *p;
      }
      std::sort(begin, kept);
      sizes_[lower] = static_cast<unsigned>(kept - begin);
      count_ += sizes_[lower];
    }
    return true;
  }

  dense1D<unsigned> offsets_;
  dense1D<unsigned> higher_;
  dense1D<unsigned> marks_;
  dense1D<unsigned> sizes_;
  std::uint64_t count_ = 0;
};

int append_by_lower_node(const typed_range& range, const edge_statistics& statistics, dense2D<unsigned>& edges) {
  edges_by_lower_node lists;
  if (!lists.build(range, statistics) || !append_columns(edges, 2, lists.count())) return out_of_memory;
  lists.write(edges.column(edges.cols() - lists.count()));
  return 0;
}

/// Node indices too large for tables: sorts whole pairs.
int append_by_sorting(const typed_range& range, const edge_statistics& statistics, dense2D<unsigned>& edges) {
  dense1D<std::uint64_t> pairs;
  if (!pairs.resize(statistics.count)) return out_of_memory;
  std::uint64_t* next = pairs.data();
  visit_edges(range, [&](unsigned lower, unsigned higher) { *next++ = std::uint64_t{lower} << 32 | higher; });
  std::sort(pairs.begin(), pairs.end());
  const auto count = static_cast<std::uint64_t>(std::unique(pairs.begin(), pairs.end()) - pairs.begin());
  if (!append_columns(edges, 2, count)) return out_of_memory;
  unsigned* out = edges.column(edges.cols() - count);
  for (std::uint64_t i = 0; i < count; ++i) {
    *out++ = static_cast<unsigned>(pairs[i] >> 32);
    *out++ = static_cast<unsigned>(pairs[i]);
  }
  return 0;
}

int append_edges(const typed_range& range, appended<dense2D<unsigned>>&& edges) {
  const edge_statistics statistics(range);
  if (statistics.count == 0) return 0;
  if (!edges.keep_entries()) return out_of_memory;
  const bool tables_are_small = statistics.largest != none &&
                                statistics.largest / limits::nodes_per_edge <= statistics.count &&
                                statistics.count < none;
  return tables_are_small ? append_by_lower_node(range, statistics, edges)
                          : append_by_sorting(range, statistics, edges);
}

bool holds_no_pairs(const dense2D<unsigned>& edges) noexcept { return !edges.empty() && edges.rows() != 2; }

bool fits(const dense2D<unsigned>& connectivity, int code) {
  return is_element_type(code) && check_IDs(connectivity, static_cast<element_type>(code), none);
}

}  // namespace

int copy_edges(const dense2D<unsigned>& connectivity, element_type type, dense2D<unsigned>& edges) {
  if (connectivity.empty()) return 0;
  const int code = type;
  if (!fits(connectivity, code)) return -1;
  if (holds_no_pairs(edges)) return -3;
  return append_edges({&connectivity, &connectivity + 1, &code}, appended(edges, connectivity));
}

int copy_edges(const dense2D<unsigned>* first, const dense2D<unsigned>* last, const dense1D<int>& types,
               dense2D<unsigned>& edges) {
  if (last < first) return -2;
  if (static_cast<std::uint64_t>(last - first) != types.size()) return -3;
  if (holds_no_pairs(edges)) return -4;
  for (const dense2D<unsigned>* matrix = first; matrix != last; ++matrix) {
    if (!fits(*matrix, types[static_cast<std::uint64_t>(matrix - first)])) return -1;
  }
  return append_edges({first, last, types.data()}, appended(edges, input_matrices{first, last}));
}

}  // namespace qel::gridwork
