#include <limits>

#include "arrays.h"
#include "core.h"
#include "failure.h"

namespace core {

namespace {

using gw::element_type;
using gw::operation;

template <unsigned Dim>
using point = qel::vector_fixed<double, Dim>;

/// The first `Dim` values, 0 where there are fewer.
template <unsigned Dim>
point<Dim> fixed(const values& given) {
  point<Dim> p = {};
  std::copy_n(given.begin(), std::min<std::uint64_t>(Dim, given.size()), p.begin());
  return p;
}

// Nodes are none (all of them), a list or a connectivity; the dimension is that of the point.

template <class... Nodes>
void translate(in_place<matrix> coords, const values& shift, const Nodes&... nodes) {
  if (shift.size() == 2) {
    gw::translate(coords.array, fixed<2>(shift), nodes...);
  } else {
    gw::translate(coords.array, fixed<3>(shift), nodes...);
  }
}

template <class... Nodes>
void zoom(in_place<matrix> coords, const values& center, double factor, const Nodes&... nodes) {
  if (center.size() == 2) {
    gw::zoom(coords.array, fixed<2>(center), factor, nodes...);
  } else {
    gw::zoom(coords.array, fixed<3>(center), factor, nodes...);
  }
}

/// In the plane the rotation is an angle.
template <class... Nodes>
void rotate(in_place<matrix> coords, const values& center, const values& rotation, const Nodes&... nodes) {
  if (center.size() == 2) {
    gw::rotate(coords.array, fixed<2>(center), fixed<2>(rotation)[0], nodes...);
  } else {
    gw::rotate(coords.array, fixed<3>(center), fixed<3>(rotation), nodes...);
  }
}

values listed(const double* first, const double* last) {
  values list;
  if (!list.resize(std::uint64_t(last - first))) throw std::bad_alloc();
  std::copy(first, last, list.begin());
  return list;
}

template <unsigned Dim, class... Nodes>
std::pair<values, values> box(const matrix& coords, const Nodes&... nodes) {
  point<Dim> lower;
  point<Dim> upper;
  lower = std::numeric_limits<double>::infinity();
  upper = -std::numeric_limits<double>::infinity();
  checked(operation::inc_bounding_box, gw::inc_bounding_box(coords, nodes..., lower, upper));
  return {listed(lower.begin(), lower.end()), listed(upper.begin(), upper.end())};
}

template <class... Nodes>
std::pair<values, values> bounding_box(const matrix& coords, const Nodes&... nodes) {
  return coords.rows() == 2 ? box<2>(coords, nodes...) : box<3>(coords, nodes...);
}

using mesh = std::pair<matrix, cells>;

mesh copy_mesh(matrix coords, const cells& connectivity) {
  cells out;
  checked(operation::copy_mesh, gw::copy_mesh(coords, out, connectivity));
  return {std::move(coords), shaped(std::move(out), connectivity.rows())};
}

mesh copy_mesh_n(matrix coords, const cells& connectivity, const values& shift, const values& center,
                 const values& rotation, unsigned n) {
  cells out;
  const int result =
      center.size() == 2
          ? gw::copy_mesh(coords, out, fixed<2>(shift), fixed<2>(center), fixed<2>(rotation)[0], n, connectivity)
          : gw::copy_mesh(coords, out, fixed<3>(shift), fixed<3>(center), fixed<3>(rotation), n, connectivity);
  checked(operation::copy_mesh, result);
  return {std::move(coords), shaped(std::move(out), connectivity.rows())};
}

mesh copy_sym_mesh(matrix coords, const cells& connectivity, const values& origin, const values& normal) {
  cells out;
  const int result = origin.size() == 2
                         ? gw::copy_sym_mesh(coords, out, fixed<2>(origin), fixed<2>(normal), connectivity)
                         : gw::copy_sym_mesh(coords, out, fixed<3>(origin), fixed<3>(normal), connectivity);
  checked(operation::copy_sym_mesh, result);
  return {std::move(coords), shaped(std::move(out), connectivity.rows())};
}

std::pair<cells, indices> clip_whole(const matrix& coords, const cells& connectivity, const values& origin,
                                     const values& normal, unsigned mode, double tol) {
  cells out;
  indices elements;
  const int result = origin.size() == 2
                         ? gw::clip(coords, out, fixed<2>(origin), fixed<2>(normal), connectivity, mode, tol, elements)
                         : gw::clip(coords, out, fixed<3>(origin), fixed<3>(normal), connectivity, mode, tol, elements);
  checked(operation::clip_whole, result);
  return {shaped(std::move(out), connectivity.rows()), std::move(elements)};
}

using cut_mesh = std::tuple<matrix, cells, indices, cells, values>;

cut_mesh clip_exact(matrix coords, const cells& connectivity, element_type type, const values& origin,
                    const values& normal, double tol) {
  cells out;
  indices elements;
  cells edges;
  values weights;
  const int result = origin.size() == 2 ? gw::clip(coords, out, fixed<2>(origin), fixed<2>(normal), connectivity, type,
                                                   tol, elements, edges, weights)
                                        : gw::clip(coords, out, fixed<3>(origin), fixed<3>(normal), connectivity, type,
                                                   tol, elements, edges, weights);
  checked(operation::clip_exact, result);
  return {std::move(coords), shaped(std::move(out), connectivity.rows()), std::move(elements),
          shaped(std::move(edges), 2), std::move(weights)};
}

}  // namespace

void bind_transforms(py::module_& m) {
  def(m, "translate", translate<>);
  def(m, "translate", translate<indices>);
  def(m, "translate", translate<cells>);
  def(m, "zoom", zoom<>);
  def(m, "zoom", zoom<indices>);
  def(m, "zoom", zoom<cells>);
  def(m, "rotate", rotate<>);
  def(m, "rotate", rotate<indices>);
  def(m, "rotate", rotate<cells>);
  def(m, "bounding_box", bounding_box<>);
  def(m, "bounding_box", bounding_box<indices>);
  def(m, "bounding_box", bounding_box<cells>);
  def(m, "copy_mesh", copy_mesh);
  def(m, "copy_mesh", copy_mesh_n);
  def(m, "copy_sym_mesh", copy_sym_mesh);
  def(m, "clip_whole", clip_whole);
  def(m, "clip_exact", clip_exact);
}

}  // namespace core
