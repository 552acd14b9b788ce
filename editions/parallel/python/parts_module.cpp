// The module gridwork._mpi: the component's functions on exact types. A communicator comes as the address of mpi4py's
// handle, a part and a sharing as tuples of their arrays.
#include <string>
#include <tuple>

#include "arrays.h"
#include "qel/gridwork/mpi.h"

namespace pybind11::detail {

/// Structures of arrays, as tuples in the order of their members.
template <class Struct, auto... Members>
struct struct_caster {
  PYBIND11_TYPE_CASTER(Struct, const_name("tuple"));

  bool load(handle source, bool convert) {
    if (!isinstance<tuple>(source)) return false;
    const auto given = reinterpret_borrow<tuple>(source);
    std::size_t k = 0;
    return given.size() == sizeof...(Members) && (load_member(given[k++], convert, value.*Members) && ...);
  }

  static handle cast(Struct result, return_value_policy /*policy*/, handle /*parent*/) {
    return make_tuple(core::own(std::move(result.*Members))...).release();
  }

 private:
  template <class Array>
  static bool load_member(const object& source, bool convert, Array& member) {
    make_caster<Array> caster;
    if (!caster.load(source, convert)) return false;
    member = cast_op<Array&>(caster);
    return true;
  }
};

using qel::gridwork::mpi::mesh_part;
using qel::gridwork::mpi::node_sharing;

template <>
struct type_caster<mesh_part> : struct_caster<mesh_part, &mesh_part::coords, &mesh_part::node_IDs,
                                              &mesh_part::connectivity, &mesh_part::element_IDs> {};

template <>
struct type_caster<node_sharing> : struct_caster<node_sharing, &node_sharing::offsets, &node_sharing::ranks> {};

}  // namespace pybind11::detail

namespace core {
namespace {

namespace mpi = gw::mpi;
using gw::element_type;
using mpi::mesh_part;
using mpi::node_sharing;
using address = std::uintptr_t;
using ids = qel::dense1D<std::uint64_t>;
using id_cells = qel::dense2D<std::uint64_t>;
using ranks = qel::dense1D<int>;
using point = qel::vector_fixed<double, 3>;

MPI_Comm comm_at(address handle) { return *reinterpret_cast<const MPI_Comm*>(handle); }

/// A negative result; gridwork.mpi has words for it.
struct failure_of_parts {
  const char* function;
  int code;
};

void checked(const char* function, int code) {
  if (code < 0) throw failure_of_parts{function, code};
}

void translate(std::exception_ptr thrown) {
  try {
    if (thrown) std::rethrow_exception(thrown);
  } catch (const failure_of_parts& what) {
    const py::object error = py::module_::import("gridwork.mpi").attr("_make_error")(what.function, what.code);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
  }
}

/// What both sides must have in common for a handle of one to be one of the other.
std::pair<std::size_t, std::string> implementation() {
  char words[MPI_MAX_LIBRARY_VERSION_STRING];
  int length = 0;
  MPI_Get_library_version(words, &length);
  return {sizeof(MPI_Comm), std::string(words, static_cast<std::size_t>(length))};
}

mesh_part STL_input(address comm, const std::string& file) {
  mesh_part part;
  checked("STL_input", mpi::STL_input(comm_at(comm), file.c_str(), part));
  return part;
}

void STL_output(address comm, const std::string& file, const mesh_part& part) {
  checked("STL_output", mpi::STL_output(comm_at(comm), file.c_str(), part));
}

mesh_part make_part(address comm, const matrix& coords, const cells& connectivity) {
  mesh_part part;
  checked("make_part", mpi::make_part(comm_at(comm), coords, connectivity, part));
  return part;
}

std::pair<std::uint64_t, mesh_part> merge(address comm, mesh_part part, double tol) {
  std::uint64_t merged = 0;
  checked("merge", mpi::merge(comm_at(comm), part, tol, merged));
  return {merged, std::move(part)};
}

std::pair<std::uint64_t, mesh_part> remove_degenerated(address comm, mesh_part part, bool strict) {
  std::uint64_t removed = 0;
  checked("remove_degenerated", mpi::remove_degenerated(comm_at(comm), part, strict, removed));
  return {removed, std::move(part)};
}

std::pair<std::uint64_t, mesh_part> simplify(address comm, mesh_part part) {
  std::uint64_t nodes = 0;
  checked("simplify", mpi::simplify(comm_at(comm), part, nodes));
  return {nodes, std::move(part)};
}

node_sharing share_nodes(address comm, const mesh_part& part) {
  node_sharing sharing;
  checked("share_nodes", mpi::share_nodes(comm_at(comm), part, sharing));
  return sharing;
}

id_cells get_neighbors(address comm, const mesh_part& part, element_type type, const node_sharing& sharing,
                       bool pair_non_manifold) {
  id_cells neighbors;
  checked("get_neighbors", mpi::get_neighbors(comm_at(comm), part, type, sharing, pair_non_manifold, neighbors));
  return shaped(std::move(neighbors), gw::nbr_boundaries(type));
}

std::pair<id_cells, ids> get_mesh_boundaries(const mesh_part& part, element_type type, const id_cells& neighbors) {
  std::pair<id_cells, ids> result;
  checked("get_mesh_boundaries", mpi::get_mesh_boundaries(part, type, neighbors, result.first, result.second));
  return result;
}

std::pair<std::uint64_t, ids> get_subdomains(address comm, const mesh_part& part, element_type type,
                                             const node_sharing& sharing, const id_cells& neighbors) {
  std::pair<std::uint64_t, ids> result;
  checked("get_subdomains",
          mpi::get_subdomains(comm_at(comm), part, type, sharing, neighbors, result.second, result.first));
  return result;
}

std::pair<indices, ids> get_connected_elements(address comm, const mesh_part& part, const node_sharing& sharing) {
  std::pair<indices, ids> rows;
  checked("get_connected_elements", mpi::get_connected_elements(comm_at(comm), part, sharing, rows.first, rows.second));
  return rows;
}

std::tuple<std::uint64_t, cells, ids> number_edges(address comm, const mesh_part& part, element_type type) {
  std::uint64_t total = 0;
  cells edges;
  ids numbers;
  checked("number_edges", mpi::number_edges(comm_at(comm), part, type, edges, numbers, total));
  return {total, shaped(std::move(edges), 2), std::move(numbers)};
}

ranks partition_by_curve(address comm, const mesh_part& part, int parts) {
  ranks targets;
  checked("partition_by_curve", mpi::partition_by_curve(comm_at(comm), part, parts, targets));
  return targets;
}

ranks partition_graph(address comm, const mesh_part& part, const id_cells& neighbors, int parts) {
  ranks targets;
  checked("partition_graph", mpi::partition_graph(comm_at(comm), part, neighbors, parts, targets));
  return targets;
}

mesh_part migrate(address comm, mesh_part part, const ranks& targets) {
  checked("migrate", mpi::migrate(comm_at(comm), part, targets));
  return part;
}

std::pair<mesh_part, ranks> get_ghosts(address comm, const mesh_part& part, const node_sharing& sharing) {
  std::pair<mesh_part, ranks> result;
  checked("get_ghosts", mpi::get_ghosts(comm_at(comm), part, sharing, result.first, result.second));
  return result;
}

std::pair<double, std::uint64_t> min_quality(address comm, const mesh_part& part, element_type type) {
  std::pair<double, std::uint64_t> worst;
  checked("min_quality", mpi::min_quality(comm_at(comm), part, type, worst.first, worst.second));
  return worst;
}

std::pair<ids, double> quality_histogram(address comm, const mesh_part& part, element_type type, std::uint64_t bins,
                                         double lower, double upper) {
  std::pair<ids, double> result(ids(bins), 0);
  if (result.first.size() != bins) throw std::bad_alloc();
  checked("quality_histogram",
          mpi::quality_histogram(comm_at(comm), part, type, lower, upper, result.first, result.second));
  return result;
}

values array_of(const point& p) {
  values array(3);
  if (array.size() != 3) throw std::bad_alloc();
  std::copy(p.begin(), p.end(), array.begin());
  return array;
}

std::pair<values, values> bounding_box(address comm, const mesh_part& part) {
  point lower, upper;
  checked("bounding_box", mpi::bounding_box(comm_at(comm), part, lower, upper));
  return {array_of(lower), array_of(upper)};
}

}  // namespace
}  // namespace core

PYBIND11_MODULE(_mpi, m) {
  using namespace core;
  m.doc() = "The component's functions on exact types; gridwork.mpi is the way to them.";
  py::register_local_exception_translator(translate);
  def(m, "implementation", implementation);
  def(m, "stl_input", STL_input);
  def(m, "stl_output", STL_output);
  def(m, "make_part", make_part);
  def(m, "merge", merge);
  def(m, "remove_degenerated", remove_degenerated);
  def(m, "simplify", simplify);
  def(m, "share_nodes", share_nodes);
  def(m, "get_neighbors", get_neighbors);
  def(m, "get_mesh_boundaries", get_mesh_boundaries);
  def(m, "get_subdomains", get_subdomains);
  def(m, "get_connected_elements", get_connected_elements);
  def(m, "number_edges", number_edges);
  def(m, "partition_by_curve", partition_by_curve);
  def(m, "partition_graph", partition_graph);
  def(m, "migrate", migrate);
  def(m, "get_ghosts", get_ghosts);
  def(m, "min_quality", min_quality);
  def(m, "quality_histogram", quality_histogram);
  def(m, "bounding_box", bounding_box);
}
