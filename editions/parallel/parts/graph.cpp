// A partition of the graph of elements, by PT-Scotch where that is there.
#include <algorithm>

#include "communication/exchange.h"
#include "communication/id_ranges.h"
#include "parts/checks.h"
#include "parts/localize.h"

#ifdef QEL_GRIDWORK_HAVE_PTSCOTCH
#include <cstdio>
// PT-Scotch's header needs what stands above.
#include <ptscotch.h>
#endif

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::out_of_memory;

namespace {

#ifdef QEL_GRIDWORK_HAVE_PTSCOTCH

/// A vertex of the graph is an element. Vertices are numbered rank after rank, as PT-Scotch wants them.
struct numbered_element {
  std::uint64_t id, number;
};

struct arc {
  std::uint64_t from, to;

  friend bool operator==(const arc& a, const arc& b) noexcept { return a.from == b.from && a.to == b.to; }
  friend bool operator<(const arc& a, const arc& b) noexcept {
    return a.from != b.from ? a.from < b.from : a.to < b.to;
  }
};

/// The arcs of the graph that leave this rank's elements, in order. A link that is not returned is an arc both ways.
class element_graph {
 public:
  element_graph(team& ranks, const mesh_part& part) noexcept : ranks_(ranks), part_(part) {}

  /// Collective. The code of all ranks.
  int build(const dense2D<std::uint64_t>& neighbors) {
    const auto size = static_cast<std::uint64_t>(ranks_.size());
    int code = ranks_.agree(firsts_.resize(size + 1) && across_.copy(neighbors) ? 0 : out_of_memory);
    if (code < 0) return code;
    const team::share share = ranks_.number(part_.element_IDs.size());
    ranks_.gather(share.before, firsts_.data());
    firsts_[size] = share.total;
    code = number_neighbors();
    return code == 0 ? exchange_arcs() : code;
  }

  const dense1D<arc>& arcs() const noexcept { return arcs_.items; }
  std::uint64_t first() const noexcept { return firsts_[static_cast<std::uint64_t>(ranks_.rank())]; }

 private:
  int rank_of(std::uint64_t number) const noexcept {
    return static_cast<int>(std::upper_bound(firsts_.begin(), firsts_.end(), number) - firsts_.begin()) - 1;
  }

  /// Replaces IDs by numbers, which the rank in whose range an ID lies is told first.
  int number_neighbors() {
    const id_ranges ranges(ranks_, part_.element_IDs);
    outbox<numbered_element> out;
    inbox<numbered_element> in;
    const auto walk_own = [&](auto visit) {
      std::uint64_t number = first();
      for (const std::uint64_t id : part_.element_IDs) visit(ranges.owner(id), numbered_element{id, number++});
    };
    const int code = exchange(ranks_, out.fill(ranks_, walk_own) ? 0 : out_of_memory, out, in);
    if (code < 0) return code;
    const auto by_id = [](const numbered_element& a, const numbered_element& b) { return a.id < b.id; };
    std::sort(in.items.begin(), in.items.end(), by_id);
    const auto walk = [&](auto visit) {
      for (std::uint64_t i = 0; i < across_.size(); ++i) {
        if (across_.data()[i] != no_ID) visit(ranges.owner(across_.data()[i]), across_.data()[i], i);
      }
    };
    const auto number = [&](std::uint64_t id, int) {
      const auto* found = std::lower_bound(in.items.begin(), in.items.end(), numbered_element{id, 0}, by_id);
      return found != in.items.end() && found->id == id ? found->number : no_ID;
    };
    const auto take = [&](std::uint64_t i, std::uint64_t answer) { across_.data()[i] = answer; };
    return ask<std::uint64_t, std::uint64_t>(ranks_, 0, walk, number, take);
  }

  int exchange_arcs() {
    outbox<arc> out;
    const auto walk = [&](auto visit) {
      for (std::uint64_t i = 0; i < across_.size(); ++i) {
        const std::uint64_t from = first() + i / across_.rows(), to = across_.data()[i];
        if (to == no_ID || to == from) continue;
        visit(ranks_.rank(), arc{from, to});
        visit(rank_of(to), arc{to, from});
      }
    };
    const int code = exchange(ranks_, out.fill(ranks_, walk) ? 0 : out_of_memory, out, arcs_);
    if (code < 0) return code;
    std::sort(arcs_.items.begin(), arcs_.items.end());
    const arc* end = std::unique(arcs_.items.begin(), arcs_.items.end());
    const bool fits = arcs_.items.resize(static_cast<std::uint64_t>(end - arcs_.items.begin()));
    return ranks_.agree(fits ? 0 : out_of_memory);
  }

  team& ranks_;
  const mesh_part& part_;
  rank_offsets firsts_;            // the number of each rank's first element, and of all
  dense2D<std::uint64_t> across_;  // neighbours, by ID, then by number
  inbox<arc> arcs_;
};

/// PT-Scotch's own threads call MPI at the same time, which crashes now and then where MPI was not initialised for that: it
/// is held to one.
bool part_in_one_thread(SCOTCH_Dgraph& graph, SCOTCH_Num parts, dense1D<SCOTCH_Num>& found) {
  SCOTCH_Context context;
  SCOTCH_Dgraph bound;
  SCOTCH_Strat strategy;
  if (SCOTCH_contextInit(&context) != 0) return false;
  SCOTCH_stratInit(&strategy);
  bool parted =
      SCOTCH_contextThreadSpawn(&context, 1, nullptr) == 0 && SCOTCH_contextBindDgraph(&context, &graph, &bound) == 0;
  if (parted) {
    parted = SCOTCH_dgraphPart(&bound, parts, &strategy, found.data()) == 0;
    SCOTCH_dgraphExit(&bound);
  }
  SCOTCH_stratExit(&strategy);
  SCOTCH_contextExit(&context);
  return parted;
}

/// False when PT-Scotch fails, which it says on the standard error output.
bool part_graph(team& ranks, dense1D<SCOTCH_Num>& offsets, dense1D<SCOTCH_Num>& ends, SCOTCH_Num parts,
                dense1D<SCOTCH_Num>& found) {
  SCOTCH_Dgraph graph;
  if (SCOTCH_dgraphInit(&graph, ranks.comm()) != 0) return false;
  const auto vertices = static_cast<SCOTCH_Num>(offsets.size() - 1), arcs = offsets[offsets.size() - 1];
  const bool parted = SCOTCH_dgraphBuild(&graph, 0, vertices, vertices, offsets.data(), offsets.data() + 1, nullptr,
                                         nullptr, arcs, arcs, ends.data(), nullptr, nullptr) == 0 &&
                      part_in_one_thread(graph, parts, found);
  SCOTCH_dgraphExit(&graph);
  return parted;
}

int find_parts(team& ranks, const mesh_part& part, const dense2D<std::uint64_t>& neighbors, int parts,
               dense1D<int>& targets) {
  element_graph graph(ranks, part);
  int code = graph.build(neighbors);
  if (code < 0) return code;
  const std::uint64_t count = part.element_IDs.size();
  dense1D<SCOTCH_Num> offsets, ends, found;
  const bool room = offsets.resize(count + 1, 0) && ends.resize(graph.arcs().size() + 1) && found.resize(count + 1) &&
                    targets.resize(count);
  code = ranks.agree(room ? 0 : out_of_memory);
  if (code < 0) return code;
  for (std::uint64_t i = 0; i < graph.arcs().size(); ++i) {
    ++offsets[graph.arcs()[i].from - graph.first() + 1];
    ends[i] = static_cast<SCOTCH_Num>(graph.arcs()[i].to);
  }
  for (std::uint64_t e = 0; e < count; ++e) offsets[e + 1] += offsets[e];
  code = ranks.agree(part_graph(ranks, offsets, ends, parts, found) ? 0 : out_of_memory);
  for (std::uint64_t e = 0; e < count; ++e) targets[e] = static_cast<int>(found[e]);
  return code;
}

#else

int find_parts(team&, const mesh_part&, const dense2D<std::uint64_t>&, int, dense1D<int>&) { return -202; }

#endif

}  // namespace

int partition_graph(MPI_Comm comm, const mesh_part& part, const dense2D<std::uint64_t>& neighbors, int parts,
                    dense1D<int>& targets) {
  targets.clear();
  team ranks(comm);
  part_agreement agreed(ranks, part);
  agreed.same(static_cast<std::uint64_t>(parts), -4);
  const bool are_of_part = neighbors.cols() == part.connectivity.cols();
  int code = agreed.conclude(!are_of_part ? -3 : parts > 0 ? 0 : -4);
  if (code == 0) code = find_parts(ranks, part, neighbors, parts, targets);
  if (code < 0) targets.clear();
  return code;
}

}  // namespace qel::gridwork::mpi
