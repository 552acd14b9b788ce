// Elements that move to other ranks, and copies of those around a part.
#include <algorithm>

#include "parts/shipping.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::out_of_memory;

namespace {

/// Lists for each other rank the elements that hold a node which it has, too.
bool list_touching(const team& ranks, const mesh_part& part, const node_sharing& sharing, outbox<unsigned>& elements) {
  dense1D<std::uint64_t> seen;  // the element, counted from 1, that a rank was visited for last
  if (!seen.resize(static_cast<std::uint64_t>(ranks.size()))) return false;
  const auto visit_sharing = [&](unsigned e, unsigned node, auto visit) {
    for (unsigned k = sharing.offsets[node]; k < sharing.offsets[node + std::uint64_t{1}]; ++k) {
      std::uint64_t& last = seen[static_cast<std::uint64_t>(sharing.ranks[k])];
      if (last != e + std::uint64_t{1}) visit(sharing.ranks[k], e);
      last = e + std::uint64_t{1};
    }
  };
  return elements.fill(ranks, [&](auto visit) {
    std::fill(seen.begin(), seen.end(), 0);
    for (unsigned e = 0; e < part.connectivity.cols(); ++e) {
      for (const unsigned* n = part.connectivity.begin_column(e); n != part.connectivity.end_column(e); ++n) {
        if (*n != detail::none) visit_sharing(e, *n, visit);
      }
    }
  });
}

}  // namespace

int migrate(MPI_Comm comm, mesh_part& part, const dense1D<int>& targets) {
  team ranks(comm);
  part_agreement agreed(ranks, part);
  const bool are_ranks = targets.size() == part.element_IDs.size() &&
                         std::all_of(targets.begin(), targets.end(), [&](int r) { return r >= 0 && r < ranks.size(); });
  int code = agreed.conclude(are_ranks ? 0 : -3);
  if (code < 0) return code;
  outbox<unsigned> elements;
  mesh_part arrived;
  dense1D<int> sources;
  const auto walk = [&](auto visit) {
    for (unsigned e = 0; e < targets.size(); ++e) visit(targets[e], e);
  };
  code = ship(ranks, elements.fill(ranks, walk) ? 0 : out_of_memory, part, agreed.shape(), elements, arrived, sources);
  if (code == 0) part = arrived;
  return code;
}

int get_ghosts(MPI_Comm comm, const mesh_part& part, const node_sharing& sharing, mesh_part& ghosts,
               dense1D<int>& owners) {
  team ranks(comm);
  part_agreement agreed(ranks, part);
  int code = agreed.conclude(goes_with(sharing, part.node_IDs.size(), ranks) ? 0 : -3);
  outbox<unsigned> elements;
  mesh_part arrived;
  dense1D<int> sources;
  if (code == 0) {
    const bool room = list_touching(ranks, part, sharing, elements);
    code = ship(ranks, room ? 0 : out_of_memory, part, agreed.shape(), elements, arrived, sources);
  }
  ghosts = code == 0 ? arrived : mesh_part();
  owners = code == 0 ? sources : dense1D<int>();
  return code;
}

}  // namespace qel::gridwork::mpi
