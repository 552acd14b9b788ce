// Connected parts of the whole mesh.
//
// Within a part of the mesh elements are joined by union-find, and each component is named by its lowest element. What joins
// components of different ranks are the edges of a graph of names (name_forest.h).
#include <algorithm>

#include "adjacency/meeting_places.h"
#include "adjacency/name_forest.h"
#include "communication/numbering.h"
#include "core/elements.h"
#include "core/identity_map.h"
#include "core/linear_shapes.h"
#include "parts/checks.h"
#include "parts/localize.h"
#include "qel/gridwork/ids.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::none;
using detail::out_of_memory;

namespace {

/// The components within a part.
class own_components {
 public:
  [[nodiscard]] bool build(const mesh_part& part, const dense2D<std::uint64_t>& neighbors) {
    if (!detail::set_identity(lower_, part.element_IDs.size())) return false;
    for (unsigned e = 0; e < lower_.size(); ++e) {
      for (std::uint64_t k = 0; k < neighbors.rows(); ++k) {
        const unsigned across = neighbors(k, e) == no_ID ? none : place_in(part.element_IDs, neighbors(k, e));
        if (across != none) join(e, across);
      }
    }
    for (unsigned e = 0; e < lower_.size(); ++e) lower_[e] = lower_[lower_[e]];
    return true;
  }

  /// The lowest element of the component of an element.
  unsigned of(std::uint64_t e) const noexcept { return lower_[e]; }

 private:
  unsigned lowest(unsigned e) noexcept {
    while (lower_[e] != e) e = lower_[e] = lower_[lower_[e]];
    return e;
  }

  void join(unsigned a, unsigned b) noexcept {
    a = lowest(a), b = lowest(b);
    lower_[std::max(a, b)] = std::min(a, b);
  }

  dense1D<unsigned> lower_;
};

/// What a rank tells those who may have the element across a boundary.
struct link {
  std::uint64_t across, name;
};

/// Calls visit(rank, link) for each link that leads to no element of the part.
template <class Columns, class Visit>
void visit_links(const mesh_part& part, const dense2D<std::uint64_t>& neighbors, const own_components& own,
                 meeting_places& places, Visit visit) {
  for (std::uint64_t e = 0; e < part.connectivity.cols(); ++e) {
    const unsigned* nodes = part.connectivity.column(e);
    const detail::shape& s = Columns::of(nodes);
    for (unsigned k = 0; k < s.boundaries; ++k) {
      const std::uint64_t across = neighbors(k, e);
      if (across == no_ID || place_in(part.element_IDs, across) != none) continue;
      if (!places.look_up(detail::boundary_of<Columns>(s, nodes, k))) continue;
      for (const int rank : places) visit(rank, link{across, part.element_IDs[own.of(e)]});
    }
  }
}

/// The names of a part's components, and the edges that others' links make.
bool list_graph(const mesh_part& part, const own_components& own, const dense1D<link>& links,
                dense1D<std::uint64_t>& names, dense1D<name_forest::edge>& edges) {
  if (!names.reserve(part.element_IDs.size()) || !edges.reserve(links.size())) return false;
  bool room = true;
  for (unsigned e = 0; e < part.element_IDs.size(); ++e) {
    if (own.of(e) == e) room = room && names.push_back(part.element_IDs[e]);
  }
  for (const link& l : links) {
    const unsigned e = place_in(part.element_IDs, l.across);
    if (e != none) room = room && edges.push_back({part.element_IDs[own.of(e)], l.name});
  }
  return room;
}

/// Colours are the numbers of the roots in their order.
int number_roots(team& ranks, const id_ranges& ranges, const dense1D<std::uint64_t>& roots,
                 dense1D<std::uint64_t>& colors, std::uint64_t& parts) {
  dense1D<std::uint64_t> distinct, numbers;
  bool room = distinct.copy(roots) && colors.resize(roots.size());
  if (room) {
    std::sort(distinct.begin(), distinct.end());
    const std::uint64_t* end = std::unique(distinct.begin(), distinct.end());
    room = distinct.resize(static_cast<std::uint64_t>(end - distinct.begin()));
  }
  const auto owner = [&](std::uint64_t name) { return ranges.owner(name); };
  const int code = number_in_order(ranks, room ? 0 : out_of_memory, distinct, owner, numbers, parts);
  for (std::uint64_t i = 0; code == 0 && i < roots.size(); ++i) colors[i] = numbers[place_in(distinct, roots[i])];
  return code;
}

template <class Columns>
int color(team& ranks, const mesh_part& part, const node_sharing& sharing, const dense2D<std::uint64_t>& neighbors,
          dense1D<std::uint64_t>& colors, std::uint64_t& parts) {
  own_components own;
  meeting_places places(sharing, ranks.rank());
  outbox<link> out;
  inbox<link> in;
  dense1D<name_forest::edge> edges;
  dense1D<std::uint64_t> names, roots, root_colors;
  const auto walk = [&](auto visit) { visit_links<Columns>(part, neighbors, own, places, visit); };
  const bool ready = own.build(part, neighbors) && places.prepare() && out.fill(ranks, walk);
  int code = exchange(ranks, ready ? 0 : out_of_memory, out, in);
  if (code < 0) return code;
  const bool room = list_graph(part, own, in.items, names, edges) && colors.resize(part.element_IDs.size());
  const id_ranges ranges(ranks, part.element_IDs);
  code = name_forest(ranks, ranges).solve(room ? 0 : out_of_memory, names, edges, roots);
  if (code == 0) code = number_roots(ranks, ranges, roots, root_colors, parts);
  for (std::uint64_t e = 0; code == 0 && e < colors.size(); ++e) {
    colors[e] = root_colors[place_in(names, part.element_IDs[own.of(e)])];
  }
  return code == 0 ? ranks.agree(0) : code;
}

int find_subdomains(team& ranks, const mesh_part& part, element_type type, const node_sharing& sharing,
                    const dense2D<std::uint64_t>& neighbors, dense1D<std::uint64_t>& colors, std::uint64_t& parts) {
  part_agreement agreed(ranks, part);
  agreed.same(static_cast<std::uint64_t>(type), -3);
  int code = check_type(part, type);
  if (code == 0 && !goes_with(sharing, part.node_IDs.size(), ranks)) code = -4;
  if (code == 0 && !fits(neighbors, part, type)) code = -5;
  code = agreed.conclude(code);
  if (code < 0 || agreed.shape().rows == 0) return code;
  return detail::visit_shape(detail::resolve_type(type, agreed.shape().rows), -2, [&](auto columns) {
    return color<decltype(columns)>(ranks, part, sharing, neighbors, colors, parts);
  });
}

}  // namespace

int get_subdomains(MPI_Comm comm, const mesh_part& part, element_type type, const node_sharing& sharing,
                   const dense2D<std::uint64_t>& neighbors, dense1D<std::uint64_t>& colors, std::uint64_t& parts) {
  colors.clear();
  parts = 0;
  team ranks(comm);
  const int code = find_subdomains(ranks, part, type, sharing, neighbors, colors, parts);
  if (code < 0) colors.clear(), parts = 0;
  return code;
}

}  // namespace qel::gridwork::mpi
