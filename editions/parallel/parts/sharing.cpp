// Which ranks have a node.
#include <algorithm>
#include <tuple>

#include "communication/exchange.h"
#include "communication/id_ranges.h"
#include "parts/checks.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::out_of_memory;

namespace {

/// One that has a node, and its place in what that one sent.
struct holder {
  std::uint64_t id;
  int rank;
  unsigned place;
};

struct other_holder {
  unsigned place;
  int rank;
};

/// Those of a range's nodes that several ranks have, by ID and rank. What the range's own rank sent to itself, which is
/// most of all where IDs grow with the ranks, is only looked up.
class shared_nodes {
 public:
  [[nodiscard]] bool build(const inbox<std::uint64_t>& in, int own_rank) {
    if (!holders_.reserve(2 * (in.items.size() - in.count_from(own_rank)))) return false;
    bool room = true;
    const auto add = [&](const std::uint64_t& id, int rank) {
      const auto place =
          static_cast<std::uint64_t>(&id - in.items.begin()) - in.offsets[static_cast<std::uint64_t>(rank)];
      if (rank != own_rank) room = room && holders_.push_back({id, rank, static_cast<unsigned>(place)});
    };
    in.for_each(add);
    sort();
    room = room && add_own(in, own_rank);
    sort();
    return room;
  }

  /// Calls visit(rank, other_holder) for each pair of ranks that have a node.
  template <class Visit>
  void for_each_pair(Visit visit) const {
    for (const holder* begin = holders_.begin(); begin != holders_.end();) {
      const holder* end = std::find_if(begin, holders_.end(), [begin](const holder& h) { return h.id != begin->id; });
      for (const holder* asking = begin; asking != end; ++asking) {
        for (const holder* other = begin; other != end; ++other) {
          if (other != asking) visit(asking->rank, other_holder{asking->place, other->rank});
        }
      }
      begin = end;
    }
  }

 private:
  void sort() {
    std::sort(holders_.begin(), holders_.end(),
              [](const holder& a, const holder& b) { return std::tie(a.id, a.rank) < std::tie(b.id, b.rank); });
  }

  [[nodiscard]] bool add_own(const inbox<std::uint64_t>& in, int own_rank) {
    const std::uint64_t* begin = in.items.begin() + in.offsets[static_cast<std::uint64_t>(own_rank)];
    const std::uint64_t* end = begin + in.count_from(own_rank);
    const std::uint64_t* next = begin;
    const std::uint64_t foreign = holders_.size();
    for (std::uint64_t i = 0; i < foreign; ++i) {
      if (i != 0 && holders_[i].id == holders_[i - 1].id) continue;
      next = std::lower_bound(next, end, holders_[i].id);
      if (next == end || *next != holders_[i].id) continue;
      if (!holders_.push_back({*next, own_rank, static_cast<unsigned>(next - begin)})) return false;
    }
    return true;
  }

  dense1D<holder> holders_;
};

/// Pairs come by the ranges of the nodes, and so in their order.
bool list_ranks(const outbox<std::uint64_t>& asked, const inbox<other_holder>& in, std::uint64_t nodes,
                node_sharing& sharing) {
  if (in.items.size() >= detail::none || !sharing.offsets.resize(nodes + 1, 0)) return false;
  if (!sharing.ranks.reserve(in.items.size())) return false;
  bool room = true;
  in.for_each([&](const other_holder& pair, int owner) {
    const std::uint64_t node = asked.offsets()[static_cast<std::uint64_t>(owner)] + pair.place;
    ++sharing.offsets[node + 1];
    room = room && sharing.ranks.push_back(pair.rank);
  });
  for (std::uint64_t i = 0; i < nodes; ++i) sharing.offsets[i + 1] += sharing.offsets[i];
  return room;
}

int find_sharing(team& ranks, const mesh_part& part, node_sharing& sharing) {
  const id_ranges ranges(ranks, part.node_IDs);
  outbox<std::uint64_t> asked;
  inbox<std::uint64_t> in;
  outbox<other_holder> out;
  inbox<other_holder> pairs;
  shared_nodes shared;
  const auto walk_nodes = [&](auto visit) {
    for (const std::uint64_t id : part.node_IDs) visit(ranges.owner(id), id);
  };
  const auto walk_pairs = [&](auto visit) { shared.for_each_pair(visit); };
  int code = asked.fill(ranks, walk_nodes) ? 0 : out_of_memory;
  code = exchange(ranks, code, asked, in);
  if (code < 0) return code;
  if (!shared.build(in, ranks.rank()) || !out.fill(ranks, walk_pairs)) code = out_of_memory;
  code = exchange(ranks, code, out, pairs);
  if (code == 0 && !list_ranks(asked, pairs, part.node_IDs.size(), sharing)) code = out_of_memory;
  return ranks.agree(code);
}

}  // namespace

int share_nodes(MPI_Comm comm, const mesh_part& part, node_sharing& sharing) {
  sharing = node_sharing();
  team ranks(comm);
  int code = part_agreement(ranks, part).conclude(0);
  if (code == 0) code = find_sharing(ranks, part, sharing);
  if (code != 0) sharing = node_sharing();
  return code;
}

}  // namespace qel::gridwork::mpi
