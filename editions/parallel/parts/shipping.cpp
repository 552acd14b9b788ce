#include "parts/shipping.h"

#include <algorithm>
#include <numeric>

#include "parts/localize.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork::detail::parallel {
namespace {

/// Puts nodes that were found in any order, also repeatedly, in the order of their IDs. Nearly all come in order as a rule:
/// only the others are sorted.
class id_order {
 public:
  /// `ids` of nodes; those of no_ID are left out. False when memory ran out.
  [[nodiscard]] bool build(const dense1D<std::uint64_t>& ids) {
    dense1D<unsigned> late;
    const auto count = ids.size();
    if (count >= none || !places_.resize(count, none) || !sorted_.reserve(count)) return false;
    for (unsigned i = 0; i < count; ++i) {
      if (ids[i] == no_ID) continue;
      const bool in_order = sorted_.empty() || ids[i] > ids[sorted_[sorted_.size() - 1]];
      if (!(in_order ? sorted_ : late).push_back(i)) return false;
    }
    return late.empty() ? (number(ids), true) : merge(ids, late);
  }

  /// Distinct nodes, by the first one found of each.
  const dense1D<unsigned>& nodes() const noexcept { return sorted_; }

  /// For each node its place among the distinct ones; `none` for those left out.
  const dense1D<unsigned>& places() const noexcept { return places_; }

 private:
  [[nodiscard]] bool merge(const dense1D<std::uint64_t>& ids, dense1D<unsigned>& late) {
    const auto before = [&ids](unsigned a, unsigned b) { return ids[a] < ids[b]; };
    dense1D<unsigned> all;
    if (!all.resize(sorted_.size() + late.size())) return false;
    std::sort(late.begin(), late.end(), before);
    std::merge(sorted_.begin(), sorted_.end(), late.begin(), late.end(), all.begin(), before);
    sorted_.shallow_copy(all);
    number(ids);
    return true;
  }

  void number(const dense1D<std::uint64_t>& ids) noexcept {
    unsigned count = 0;
    for (const unsigned node : sorted_) {
      const bool is_new = count == 0 || ids[node] != ids[sorted_[count - 1]];
      if (is_new) sorted_[count++] = node;
      places_[node] = count - 1;
    }
    (void)sorted_.resize(count);  // not larger than it was
  }

  dense1D<unsigned> sorted_;
  dense1D<unsigned> places_;
};

/// Makes the nodes of a part, and renumbers its connectivity, which holds nodes of a list: node i has ids[i], or no_ID if no
/// element uses it, and lies at position(i). False when memory ran out.
template <class Position>
[[nodiscard]] bool localize(const dense1D<std::uint64_t>& ids, Position position, std::uint64_t dim,
                            mpi::mesh_part& part) {
  id_order order;
  if (!order.build(ids)) return false;
  const dense1D<unsigned>& nodes = order.nodes();
  if (!part.coords.resize(dim, nodes.size()) || !part.node_IDs.resize(nodes.size())) return false;
  for (std::uint64_t i = 0; i < nodes.size(); ++i) {
    part.node_IDs[i] = ids[nodes[i]];
    std::copy_n(position(nodes[i]), dim, part.coords.column(i));
  }
  change_indices(part.connectivity, order.places());
  return true;
}

struct shipped_node {
  std::uint64_t id;
  double p[3];
};

/// What comes: a word for each element and each of its nodes, IDs; and the nodes.
struct cargo {
  inbox<std::uint64_t> words;
  inbox<shipped_node> nodes;
};

/// Calls visit(rank, element) for each element that is sent.
template <class Visit>
void visit_sent(const outbox<unsigned>& elements, Visit visit) {
  for (std::uint64_t r = 0; r + 1 < elements.offsets().size(); ++r) {
    for (std::uint64_t i = elements.offsets()[r]; i < elements.offsets()[r + 1]; ++i) {
      visit(static_cast<int>(r), elements.items()[i]);
    }
  }
}

int send_elements(team& ranks, int code, const mesh_part& part, const part_shape& shape,
                  const outbox<unsigned>& elements, inbox<std::uint64_t>& got) {
  outbox<std::uint64_t> words;
  const auto walk = [&](auto visit) {
    visit_sent(elements, [&](int rank, unsigned e) {
      visit(rank, part.element_IDs[e]);
      for (unsigned i = 0; i < shape.rows; ++i) {
        const unsigned node = part.connectivity(i, e);
        visit(rank, node == none ? no_ID : part.node_IDs[node]);
      }
    });
  };
  return exchange(ranks, code == 0 && !words.fill(ranks, walk) ? out_of_memory : code, words, got);
}

/// Each node once to each rank.
int send_nodes(team& ranks, const mesh_part& part, const part_shape& shape, const outbox<unsigned>& elements,
               inbox<shipped_node>& got) {
  outbox<shipped_node> nodes;
  dense1D<int> last;  // destination that a node was sent to last
  const auto walk = [&](auto visit) {
    std::fill(last.begin(), last.end(), -1);
    visit_sent(elements, [&](int rank, unsigned e) {
      for (unsigned i = 0; i < shape.rows; ++i) {
        const unsigned node = part.connectivity(i, e);
        if (node == none || last[node] == rank) continue;
        last[node] = rank;
        shipped_node item{part.node_IDs[node], {}};
        std::copy_n(part.coords.column(node), shape.dim, item.p);
        visit(rank, item);
      }
    });
  };
  const bool room = last.resize(part.node_IDs.size()) && nodes.fill(ranks, walk);
  return exchange(ranks, room ? 0 : out_of_memory, nodes, got);
}

/// Nodes in the order of their IDs, each once.
bool unpack_nodes(const dense1D<shipped_node>& nodes, const part_shape& shape, mesh_part& arrived) {
  dense1D<std::uint64_t> ids;
  if (!ids.resize(nodes.size())) return false;
  for (std::uint64_t i = 0; i < nodes.size(); ++i) ids[i] = nodes[i].id;
  return localize(
      ids, [&](unsigned i) { return nodes[i].p; }, shape.dim, arrived);
}

/// Elements in the order of their IDs.
bool unpack_elements(const inbox<std::uint64_t>& words, const part_shape& shape, mesh_part& arrived,
                     dense1D<int>& sources) {
  const std::uint64_t length = shape.rows + std::uint64_t{1}, count = words.items.size() / length;
  dense1D<unsigned> order;
  if (count >= none || !order.resize(count) || !sources.resize(count) || !arrived.element_IDs.resize(count) ||
      !arrived.connectivity.resize(shape.rows, count))
    return false;
  const auto id = [&](unsigned k) { return words.items[k * length]; };
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(), [&](unsigned a, unsigned b) { return id(a) < id(b); });
  for (std::uint64_t j = 0; j < count; ++j) {
    const std::uint64_t first = order[j] * length;
    const auto* source = std::upper_bound(words.offsets.begin(), words.offsets.end(), first);
    sources[j] = static_cast<int>(source - words.offsets.begin()) - 1;
    arrived.element_IDs[j] = words.items[first];
    for (unsigned i = 0; i < shape.rows; ++i) {
      const std::uint64_t node = words.items[first + 1 + i];
      arrived.connectivity(i, j) = place_in(arrived.node_IDs, node);  // no_ID is in no list
    }
  }
  return true;
}

}  // namespace

int ship(team& ranks, int code, const mesh_part& part, const part_shape& shape, const outbox<unsigned>& elements,
         mesh_part& arrived, dense1D<int>& sources) {
  cargo got;
  code = send_elements(ranks, code, part, shape, elements, got.words);
  if (code == 0) code = send_nodes(ranks, part, shape, elements, got.nodes);
  if (code < 0) return code;
  const bool room =
      unpack_nodes(got.nodes.items, shape, arrived) && unpack_elements(got.words, shape, arrived, sources);
  return ranks.agree(room ? 0 : out_of_memory);
}

}  // namespace qel::gridwork::detail::parallel
