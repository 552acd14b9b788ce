#include "parts/checks.h"

#include <algorithm>
#include <functional>

#include "core/coordinates.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork::detail::parallel {
namespace {

bool increases(const dense1D<std::uint64_t>& ids) noexcept {
  return std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end();
}

}  // namespace

int check_part(const mesh_part& part) noexcept {
  const bool counts_fit = part.node_IDs.size() == part.coords.cols() && part.node_IDs.size() < none &&
                          part.element_IDs.size() == part.connectivity.cols() && part.element_IDs.size() < none;
  const bool in_order = counts_fit && increases(part.node_IDs) && increases(part.element_IDs);
  return in_order && check_IDs(part.connectivity, node_bound(part.coords)) ? 0 : -1;
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
