// Search over nodes, merging, removal of what is degenerate or not used.
#include "functions.h"

#include "exports.h"

namespace web {

namespace {

using gw::operation;
using plane = qel::vector_fixed<double, 2>;
using space = qel::vector_fixed<double, 3>;

// Moves the coordinates into the detector, which refers to them.
int build(detector& d, const points& coords) {
  if (!d.coords.copy(coords)) return -199;
  return d.tree.reinit(d.coords);
}

constexpr function rows[] = {
    row<overload<int(points&, list&, double)>(gw::merge)>("merge", "+coords >new_IDs tol", operation::merge_nodes),
    row<overload<int(const points&, const list&, const list&, list&, double)>(gw::merge)>(
        "merge_lists", "coords IDs1 IDs2 >new_IDs tol", operation::merge_lists),
    row<overload<int(const points&, const list&, list&, double)>(gw::merge)>("merge", "coords IDs >new_IDs tol",
                                                                             operation::merge_lists),
    row<[](const points& coords, elements& connectivity, list& new_IDs, double tol, unsigned mode) {
      return gw::merge(coords, connectivity, new_IDs, tol, mode);
    }>("merge", "coords +connectivity >new_IDs tol mode?", operation::merge_elements),
    row<[](const points& coords, matrices& all, list& new_IDs, double tol, unsigned mode) {
      return gw::merge(coords, all.data(), all.data() + all.size(), new_IDs, tol, mode);
    }>("merge", "coords +connectivities >new_IDs tol mode?", operation::merge_elements),
    row<overload<int(elements&, list&, bool)>(gw::remove_degenerated)>("remove_degenerated",
                                                                       "+connectivity >new_elements strict"),
    row<overload<int(points&, elements&, list&, unsigned)>(gw::simplify)>("simplify",
                                                                          "+coords +connectivity >new_IDs first_node?"),
    row<[](points& coords, matrices& all, list& new_IDs, unsigned first_node) {
      return gw::simplify(coords, all.data(), all.data() + all.size(), new_IDs, first_node);
    }>("simplify", "+coords +connectivities >new_IDs first_node?"),

    row<build>("detector_reinit", "detector coords", operation::reinit),
    row<[](detector& d, const points& coords, const list& ids) {
      return d.coords.copy(coords) ? d.tree.reinit(d.coords, ids) : -199;
    }>("detector_reinit", "detector coords IDs", operation::reinit),
    row<[](detector& d, const list& ids) { return d.tree.insert(ids); }>("detector_insert", "detector IDs"),
    row<[](detector& d, const plane& p) { return d.tree.find_closest(p); }>("detector_find_closest", "detector P"),
    row<[](detector& d, const space& p) { return d.tree.find_closest(p); }>("detector_find_closest", "detector P"),
    row<[](detector& d, unsigned node) { return d.tree.find_closest(node); }>("detector_find_closest", "detector node"),
    row<[](detector& d, const plane& lower, const plane& upper, list& ids) { d.tree.find_in_box(lower, upper, ids); }>(
        "detector_find_in_box", "detector Pmin Pmax >IDs"),
    row<[](detector& d, const space& lower, const space& upper, list& ids) { d.tree.find_in_box(lower, upper, ids); }>(
        "detector_find_in_box", "detector Pmin Pmax >IDs"),
    row<[](detector& d) { return d.tree.size(); }>("detector_size", "detector"),
};

}  // namespace

std::span<const function> search_functions() { return rows; }

QEL_GRIDWORK_WEB_EXPORT("detector") detector* new_detector() { return new detector; }

}  // namespace web
