#include <numeric>

#include "arrays.h"
#include "core.h"
#include "failure.h"

namespace core {

namespace {

using gw::operation;

/// A map of `size` entries; the library leaves it empty where everything stays in its place.
indices full_map(indices map, std::uint64_t size) {
  if (!map.empty() || size == 0) return map;
  if (!map.resize(size)) throw std::bad_alloc();
  std::iota(map.begin(), map.end(), 0U);
  return map;
}

std::tuple<int, matrix, indices> merge(matrix coords, double tol) {
  indices new_ids;
  const int merged = checked(operation::merge_nodes, gw::merge(coords, new_ids, tol));
  const std::uint64_t nodes = coords.cols();
  return {merged, std::move(coords), full_map(std::move(new_ids), nodes)};
}

std::pair<int, indices> merge_list(const matrix& coords, const indices& ids, double tol) {
  indices new_ids;
  const int merged = checked(operation::merge_lists, gw::merge(coords, ids, new_ids, tol));
  return {merged, full_map(std::move(new_ids), coords.cols())};
}

std::pair<int, indices> merge_lists(const matrix& coords, const indices& ids1, const indices& ids2, double tol) {
  indices new_ids;
  const int merged = checked(operation::merge_lists, gw::merge(coords, ids1, ids2, new_ids, tol));
  return {merged, full_map(std::move(new_ids), coords.cols())};
}

std::tuple<int, blocks, indices> merge_elements(const matrix& coords, const blocks& given, double tol, unsigned mode) {
  blocks all = copied(given);
  indices new_ids;
  const int merged =
      checked(operation::merge_elements, gw::merge(coords, all.data(), all.data() + all.size(), new_ids, tol, mode));
  return {merged, std::move(all), full_map(std::move(new_ids), coords.cols())};
}

std::pair<cells, indices> remove_degenerated(const cells& given, bool strict) {
  cells connectivity = copied(given);
  indices new_elements;
  checked(operation::remove_degenerated, gw::remove_degenerated(connectivity, new_elements, strict));
  return {shaped(std::move(connectivity), given.rows()), std::move(new_elements)};
}

std::tuple<matrix, blocks, indices> simplify(const matrix& given, const blocks& blocks_given, unsigned first_node) {
  matrix coords = copied(given);
  blocks all = copied(blocks_given);
  indices new_ids;
  checked(operation::simplify, gw::simplify(coords, all.data(), all.data() + all.size(), new_ids, first_node));
  return {shaped(std::move(coords), given.rows()), std::move(all), full_map(std::move(new_ids), given.cols())};
}

/// merge(), remove_degenerated() and simplify(), with the map of all nodes.
std::tuple<matrix, cells, indices, indices> clean(const matrix& given, const cells& connectivity_given, double tol) {
  matrix coords = copied(given);
  cells connectivity = copied(connectivity_given);
  if (!gw::check_IDs(connectivity, unsigned(coords.cols()))) throw failure(operation::simplify, -2);
  indices survivors;
  indices kept;
  indices new_elements;
  checked(operation::merge_nodes, gw::merge(coords, survivors, tol));
  gw::change_indices(connectivity, survivors);
  checked(operation::remove_degenerated, gw::remove_degenerated(connectivity, new_elements, false));
  checked(operation::simplify, gw::simplify(coords, connectivity, kept, 0));
  indices new_ids = full_map(std::move(survivors), given.cols());
  gw::change_indices(new_ids, kept);
  return {shaped(std::move(coords), given.rows()), shaped(std::move(connectivity), connectivity_given.rows()),
          std::move(new_ids), std::move(new_elements)};
}

}  // namespace

void bind_search(py::module_& m) {
  def(m, "merge", merge);
  def(m, "merge_lists", merge_list);
  def(m, "merge_lists", merge_lists);
  def(m, "merge_elements", merge_elements);
  def(m, "remove_degenerated", remove_degenerated);
  def(m, "simplify", simplify);
  def(m, "clean", clean);
}

}  // namespace core
