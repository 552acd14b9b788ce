// Numbers of edges.
#include <compare>

#include "communication/numbering.h"
#include "parts/checks.h"
#include "qel/gridwork/topology.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::out_of_memory;

namespace {

struct edge_key {
  std::uint64_t lower, higher;

  auto operator<=>(const edge_key&) const = default;
};

/// A part's own edges come in the order of its indices, which is that of IDs.
int number_own_edges(team& ranks, const mesh_part& part, element_type type, dense2D<unsigned>& edges,
                     dense1D<std::uint64_t>& edge_IDs, std::uint64_t& total) {
  part_agreement agreed(ranks, part);
  agreed.same(static_cast<std::uint64_t>(type), -3);
  int code = agreed.conclude(0);
  if (code == 0) code = ranks.agree(copy_edges(part.connectivity, type, edges));
  if (code < 0) return code;
  const id_ranges ranges(ranks, part.node_IDs);
  dense1D<edge_key> keys;
  const bool room = keys.resize(edges.cols());
  for (std::uint64_t j = 0; room && j < edges.cols(); ++j) {
    keys[j] = {part.node_IDs[edges(0, j)], part.node_IDs[edges(1, j)]};
  }
  const auto owner = [&](const edge_key& key) { return ranges.owner(key.lower); };
  code = number_in_order(ranks, room ? 0 : out_of_memory, keys, owner, edge_IDs, total);
  return code == 0 ? ranks.agree(0) : code;
}

}  // namespace

int number_edges(MPI_Comm comm, const mesh_part& part, element_type type, dense2D<unsigned>& edges,
                 dense1D<std::uint64_t>& edge_IDs, std::uint64_t& total) {
  team ranks(comm);
  dense2D<unsigned> found;
  dense1D<std::uint64_t> numbers;
  std::uint64_t count = 0;
  const int code = number_own_edges(ranks, part, type, found, numbers, count);
  edges = code == 0 ? found : dense2D<unsigned>();
  edge_IDs = code == 0 ? numbers : dense1D<std::uint64_t>();
  total = code == 0 ? count : 0;
  return code;
}

}  // namespace qel::gridwork::mpi
