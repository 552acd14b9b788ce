#include "arrays.h"
#include "core.h"
#include "failure.h"

namespace core {

namespace {

using gw::operation;

std::pair<indices, indices> get_ids(const indices& a, const indices& b) {
  std::pair<indices, indices> maps;
  checked(operation::get_IDs, gw::get_IDs(a, b, maps.first, maps.second));
  return maps;
}

std::pair<indices, indices> get_columns(const cells& a, const cells& b, bool exact) {
  std::pair<indices, indices> maps;
  checked(operation::get_IDs, gw::get_IDs(a, b, maps.first, maps.second, exact));
  return maps;
}

indices unique_values(const indices& ids, const indices& excluded) {
  indices distinct;
  checked(operation::unique_indices, gw::unique_indices(distinct, ids, excluded));
  return distinct;
}

indices unique_indices(const blocks& all, const indices& excluded) {
  indices distinct;
  checked(operation::unique_indices, gw::unique_indices(distinct, all.data(), all.data() + all.size(), excluded));
  return distinct;
}

int count_unique_indices(const blocks& all) {
  return checked(operation::count_unique_indices, gw::count_unique_indices(all.data(), all.data() + all.size()));
}

std::pair<indices, indices> get_sorted_order(const indices& ids) {
  std::pair<indices, indices> result;
  checked(operation::get_sorted_order, gw::get_sorted_order(ids, result.first, result.second));
  return result;
}

template <class Array>
Array permutation(const Array& given, const indices& perm) {
  Array moved = copied(given);
  checked(operation::permutation, gw::permutation(moved, perm));
  return moved;
}

void shift_indices(in_place<indices> ids, int shift) { gw::shift_indices(ids.array, shift); }

void shift_cells(in_place<cells> connectivity, int shift, gw::element_type type) {
  gw::shift_indices(connectivity.array, shift, type);
}

template <class Array>
void change_indices(in_place<Array> ids, const indices& new_ids) {
  gw::change_indices(ids.array, new_ids);
}

bool fits_type(const cells& connectivity, gw::element_type type, unsigned n) {
  return gw::check_IDs(connectivity, type, n);
}

std::array<unsigned, 4> element_table(gw::element_type type) {
  return {gw::nbr_nodes(type), gw::nbr_base_nodes(type), gw::element_dim(type), gw::nbr_boundaries(type)};
}

}  // namespace

void bind_ids(py::module_& m) {
  def(m, "element_table", element_table);
  def(m, "check_ids", py::overload_cast<const indices&, unsigned>(gw::check_IDs));
  def(m, "check_ids", py::overload_cast<const cells&, unsigned>(gw::check_IDs));
  def(m, "check_ids", fits_type);
  def(m, "max_id", py::overload_cast<const indices&>(gw::max_ID));
  def(m, "max_id", py::overload_cast<const cells&>(gw::max_ID));
  def(m, "shift_indices", shift_indices);
  def(m, "shift_indices", shift_cells);
  def(m, "change_indices", change_indices<indices>);
  def(m, "change_indices", change_indices<cells>);
  def(m, "permutation", permutation<indices>);
  def(m, "permutation", permutation<values>);
  def(m, "get_ids", get_ids);
  def(m, "get_ids", get_columns);
  def(m, "unique_indices", unique_values);
  def(m, "unique_indices", unique_indices);
  def(m, "count_unique_indices", count_unique_indices);
  def(m, "get_sorted_order", get_sorted_order);
}

}  // namespace core
