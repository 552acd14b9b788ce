// From IDs to a part's own indices.
#ifndef QEL_GRIDWORK_PARALLEL_PARTS_LOCALIZE_H
#define QEL_GRIDWORK_PARALLEL_PARTS_LOCALIZE_H

#include <algorithm>
#include <cstdint>

#include "core/result.h"
#include "qel/gridwork/ids.h"
#include "qel/gridwork/mpi.h"

namespace qel::gridwork::detail::parallel {

constexpr std::uint64_t no_ID = ~std::uint64_t{0};

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

}  // namespace qel::gridwork::detail::parallel

#endif
