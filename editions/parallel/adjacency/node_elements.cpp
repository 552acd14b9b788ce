// Elements of nodes, on all ranks.
#include <algorithm>

#include "communication/exchange.h"
#include "parts/checks.h"
#include "parts/localize.h"
#include "qel/gridwork/topology.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::none;
using detail::out_of_memory;

namespace {

struct incidence {
  std::uint64_t node, element;
};

/// The elements of a part's nodes in the part.
struct own_elements {
  dense1D<unsigned> offsets;
  dense1D<unsigned> elements;

  /// Nodes behind the last one that is used have none.
  [[nodiscard]] bool build(const mesh_part& part) {
    if (gridwork::get_connected_elements(part.connectivity, offsets, elements) < 0) return false;
    return offsets.resize(part.node_IDs.size() + 1, offsets[offsets.size() - 1]);
  }

  template <class Visit>
  void for_each(std::uint64_t node, Visit visit) const {
    for (unsigned i = offsets[node]; i < offsets[node + 1]; ++i) visit(elements[i]);
  }
};

/// Adds the elements of other ranks to those of this one.
bool join(const mesh_part& part, const own_elements& own, const inbox<incidence>& in, dense1D<unsigned>& offsets,
          dense1D<std::uint64_t>& elements) {
  const std::uint64_t nodes = part.node_IDs.size(), most = own.elements.size() + in.items.size();
  dense1D<unsigned> next;
  if (most >= none || !offsets.resize(nodes + 1, 0) || !elements.resize(most) || !next.resize(nodes)) return false;
  const auto for_each_received = [&](auto visit) {
    for (const incidence& item : in.items) {
      const unsigned node = place_in(part.node_IDs, item.node);
      if (node != none) visit(node, item.element);  // else the sharing is another part's
    }
  };
  for_each_received([&](unsigned node, std::uint64_t) { ++offsets[node + std::uint64_t{1}]; });
  for (std::uint64_t i = 0; i < nodes; ++i) {
    offsets[i + 1] += offsets[i] + own.offsets[i + 1] - own.offsets[i];
    next[i] = offsets[i];
    own.for_each(i, [&](unsigned e) { elements[next[i]++] = part.element_IDs[e]; });
  }
  for_each_received([&](unsigned node, std::uint64_t element) { elements[next[node]++] = element; });
  for (std::uint64_t i = 0; i < nodes; ++i) {
    std::sort(elements.begin() + offsets[i], elements.begin() + offsets[i + 1]);
  }
  return elements.resize(offsets[nodes]);
}

int find_elements(team& ranks, const mesh_part& part, const node_sharing& sharing, dense1D<unsigned>& offsets,
                  dense1D<std::uint64_t>& elements) {
  int code = part_agreement(ranks, part).conclude(goes_with(sharing, part.node_IDs.size(), ranks) ? 0 : -3);
  if (code < 0) return code;
  own_elements own;
  outbox<incidence> out;
  inbox<incidence> in;
  const auto walk = [&](auto visit) {
    for (std::uint64_t i = 0; i < part.node_IDs.size(); ++i) {
      for (unsigned k = sharing.offsets[i]; k < sharing.offsets[i + 1]; ++k) {
        own.for_each(i, [&](unsigned e) { visit(sharing.ranks[k], incidence{part.node_IDs[i], part.element_IDs[e]}); });
      }
    }
  };
  code = exchange(ranks, own.build(part) && out.fill(ranks, walk) ? 0 : out_of_memory, out, in);
  if (code == 0 && !join(part, own, in, offsets, elements)) code = out_of_memory;
  return ranks.agree(code);
}

}  // namespace

int get_connected_elements(MPI_Comm comm, const mesh_part& part, const node_sharing& sharing,
                           dense1D<unsigned>& offsets, dense1D<std::uint64_t>& elements) {
  offsets.clear();
  elements.clear();
  team ranks(comm);
  const int code = find_elements(ranks, part, sharing, offsets, elements);
  if (code < 0) offsets.clear(), elements.clear();
  return code;
}

}  // namespace qel::gridwork::mpi
