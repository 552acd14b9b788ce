// Neighbours, boundaries, edges, sub-domains, the graph of nodes.
#include "functions.h"

namespace web {

namespace {

using gw::element_type;
using gw::operation;

constexpr function rows[] = {
    row<gw::get_neighbors>("get_neighbors", "connectivity type pair_non_manifold >neighbors"),
    row<gw::get_element_boundaries>("get_element_boundaries", "connectivity type >boundaries"),
    row<gw::get_mesh_boundaries>("get_mesh_boundaries", "connectivity neighbors type >boundaries"),
    row<gw::get_mesh_bounding_elements>("get_mesh_bounding_elements", "connectivity neighbors type >slots >nbr_bound"),
    row<gw::get_elements_on_boundaries>("get_elements_on_boundaries",
                                        "boundaries connectivity neighbors ancestors type >slots >nbr_bound"),
    row<overload<int(const elements&, list&)>(gw::get_subdomains)>("get_subdomains", "neighbors >colors",
                                                                   operation::get_subdomains),
    row<overload<int(const elements&, const elements&, element_type, const list&, list&)>(gw::get_subdomains)>(
        "get_subdomains", "connectivity neighbors type walls >colors", operation::get_subdomains_walls),
    row<overload<int(const elements&, const elements&, element_type, const elements&, list&)>(gw::get_subdomains)>(
        "get_subdomains", "connectivity neighbors type walls >colors", operation::get_subdomains_walls),
    row<overload<int(const elements&, const elements&, element_type, const list&, unsigned, elements&, elements&)>(
        gw::get_colors_boundaries)>("get_colors_boundaries",
                                    "connectivity neighbors type colors mode >boundaries >pairs"),
    row<overload<int(const elements&, const elements&, element_type, const list&, unsigned, list&, elements&)>(
        gw::get_colors_boundaries)>("get_colors_boundaries_slots",
                                    "connectivity neighbors type colors mode >slots >pairs"),
    row<gw::sort_elfes>("sort_elfes", "neighbors colors +slots >order >pairs >offsets"),
    row<gw::get_ancestors>("get_ancestors", "connectivity >ancestors"),
    row<gw::get_connected_elements>("get_connected_elements", "connectivity >offsets >elements"),
    row<gw::get_node_graph>("get_node_graph", "connectivity >offsets >adjacency"),
    row<overload<int(const elements&, element_type, elements&)>(gw::copy_edges)>(
        "copy_edges", "connectivity type >edges", operation::copy_edges),
    row<[](const matrices& all, const codes& types, elements& edges) {
      return gw::copy_edges(all.data(), all.data() + all.size(), types, edges);
    }>("copy_edges", "connectivities types >edges", operation::copy_edges_range),
};

}  // namespace

std::span<const function> topology_functions() { return rows; }

}  // namespace web
