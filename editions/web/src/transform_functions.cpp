// Movements, copies, boxes, clipping.
#include "functions.h"

namespace web {

namespace {

using gw::element_type;
using gw::operation;
using plane = qel::vector_fixed<double, 2>;
using space = qel::vector_fixed<double, 3>;

constexpr function rows[] = {
    row<overload<int(points&, const plane&)>(gw::translate)>("translate", "+coords shift"),
    row<overload<int(points&, const space&)>(gw::translate)>("translate", "+coords shift"),
    row<overload<int(points&, const plane&, const list&)>(gw::translate)>("translate", "+coords shift ids"),
    row<overload<int(points&, const space&, const list&)>(gw::translate)>("translate", "+coords shift ids"),
    row<overload<int(points&, const plane&, const elements&)>(gw::translate)>("translate",
                                                                              "+coords shift connectivity"),
    row<overload<int(points&, const space&, const elements&)>(gw::translate)>("translate",
                                                                              "+coords shift connectivity"),
    row<overload<int(points&, const plane&, double)>(gw::rotate)>("rotate", "+coords center angle"),
    row<overload<int(points&, const plane&, double, const list&)>(gw::rotate)>("rotate", "+coords center angle ids"),
    row<overload<int(points&, const plane&, double, const elements&)>(gw::rotate)>("rotate",
                                                                                   "+coords center angle connectivity"),
    row<overload<int(points&, const space&, const space&)>(gw::rotate)>("rotate", "+coords center rotation"),
    row<overload<int(points&, const space&, const space&, const list&)>(gw::rotate)>("rotate",
                                                                                     "+coords center rotation ids"),
    row<overload<int(points&, const space&, const space&, const elements&)>(gw::rotate)>(
        "rotate", "+coords center rotation connectivity"),
    row<overload<int(points&, const plane&, double)>(gw::zoom)>("zoom", "+coords center factor"),
    row<overload<int(points&, const space&, double)>(gw::zoom)>("zoom", "+coords center factor"),
    row<overload<int(points&, const plane&, double, const list&)>(gw::zoom)>("zoom", "+coords center factor ids"),
    row<overload<int(points&, const space&, double, const list&)>(gw::zoom)>("zoom", "+coords center factor ids"),
    row<overload<int(points&, const plane&, double, const elements&)>(gw::zoom)>("zoom",
                                                                                 "+coords center factor connectivity"),
    row<overload<int(points&, const space&, double, const elements&)>(gw::zoom)>("zoom",
                                                                                 "+coords center factor connectivity"),
    row<overload<int(const points&, plane&, plane&)>(gw::inc_bounding_box)>("inc_bounding_box",
                                                                            "coords +box_min +box_max"),
    row<overload<int(const points&, space&, space&)>(gw::inc_bounding_box)>("inc_bounding_box",
                                                                            "coords +box_min +box_max"),
    row<overload<int(const points&, const list&, plane&, plane&)>(gw::inc_bounding_box)>(
        "inc_bounding_box", "coords ids +box_min +box_max"),
    row<overload<int(const points&, const list&, space&, space&)>(gw::inc_bounding_box)>(
        "inc_bounding_box", "coords ids +box_min +box_max"),
    row<overload<int(const points&, const elements&, plane&, plane&)>(gw::inc_bounding_box)>(
        "inc_bounding_box", "coords connectivity +box_min +box_max"),
    row<overload<int(const points&, const elements&, space&, space&)>(gw::inc_bounding_box)>(
        "inc_bounding_box", "coords connectivity +box_min +box_max"),
    row<overload<int(points&, elements&, const elements&)>(gw::copy_mesh)>("copy_mesh", "+coords >out connectivity"),
    row<overload<int(points&, elements&, const plane&, const plane&, double, unsigned, const elements&)>(
        gw::copy_mesh)>("copy_mesh", "+coords +out shift center angle n connectivity"),
    row<overload<int(points&, elements&, const space&, const space&, const space&, unsigned, const elements&)>(
        gw::copy_mesh)>("copy_mesh", "+coords +out shift center rotation n connectivity"),
    row<overload<int(points&, elements&, const plane&, const plane&, const elements&)>(gw::copy_sym_mesh)>(
        "copy_sym_mesh", "+coords >out point normal connectivity"),
    row<overload<int(points&, elements&, const space&, const space&, const elements&)>(gw::copy_sym_mesh)>(
        "copy_sym_mesh", "+coords >out point normal connectivity"),
    row<overload<int(const points&, elements&, const plane&, const plane&, const elements&, unsigned, double, list&)>(
        gw::clip)>("clip", "coords >out point normal connectivity mode tol >elements", operation::clip_whole),
    row<overload<int(const points&, elements&, const space&, const space&, const elements&, unsigned, double, list&)>(
        gw::clip)>("clip", "coords >out point normal connectivity mode tol >elements", operation::clip_whole),
    row<overload<int(points&, elements&, const plane&, const plane&, const elements&, element_type, double, list&,
                     elements&, values&)>(gw::clip)>(
        "clip_exact", "+coords >out point normal connectivity type tol >elements >edges >weights",
        operation::clip_exact),
    row<overload<int(points&, elements&, const space&, const space&, const elements&, element_type, double, list&,
                     elements&, values&)>(gw::clip)>(
        "clip_exact", "+coords >out point normal connectivity type tol >elements >edges >weights",
        operation::clip_exact),
};

}  // namespace

std::span<const function> transform_functions() { return rows; }

}  // namespace web
