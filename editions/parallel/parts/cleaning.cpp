// Merging of near nodes, removal of degenerate elements, compaction of numbers.
#include <algorithm>
#include <cmath>

#include "communication/numbering.h"
#include "core/index_flags.h"
#include "merging/survivors.h"
#include "parts/checks.h"
#include "parts/localize.h"
#include "qel/gridwork/search.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::out_of_memory;

namespace {

constexpr int overflows = -201;

/// A copy whose matrices are its own.
[[nodiscard]] bool copy_part(const mesh_part& part, mesh_part& own) {
  return own.coords.copy(part.coords) && own.node_IDs.copy(part.node_IDs) && own.connectivity.copy(part.connectivity) &&
         own.element_IDs.copy(part.element_IDs);
}

int check_merge(const mesh_part& part, double tol) noexcept {
  if (part.coords.cols() != 0 && part.coords.rows() != 2 && part.coords.rows() != 3) return -1;
  if (!(tol >= 0)) return -3;
  return std::isinf(tol * tol) ? overflows : 0;
}

/// Gives a part, whose elements are there, the survivors of its nodes, which are found no more.
[[nodiscard]] bool use_survivors(const mesh_part& part, survivors& found, unsigned dim, mesh_part& merged) {
  const auto own = static_cast<unsigned>(part.node_IDs.size()), all = own + static_cast<unsigned>(found.others.size());
  detail::index_flags used;
  dense1D<unsigned> places;
  unsigned count = 0;
  if (!used.reset(all)) return false;
  for (const unsigned survivor : found.places) used.insert(survivor);
  if (!order_nodes(part.node_IDs, found.others, used, places, count)) return false;
  if (!merged.coords.resize(dim, count) || !merged.node_IDs.resize(count)) return false;
  const auto put = [&](const double* p, unsigned k) { std::copy_n(p, dim, merged.coords.column(places[k])); };
  for (unsigned k = 0; k < all; ++k) {
    if (!used.contains(k)) continue;
    const unsigned from = k < own ? found.places[k] : k;  // another one where a survivor is merged itself
    merged.node_IDs[places[k]] = k < own ? part.node_IDs[k] : found.others[k - own];
    put(from < own ? part.coords.column(from) : found.coords.column(from - own), k);
  }
  for (std::uint64_t t = 0; t < found.takers.size(); ++t) {
    if (used.contains(found.takers[t])) put(found.taken[t].p, found.takers[t]);
  }
  for (unsigned& place : found.places) place = places[place];
  change_indices(merged.connectivity, found.places);
  return true;
}

/// The part once its nodes are those that they are merged to.
int merge_nodes(team& ranks, const mesh_part& part, unsigned dim, double tol, mesh_part& merged, std::uint64_t& count) {
  survivors found;
  const int code = find_survivors(ranks, 0, {dim, part.coords, part.node_IDs}, tol, true, found);
  if (code < 0) return code;
  count = found.merged;
  const bool room = merged.connectivity.copy(part.connectivity) && merged.element_IDs.copy(part.element_IDs) &&
                    use_survivors(part, found, dim, merged);
  return ranks.agree(room ? 0 : out_of_memory);
}

/// Keeps the nodes that elements use.
[[nodiscard]] bool drop_unused(mesh_part& part) {
  dense1D<unsigned> new_IDs;
  if (part.node_IDs.empty()) return true;
  if (gridwork::simplify(part.coords, part.connectivity, new_IDs, 0) < 0) return false;
  std::uint64_t kept = 0;
  for (std::uint64_t i = 0; i < new_IDs.size(); ++i) {
    if (new_IDs[i] != detail::none) part.node_IDs[kept++] = part.node_IDs[i];
  }
  return part.node_IDs.resize(kept);
}

/// The part without its degenerate elements; those that are left still have their old IDs.
[[nodiscard]] bool drop_degenerated(const mesh_part& part, bool strict, mesh_part& kept, std::uint64_t& removed) {
  dense1D<unsigned> new_elements;
  if (!copy_part(part, kept)) return false;
  const int count = gridwork::remove_degenerated(kept.connectivity, new_elements, strict);
  if (count < 0) return false;
  removed = static_cast<std::uint64_t>(count);
  std::uint64_t next = 0;
  for (std::uint64_t e = 0; e < new_elements.size(); ++e) {
    if (new_elements[e] != detail::none) kept.element_IDs[next++] = kept.element_IDs[e];
  }
  return kept.element_IDs.resize(next) && drop_unused(kept);
}

}  // namespace

int merge(MPI_Comm comm, mesh_part& part, double tol, std::uint64_t& merged) {
  merged = 0;
  team ranks(comm);
  part_agreement agreed(ranks, part);
  agreed.same_number(tol, -3);
  int code = agreed.conclude(check_merge(part, tol));
  const unsigned dim = agreed.shape().dim;
  if (code < 0 || dim == 0) return code;
  mesh_part result;
  code = merge_nodes(ranks, part, dim, tol, result, merged);
  if (code == 0)
    part = result;
  else
    merged = 0;
  return code;
}

int remove_degenerated(MPI_Comm comm, mesh_part& part, bool strict, std::uint64_t& removed) {
  removed = 0;
  team ranks(comm);
  part_agreement agreed(ranks, part);
  agreed.same(std::uint64_t{strict}, -3);
  int code = agreed.conclude(0);
  if (code < 0) return code;
  mesh_part kept;
  std::uint64_t count = 0, total = 0;
  code = ranks.agree(drop_degenerated(part, strict, kept, count) ? 0 : out_of_memory);
  if (code == 0) code = number_ids(ranks, kept.element_IDs, kept.element_IDs, total);
  if (code < 0) return code;
  ranks.add(&count, 1);
  code = ranks.agree(0);
  if (code < 0) return code;
  part = kept;
  removed = count;
  return 0;
}

int simplify(MPI_Comm comm, mesh_part& part, std::uint64_t& nodes) {
  nodes = 0;
  team ranks(comm);
  int code = part_agreement(ranks, part).conclude(0);
  if (code < 0) return code;
  mesh_part kept;
  std::uint64_t total = 0;
  code = ranks.agree(copy_part(part, kept) && drop_unused(kept) ? 0 : out_of_memory);
  if (code == 0) code = number_ids(ranks, kept.node_IDs, kept.node_IDs, total);
  if (code == 0) code = ranks.agree(0);
  if (code < 0) return code;
  part = kept;
  nodes = total;
  return 0;
}

int make_part(MPI_Comm comm, const dense2D<double>& coords, const dense2D<unsigned>& connectivity, mesh_part& part) {
  team ranks(comm);
  mesh_part made;
  const bool room = made.coords.copy(coords) && made.connectivity.copy(connectivity) &&
                    made.node_IDs.resize(coords.cols()) && made.element_IDs.resize(connectivity.cols());
  const std::uint64_t first_node = ranks.number(coords.cols()).before;
  const std::uint64_t first_element = ranks.number(connectivity.cols()).before;
  for (std::uint64_t i = 0; room && i < coords.cols(); ++i) made.node_IDs[i] = first_node + i;
  for (std::uint64_t e = 0; room && e < connectivity.cols(); ++e) made.element_IDs[e] = first_element + e;
  int code = part_agreement(ranks, made).conclude(room ? 0 : out_of_memory);
  if (code == 0) code = ranks.agree(drop_unused(made) ? 0 : out_of_memory);
  part = code == 0 ? made : mesh_part();
  return code;
}

}  // namespace qel::gridwork::mpi
