// Elements across boundaries, also on other ranks.
//
// The serial function finds the neighbours within a part. A boundary is looked at again where another rank has all its
// nodes, whether it has a neighbour here or not: only so are boundaries of three and more elements seen whole. All ranks that
// have its nodes send their slots to one of them, where the rules of the serial function are applied to all slots in order.
#include <algorithm>
#include <numeric>

#include "adjacency/global_boundary.h"
#include "adjacency/meeting_places.h"
#include "communication/exchange.h"
#include "core/elements.h"
#include "core/linear_shapes.h"
#include "parts/checks.h"
#include "qel/gridwork/topology.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::none;
using detail::out_of_memory;

namespace {

template <std::size_t Nodes>
struct met_slot {
  global_key<Nodes> key;
  std::uint64_t slot;  // of the whole mesh
};

/// Neighbours of slots that met, by the places where they stand in a list.
template <std::size_t Nodes>
class slot_matcher {
 public:
  slot_matcher(const dense1D<met_slot<Nodes>>& slots, unsigned boundaries, bool pair_non_manifold) noexcept
      : slots_(slots), boundaries_(boundaries), pair_non_manifold_(pair_non_manifold) {}

  [[nodiscard]] bool match() {
    if (!order_.resize(slots_.size()) || !neighbors_.resize(slots_.size(), no_ID)) return false;
    std::iota(order_.begin(), order_.end(), std::uint64_t{0});
    std::sort(order_.begin(), order_.end(), [this](std::uint64_t a, std::uint64_t b) {
      return slots_[a].key != slots_[b].key ? slots_[a].key < slots_[b].key : slots_[a].slot < slots_[b].slot;
    });
    const std::uint64_t* last = order_.end();
    for (const std::uint64_t* begin = order_.begin(); begin != last;) {
      const std::uint64_t* end =
          std::find_if(begin, last, [&](std::uint64_t i) { return slots_[i].key != slots_[*begin].key; });
      link(begin, end);
      begin = end;
    }
    return true;
  }

  const dense1D<std::uint64_t>& neighbors() const noexcept { return neighbors_; }

 private:
  std::uint64_t element(std::uint64_t i) const noexcept { return slots_[i].slot / boundaries_; }

  void link(const std::uint64_t* begin, const std::uint64_t* end) noexcept {
    if (end - begin < 2 || (end - begin > 2 && !pair_non_manifold_)) return;
    neighbors_[*begin] = element(end[-1]);
    for (const std::uint64_t* it = begin + 1; it != end; ++it) neighbors_[*it] = element(*begin);
  }

  const dense1D<met_slot<Nodes>>& slots_;
  unsigned boundaries_;
  bool pair_non_manifold_;
  dense1D<std::uint64_t> order_;
  dense1D<std::uint64_t> neighbors_;
};

/// Calls visit(rank, met_slot, slot) for each slot of the part whose boundary other ranks may have, too.
template <class Columns, class Visit>
void visit_common_slots(const mesh_part& part, meeting_places& places, Visit visit) {
  constexpr unsigned boundaries = Columns::largest.boundaries;
  constexpr unsigned key_nodes = Columns::largest.boundary_nodes;
  for (std::uint64_t e = 0; e < part.connectivity.cols(); ++e) {
    const unsigned* nodes = part.connectivity.column(e);
    const detail::shape& s = Columns::of(nodes);
    for (unsigned k = 0; k < s.boundaries; ++k) {
      const detail::boundary_nodes boundary = detail::boundary_of<Columns>(s, nodes, k);
      if (!places.look_up(boundary)) continue;
      const auto key = global_key_of<key_nodes>(boundary, part.node_IDs);
      const met_slot<key_nodes> item{key, part.element_IDs[e] * boundaries + k};
      visit(places.choose(hash_of(key)), item, e * boundaries + k);
    }
  }
}

/// Replaces the neighbours across boundaries that other ranks may have.
template <class Columns>
int match_common(team& ranks, const mesh_part& part, const node_sharing& sharing, bool pair_non_manifold,
                 dense2D<std::uint64_t>& neighbors) {
  constexpr unsigned boundaries = Columns::largest.boundaries;
  using slot = met_slot<Columns::largest.boundary_nodes>;
  meeting_places places(sharing, ranks.rank());
  const auto walk = [&](auto visit) { visit_common_slots<Columns>(part, places, visit); };
  outbox<slot> out;
  inbox<slot> in;
  dense1D<std::uint64_t> answers;
  int code = places.prepare() && out.fill(ranks, walk) ? 0 : out_of_memory;
  code = exchange(ranks, code, out, in);
  if (code < 0) return code;
  slot_matcher matcher(in.items, boundaries, pair_non_manifold);
  if (!matcher.match()) code = out_of_memory;
  code = reply(ranks, code, in, matcher.neighbors(), out, answers);
  if (code < 0) return code;
  out.rewind();
  walk([&](int rank, const slot&, std::uint64_t place) {
    neighbors(place % boundaries, place / boundaries) = answers[out.next_place(rank)];
  });
  return ranks.agree(0);
}

/// The neighbours within the part.
int find_within(const mesh_part& part, element_type type, bool pair_non_manifold, dense2D<std::uint64_t>& neighbors) {
  dense2D<unsigned> within;
  const int code = gridwork::get_neighbors(part.connectivity, type, pair_non_manifold, within);
  if (code < 0) return code;
  if (!neighbors.resize(within.rows(), within.cols())) return out_of_memory;
  for (std::uint64_t i = 0; i < within.size(); ++i) {
    const unsigned element = within.data()[i];
    neighbors.data()[i] = element == none ? no_ID : part.element_IDs[element];
  }
  return 0;
}

int find_neighbors(team& ranks, const mesh_part& part, element_type type, const node_sharing& sharing,
                   bool pair_non_manifold, dense2D<std::uint64_t>& neighbors) {
  part_agreement agreed(ranks, part);
  agreed.same(static_cast<std::uint64_t>(type), -3);
  agreed.same(pair_non_manifold ? 1U : 0U, -5);
  int code = check_type(part, type);
  if (code == 0 && !goes_with(sharing, part.node_IDs.size(), ranks)) code = -4;
  code = agreed.conclude(code);
  if (code < 0 || agreed.shape().rows == 0) return code;
  code = ranks.agree(find_within(part, type, pair_non_manifold, neighbors));
  if (code < 0) return code;
  return detail::visit_shape(detail::resolve_type(type, agreed.shape().rows), -2, [&](auto columns) {
    return match_common<decltype(columns)>(ranks, part, sharing, pair_non_manifold, neighbors);
  });
}

}  // namespace

int get_neighbors(MPI_Comm comm, const mesh_part& part, element_type type, const node_sharing& sharing,
                  bool pair_non_manifold, dense2D<std::uint64_t>& neighbors) {
  neighbors.clear();
  team ranks(comm);
  const int code = find_neighbors(ranks, part, type, sharing, pair_non_manifold, neighbors);
  if (code < 0) neighbors.clear();
  return code;
}

}  // namespace qel::gridwork::mpi
