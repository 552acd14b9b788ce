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

/// The first corner of each node: nodes are numbered as they come.
[[nodiscard]] bool name_nodes(const piece& read, dense1D<std::uint64_t>& names) {
  if (!names.resize(read.coords.cols())) return false;
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
  mesh_maker(team& ranks, piece& read, const dense1D<std::uint64_t>& names, const survivors& found) noexcept
      : ranks_(ranks),
        read_(read),
        names_(names),
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

  /// Lets triangles hold survivors, moves up those that are left, and notes their nodes.
  [[nodiscard]] bool drop_degenerate() {
    dense2D<unsigned>& triangles = read_.connectivity;
    if (!used_.reset(all_)) return false;
    std::uint64_t kept = 0;
    for (std::uint64_t j = 0; j < triangles.cols(); ++j) {
      const unsigned* old = triangles.column(j);
      const unsigned a = found_.places[old[0]], b = found_.places[old[1]], c = found_.places[old[2]];
      if (a == b || b == c || c == a) continue;
      unsigned* nodes = triangles.column(kept++);
      nodes[0] = a, nodes[1] = b, nodes[2] = c;
      for (const unsigned node : {a, b, c}) used_.insert(node);
    }
    return triangles.resize(3, kept);
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
    const bool room = number_survivors(in.items) && list_numbers(in.items, given);
    return reply(ranks_, room ? 0 : out_of_memory, in, given, out, received_);
  }

  /// Numbers the nodes of this rank that triangles of any rank use.
  [[nodiscard]] bool number_survivors(const dense1D<std::uint64_t>& reported) {
    index_flags asked;
    const bool room = asked.reset(own_) && numbers_.resize(own_);
    for (std::uint64_t i = 0; room && i < reported.size(); ++i) asked.insert(place_in(names_, reported[i]));
    unsigned count = 0;
    for (unsigned k = 0; room && k < own_; ++k) {
      numbers_[k] = count;
      count += used_.contains(k) || asked.contains(k) ? 1 : 0;
    }
    numbered_before_ = ranks_.number(count).before;
    return room;
  }

  [[nodiscard]] bool list_numbers(const dense1D<std::uint64_t>& names, dense1D<numbered_node>& list) const {
    if (!list.resize(names.size())) return false;
    for (std::uint64_t i = 0; i < names.size(); ++i) {
      const unsigned k = place_in(names_, names[i]);
      list[i].id = numbered_before_ + numbers_[k];
      std::copy_n(read_.coords.column(k), 3, list[i].p);
    }
    return true;
  }

  [[nodiscard]] bool fill(mesh_part& part) {
    const std::uint64_t triangles = read_.connectivity.cols();
    const std::uint64_t first_triangle = ranks_.number(triangles).before;
    dense1D<const numbered_node*> answers;
    dense1D<unsigned> places;
    if (!number_from(first_triangle, triangles, part.element_IDs) || !find_answers(answers)) return false;
    const auto id = [&](unsigned k) { return k < own_ ? numbered_before_ + numbers_[k] : answers[k - own_]->id; };
    if (!order_nodes(own_, all_, used_, id, places, part.node_IDs) || !place_nodes(places, answers)) return false;
    change_indices(read_.connectivity, places);
    if (!read_.coords.resize(3, part.node_IDs.size())) return false;
    trim(read_.coords, read_.coords.size() / 8);
    trim(read_.connectivity, read_.connectivity.size() / 8);
    part.coords = std::move(read_.coords);
    part.connectivity = std::move(read_.connectivity);
    return true;
  }

  /// Those of survivors that are used: they come in the order of names, as these grow with the ranks.
  [[nodiscard]] bool find_answers(dense1D<const numbered_node*>& answers) const {
    if (!answers.resize(all_ - own_, nullptr)) return false;
    const numbered_node* next = received_.begin();
    for (unsigned k = own_; k < all_; ++k) {
      if (used_.contains(k)) answers[k - own_] = next++;
    }
    return true;
  }

  /// Moves nodes of this rank to their places, and puts others between. Places grow with nodes, so that none is overwritten
  /// before it is moved.
  [[nodiscard]] bool place_nodes(const dense1D<unsigned>& places, const dense1D<const numbered_node*>& answers) {
    dense2D<double>& coords = read_.coords;
    if (!coords.resize(3, all_)) return false;
    const auto put = [&](const double* p, unsigned place) { std::copy_n(p, 3, coords.column(place)); };
    for (unsigned k = 0; k < own_; ++k) {
      if (places[k] < k) put(coords.column(k), places[k]);
    }
    for (unsigned k = own_; k-- > 0;) {
      if (places[k] > k && places[k] != none) put(coords.column(k), places[k]);
    }
    for (unsigned k = own_; k < all_; ++k) {
      if (places[k] != none) put(answers[k - own_]->p, places[k]);
    }
    return true;
  }

  team& ranks_;
  piece& read_;
  const dense1D<std::uint64_t>& names_;
  const survivors& found_;
  unsigned own_;                       // survivors are nodes of this rank,
  unsigned all_;                       // or behind them others
  index_flags used_;                   // by triangles of this rank
  dense1D<unsigned> numbers_;          // of own nodes that any rank's triangles use,
  std::uint64_t numbered_before_ = 0;  // counted from here
  dense1D<numbered_node> received_;    // others that are used
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
