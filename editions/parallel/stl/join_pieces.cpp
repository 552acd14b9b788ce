// From merged corners in pieces of a file to parts of a mesh.
//
// A node is named by its first corner in the file until it gets its number; so the order of names is that of the file, and
// a name tells which rank has read it.
#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

#include "communication/exchange.h"
#include "core/growth.h"
#include "core/index_flags.h"
#include "core/limits.h"
#include "merging/survivors.h"
#include "parts/localize.h"
#include "stl/piece.h"

namespace qel::gridwork::detail::parallel {
namespace {

using mpi::mesh_part;

/// The smallest positive squared height of all ranks; 0 if there is none. Positive numbers are in the order of their bits.
double smallest_height(team& ranks, double own) {
  std::uint64_t bits = own > 0 ? std::bit_cast<std::uint64_t>(own) : ~std::uint64_t{0};
  ranks.lower(&bits, 1);
  return bits == ~std::uint64_t{0} ? 0 : std::bit_cast<double>(bits);
}

[[nodiscard]] bool number_from(std::uint64_t first, std::uint64_t count, dense1D<std::uint64_t>& ids) {
  if (!ids.resize(count)) return false;
  std::iota(ids.begin(), ids.end(), first);
  return true;
}

/// Nodes and triangles are those of the part, three nodes for each triangle before them, unless memory ran out.
int take_as_is(team& ranks, bool room, piece& read, mesh_part& part) {
  room = room && number_from(3 * read.first_triangle, read.coords.cols(), part.node_IDs) &&
         number_from(read.first_triangle, read.connectivity.cols(), part.element_IDs);
  part.coords = read.coords;
  part.connectivity = read.connectivity;
  return ranks.agree(room ? 0 : out_of_memory);
}

/// The first corner of each node: nodes are numbered as they come. There is room for some nodes of other ranks, too.
[[nodiscard]] bool name_nodes(const piece& read, dense1D<std::uint64_t>& names) {
  const std::uint64_t count = read.coords.cols();
  if (!names.reserve(count + count / limits::nodes_per_guest) || !names.resize(count)) return false;
  std::uint64_t next = 0;
  const unsigned* corners = read.connectivity.data();
  for (std::uint64_t c = 0; c < read.connectivity.size(); ++c) {
    if (corners[c] == next) names[next++] = 3 * read.first_triangle + c;
  }
  return true;
}

/// The parts of the mesh, once the survivors of all nodes are known.
class mesh_maker {
 public:
  mesh_maker(team& ranks, piece& read, dense1D<std::uint64_t>& names, const survivors& found) noexcept
      : ranks_(ranks),
        read_(read),
        ids_(names),
        found_(found),
        own_(static_cast<unsigned>(names.size())),
        all_(own_ + static_cast<unsigned>(found.others.size())) {}

  /// Collective.
  int make(mesh_part& part) {
    const int code = report_used(drop_degenerate() ? 0 : out_of_memory);
    return code < 0 ? code : ranks_.agree(fill(part) ? 0 : out_of_memory);
  }

 private:
  struct numbered_node {
    std::uint64_t id;
    double p[3];
  };

  [[nodiscard]] bool drop_degenerate() {
    if (!used_.reset(all_)) return false;
    return read_.connectivity.resize(3, io::renumber_triangles(read_.connectivity, found_.places, used_));
  }

  /// Survivors of other ranks are reported to those, and get their numbers there.
  int report_used(int code) {
    dense1D<std::uint64_t> firsts;  // names of each rank's first corner
    if (code == 0 && !firsts.resize(static_cast<std::uint64_t>(ranks_.size()))) code = out_of_memory;
    code = ranks_.agree(code);
    if (code < 0) return code;
    ranks_.gather(3 * read_.first_triangle, firsts.data());
    const auto walk = [&](auto visit) {
      for (unsigned k = own_; k < all_; ++k) {
        const std::uint64_t name = found_.others[k - own_];
        const auto* reader = std::upper_bound(firsts.begin(), firsts.end(), name) - 1;
        if (used_.contains(k)) visit(static_cast<int>(reader - firsts.begin()), name);
      }
    };
    outbox<std::uint64_t> out;
    inbox<std::uint64_t> in;
    code = exchange(ranks_, out.fill(ranks_, walk) ? 0 : out_of_memory, out, in);
    if (code < 0) return code;
    dense1D<numbered_node> given;
    const bool room = number_survivors(in.items, given);
    return reply(ranks_, room ? 0 : out_of_memory, in, given, out, received_);
  }

  /// Numbers the nodes of this rank that triangles of any rank use, and lists those that are reported by their names. Each
  /// other node gets the number of the next one.
  [[nodiscard]] bool number_survivors(const dense1D<std::uint64_t>& reported, dense1D<numbered_node>& list) {
    index_flags kept;
    dense1D<unsigned> nodes;
    const bool room = kept.copy(used_) && nodes.resize(reported.size()) && list.resize(reported.size());
    for (std::uint64_t i = 0; room && i < reported.size(); ++i) {
      nodes[i] = place_in(ids_, reported[i]);
      kept.insert(nodes[i]);
    }
    std::uint64_t count = 0;
    for (unsigned k = 0; room && k < own_; ++k) count += kept.contains(k) ? 1 : 0;
    std::uint64_t next = ranks_.number(count).before;
    for (unsigned k = 0; room && k < own_; ++k) {
      ids_[k] = next;
      next += kept.contains(k) ? 1 : 0;
    }
    for (std::uint64_t i = 0; room && i < list.size(); ++i) {
      list[i].id = ids_[nodes[i]];
      std::copy_n(read_.coords.column(nodes[i]), 3, list[i].p);
    }
    return room;
  }

  [[nodiscard]] bool fill(mesh_part& part) {
    const std::uint64_t triangles = read_.connectivity.cols();
    const std::uint64_t first_triangle = ranks_.number(triangles).before;
    dense1D<std::uint64_t> others;
    dense1D<unsigned> places;
    unsigned count = 0;
    if (!number_from(first_triangle, triangles, part.element_IDs) || !number_others(others)) return false;
    if (!order_nodes(ids_, others, used_, places, count) || !place_nodes(places)) return false;
    change_indices(read_.connectivity, places);
    if (!read_.coords.resize(3, count) || !ids_.resize(count)) return false;
    trim(read_.coords, read_.coords.size() / 8);
    trim(read_.connectivity, read_.connectivity.size() / 8);
    trim(ids_, ids_.size() / 8);
    part.node_IDs = std::move(ids_);
    part.coords = std::move(read_.coords);
    part.connectivity = std::move(read_.connectivity);
    return true;
  }

  /// The numbers of survivors of other ranks. Those that are used come in the order of names, as these grow with the ranks;
  /// each other one gets the number before it.
  [[nodiscard]] bool number_others(dense1D<std::uint64_t>& ids) const {
    if (!ids.resize(all_ - own_)) return false;
    std::uint64_t id = 0;
    const numbered_node* next = received_.begin();
    for (unsigned k = own_; k < all_; ++k) {
      if (used_.contains(k)) id = (next++)->id;
      ids[k - own_] = id;
    }
    return true;
  }

  /// Moves nodes of this rank to their places, and puts others between. Places grow with nodes, so that none is overwritten
  /// before it is moved.
  [[nodiscard]] bool place_nodes(const dense1D<unsigned>& places) {
    dense2D<double>& coords = read_.coords;
    if (!coords.resize(3, all_) || !ids_.resize(all_)) return false;
    const auto put = [&](std::uint64_t id, const double* p, unsigned place) {
      ids_[place] = id;
      std::copy_n(p, 3, coords.column(place));
    };
    for (unsigned k = 0; k < own_; ++k) {
      if (places[k] < k) put(ids_[k], coords.column(k), places[k]);
    }
    for (unsigned k = own_; k-- > 0;) {
      if (places[k] > k && places[k] != none) put(ids_[k], coords.column(k), places[k]);
    }
    const numbered_node* next = received_.begin();
    for (unsigned k = own_; k < all_; ++k) {
      if (places[k] != none) put(next->id, next->p, places[k]), ++next;
    }
    return true;
  }

  team& ranks_;
  piece& read_;
  dense1D<std::uint64_t>& ids_;  // of this rank's nodes: names, then numbers
  const survivors& found_;
  unsigned own_;                     // survivors are nodes of this rank,
  unsigned all_;                     // or behind them others
  index_flags used_;                 // by triangles of this rank
  dense1D<numbered_node> received_;  // others that are used
};

}  // namespace

int join_pieces(team& ranks, piece& read, mesh_part& part) {
  if (ranks.size() == 1) return take_as_is(ranks, read.triangles.finish() == 0, read, part);
  const double height = smallest_height(ranks, read.triangles.least_squared_height());
  if (height == 0) return take_as_is(ranks, read.triangles.hand_out_raw(), read, part);
  dense1D<std::uint64_t> names;
  survivors found;
  const bool room = read.triangles.hand_out_blocks() && name_nodes(read, names);
  const node_set nodes{3, read.coords, names, 3 * io::triangle_soup::block_size};
  const double tol = 0.05 * std::sqrt(height);
  int code = room ? 0 : out_of_memory;
  code = std::isinf(tol) ? find_survivors_anywhere(ranks, code, nodes, found)
                         : find_survivors(ranks, code, nodes, tol, false, found);
  return code < 0 ? code : mesh_maker(ranks, read, names, found).make(part);
}

}  // namespace qel::gridwork::detail::parallel
