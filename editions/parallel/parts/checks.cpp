#include "parts/checks.h"

#include <algorithm>
#include <functional>

#include "core/coordinates.h"
#include "core/elements.h"
#include "core/linear_shapes.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork::detail::parallel {
namespace {

/// Increasing, and of so many bits.
bool are_IDs(const dense1D<std::uint64_t>& ids, int bits) noexcept {
  return std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end() &&
         (ids.empty() || ids[ids.size() - 1] >> bits == 0);
}

}  // namespace

int check_part(const mesh_part& part) noexcept {
  const bool counts_fit = part.node_IDs.size() == part.coords.cols() && part.node_IDs.size() < none &&
                          part.element_IDs.size() == part.connectivity.cols() && part.element_IDs.size() < none;
  const bool have_IDs = counts_fit && are_IDs(part.node_IDs, 63) && are_IDs(part.element_IDs, 60);
  return have_IDs && check_IDs(part.connectivity, node_bound(part.coords)) ? 0 : -1;
}

int check_type(const mesh_part& part, element_type type) noexcept {
  if (part.connectivity.empty()) return 0;
  type = resolve_type(type, part.connectivity.rows());
  if (!check_IDs(part.connectivity, type, none)) return -1;
  return visit_shape(type, -2, [](auto) { return 0; });
}

bool fits(const dense2D<std::uint64_t>& neighbors, const mesh_part& part, element_type type) noexcept {
  if (neighbors.cols() != part.connectivity.cols()) return false;
  return neighbors.empty() || neighbors.rows() == nbr_boundaries(resolve_type(type, part.connectivity.rows()));
}

part_agreement::part_agreement(team& ranks, const mesh_part& part) noexcept : agreement(ranks), part_(part) {
  same(part.coords.rows(), -1, part.coords.cols() != 0);
  same(part.connectivity.rows(), -1, part.connectivity.cols() != 0);
}

int part_agreement::conclude(int code) noexcept {
  const int own = check_part(part_);
  return agreement::conclude(own != 0 && code != out_of_memory ? own : code);
}

part_shape part_agreement::shape() const noexcept {
  const auto rows = [this](int k) { return value(k) == ~std::uint64_t{0} ? 0U : static_cast<unsigned>(value(k)); };
  return {rows(0), rows(1)};
}

bool goes_with(const node_sharing& sharing, std::uint64_t nodes, const team& ranks) noexcept {
  const auto& offsets = sharing.offsets;
  if (offsets.size() != nodes + 1 || offsets[0] != 0 || offsets[nodes] != sharing.ranks.size()) return false;
  return std::is_sorted(offsets.begin(), offsets.end()) &&
         std::all_of(sharing.ranks.begin(), sharing.ranks.end(),
                     [&](int r) { return r >= 0 && r < ranks.size() && r != ranks.rank(); });
}

}  // namespace qel::gridwork::detail::parallel
