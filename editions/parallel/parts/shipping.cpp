#include "parts/shipping.h"

#include <algorithm>
#include <numeric>

#include "parts/localize.h"

namespace qel::gridwork::detail::parallel {
namespace {

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

/// Lists nodes in the order of their IDs, each once. Nearly all come in order as a rule: only the others are sorted.
[[nodiscard]] bool list_in_order(const dense1D<shipped_node>& nodes, dense1D<unsigned>& order) {
  dense1D<unsigned> sorted, late;
  const std::uint64_t count = nodes.size();
  if (count >= none || !sorted.reserve(count) || !order.resize(count)) return false;
  for (unsigned i = 0; i < count; ++i) {
    const bool in_order = sorted.empty() || nodes[i].id > nodes[sorted[sorted.size() - 1]].id;
    if (!(in_order ? sorted : late).push_back(i)) return false;
  }
  const auto before = [&](unsigned a, unsigned b) { return nodes[a].id < nodes[b].id; };
  const auto same = [&](unsigned a, unsigned b) { return nodes[a].id == nodes[b].id; };
  std::sort(late.begin(), late.end(), before);
  std::merge(sorted.begin(), sorted.end(), late.begin(), late.end(), order.begin(), before);
  return order.resize(static_cast<std::uint64_t>(std::unique(order.begin(), order.end(), same) - order.begin()));
}

[[nodiscard]] bool unpack_nodes(const dense1D<shipped_node>& nodes, const part_shape& shape, mesh_part& arrived) {
  dense1D<unsigned> order;
  if (!list_in_order(nodes, order)) return false;
  if (!arrived.coords.resize(shape.dim, order.size()) || !arrived.node_IDs.resize(order.size())) return false;
  for (std::uint64_t i = 0; i < order.size(); ++i) {
    arrived.node_IDs[i] = nodes[order[i]].id;
    std::copy_n(nodes[order[i]].p, shape.dim, arrived.coords.column(i));
  }
  return true;
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
