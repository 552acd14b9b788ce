// Element types, lists of indices, connectivities.
#include "functions.h"

namespace web {

namespace {

constexpr function rows[] = {
    row<gw::nbr_nodes>("nbr_nodes", "type"),
    row<gw::nbr_base_nodes>("nbr_base_nodes", "type"),
    row<gw::element_dim>("element_dim", "type"),
    row<gw::nbr_boundaries>("nbr_boundaries", "type"),
    row<overload<unsigned(const list&)>(gw::max_ID)>("max_ID", "ids"),
    row<overload<unsigned(const elements&)>(gw::max_ID)>("max_ID", "connectivity"),
    row<overload<bool(const list&, unsigned)>(gw::check_IDs)>("check_IDs", "ids n"),
    row<overload<bool(const elements&, unsigned)>(gw::check_IDs)>("check_IDs", "connectivity n"),
    row<overload<bool(const elements&, gw::element_type, unsigned)>(gw::check_IDs)>("check_IDs", "connectivity type n"),
    row<overload<int(list&, int)>(gw::shift_indices)>("shift_indices", "+ids shift"),
    row<overload<int(elements&, int, gw::element_type)>(gw::shift_indices)>("shift_indices",
                                                                            "+connectivity shift type"),
    row<overload<void(list&, const list&)>(gw::change_indices)>("change_indices", "+ids new_ids"),
    row<overload<void(elements&, const list&)>(gw::change_indices)>("change_indices", "+connectivity new_ids"),
    row<overload<int(list&, const list&)>(gw::permutation)>("permutation", "+values perm"),
    row<overload<int(values&, const list&)>(gw::permutation)>("permutation", "+values perm"),
    row<overload<int(const list&, const list&, list&, list&)>(gw::get_IDs)>("get_IDs", "A B >B_in_A >A_in_B"),
    row<overload<int(const elements&, const elements&, list&, list&, bool)>(gw::get_IDs)>("get_IDs",
                                                                                          "A B >B_in_A >A_in_B exact"),
    row<overload<int(list&, const list&, list)>(gw::unique_indices)>("unique_indices", ">ids values excluded?"),
    row<overload<int(list&, const elements&, list)>(gw::unique_indices)>("unique_indices",
                                                                         ">ids connectivity excluded?"),
    row<[](list& ids, const matrices& all, const list& excluded) {
      return gw::unique_indices(ids, all.data(), all.data() + all.size(), excluded);
    }>("unique_indices", ">ids connectivities excluded?"),
    row<overload<int(const elements&)>(gw::count_unique_indices)>("count_unique_indices", "connectivity"),
    row<[](const matrices& all) { return gw::count_unique_indices(all.data(), all.data() + all.size()); }>(
        "count_unique_indices", "connectivities"),
    row<gw::get_sorted_order>("get_sorted_order", "values >order >offsets"),
};

}  // namespace

std::span<const function> index_functions() { return rows; }

}  // namespace web
