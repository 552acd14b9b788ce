// From merged corners in pieces of a file to parts of a mesh.
//
// A node is named by its first corner in the file until it gets its number; so the order of names is that of the file, and
// a name tells which rank has read it.
#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

#include "communication/exchange.h"
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

/// Three nodes a triangle, as they came.
int keep_raw(team& ranks, piece& read, mesh_part& part) {
  const bool room = read.triangles.hand_out_raw() &&
                    number_from(3 * read.first_triangle, read.coords.cols(), part.node_IDs) &&
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
  mesh_maker(team& ranks, piece& read, const dense1D<std::uint64_t>& names,
             const dense1D<std::uint64_t>& survivors) noexcept
      : ranks_(ranks), read_(read), names_(names), survivors_(survivors) {}

  /// Collective.
  int make(mesh_part& part) {
    int code = drop_degenerate() && place_survivors() ? 0 : out_of_memory;
    code = report_used(code);
    return code < 0 ? code : ranks_.agree(fill(part) ? 0 : out_of_memory);
  }

 private:
  struct numbered_node {
    std::uint64_t id;
    double p[3];
  };

  /// Moves up the triangles that are left, and notes the nodes of them.
  [[nodiscard]] bool drop_degenerate() {
    dense2D<unsigned>& triangles = read_.connectivity;
    if (!used_.reset(names_.size())) return false;
    std::uint64_t kept = 0;
    for (std::uint64_t j = 0; j < triangles.cols(); ++j) {
      const unsigned* n = triangles.column(j);
      const std::uint64_t a = survivors_[n[0]], b = survivors_[n[1]], c = survivors_[n[2]];
      if (a == b || b == c || c == a) continue;
      for (unsigned k = 0; k < 3; ++k) used_.insert(n[k]);
      if (kept != j) std::copy_n(n, 3, triangles.column(kept));
      ++kept;
    }
    return triangles.resize(3, kept);
  }

  /// Finds the survivors of nodes that are used: among the nodes of this rank, or in a list of others.
  [[nodiscard]] bool place_survivors() {
    const auto count = static_cast<unsigned>(names_.size());
    if (!places_.resize(count, none) || !survive_.resize(count, 0)) return false;
    for (unsigned i = 0; i < count; ++i) {
      if (!used_.contains(i)) continue;
      places_[i] = survivors_[i] == names_[i] ? i : find(survivors_[i]);
      if (places_[i] != none)
        survive_[places_[i]] = 1;
      else if (!others_.push_back(survivors_[i]))
        return false;
    }
    std::sort(others_.begin(), others_.end());
    const auto distinct = std::unique(others_.begin(), others_.end()) - others_.begin();
    return others_.resize(static_cast<std::uint64_t>(distinct));
  }

  /// The node of this name; `none` when another rank has it.
  unsigned find(std::uint64_t name) const noexcept {
    const std::uint64_t* found = std::lower_bound(names_.begin(), names_.end(), name);
    return found != names_.end() && *found == name ? static_cast<unsigned>(found - names_.begin()) : none;
  }

  /// Survivors of other ranks are reported to those, and get their numbers there.
  int report_used(int code) {
    dense1D<std::uint64_t> firsts;  // names of each rank's first corner
    if (code == 0 && !firsts.resize(static_cast<std::uint64_t>(ranks_.size()))) code = out_of_memory;
    code = ranks_.agree(code);
    if (code < 0) return code;
    ranks_.gather(3 * read_.first_triangle, firsts.data());
    const auto walk = [&](auto visit) {
      for (const std::uint64_t name : others_) {
        visit(static_cast<int>(std::upper_bound(firsts.begin(), firsts.end(), name) - firsts.begin()) - 1, name);
      }
    };
    outbox<std::uint64_t> out;
    inbox<std::uint64_t> in;
    code = exchange(ranks_, out.fill(ranks_, walk) ? 0 : out_of_memory, out, in);
    if (code < 0) return code;
    for (const std::uint64_t name : in.items) survive_[find(name)] = 1;
    dense1D<numbered_node> given;
    const bool room = number_survivors() && list_numbers(in.items, given);
    return reply(ranks_, room ? 0 : out_of_memory, in, given, out, received_);
  }

  [[nodiscard]] bool number_survivors() {
    const auto count = static_cast<std::uint64_t>(std::count(survive_.begin(), survive_.end(), 1));
    std::uint64_t next = ranks_.number(count).before;
    if (!numbers_.resize(survive_.size(), no_ID)) return false;
    for (std::uint64_t i = 0; i < survive_.size(); ++i) {
      if (survive_[i] != 0) numbers_[i] = next++;
    }
    return true;
  }

  [[nodiscard]] bool list_numbers(const dense1D<std::uint64_t>& names, dense1D<numbered_node>& list) const {
    if (!list.resize(names.size())) return false;
    for (std::uint64_t k = 0; k < names.size(); ++k) {
      const unsigned i = find(names[k]);
      list[k].id = numbers_[i];
      std::copy_n(read_.coords.column(i), 3, list[k].p);
    }
    return true;
  }

  /// What is known of the survivor of a node; answers come in the order of `others_`, as names grow with the ranks.
  const numbered_node& other(std::uint64_t i) const noexcept {
    return received_[static_cast<std::uint64_t>(std::lower_bound(others_.begin(), others_.end(), survivors_[i]) -
                                                others_.begin())];
  }

  [[nodiscard]] bool fill(mesh_part& part) {
    const std::uint64_t triangles = read_.connectivity.cols();
    const std::uint64_t first_triangle = ranks_.number(triangles).before;
    dense1D<std::uint64_t> ids;
    if (!ids.resize(names_.size(), no_ID)) return false;
    for (unsigned i = 0; i < ids.size(); ++i) {
      if (used_.contains(i)) ids[i] = places_[i] != none ? numbers_[places_[i]] : other(i).id;
    }
    const auto position = [this](unsigned i) {
      return places_[i] != none ? read_.coords.column(places_[i]) : other(i).p;
    };
    part.connectivity = std::move(read_.connectivity);
    return number_from(first_triangle, triangles, part.element_IDs) && localize(ids, position, 3, part);
  }

  team& ranks_;
  piece& read_;
  const dense1D<std::uint64_t>& names_;
  const dense1D<std::uint64_t>& survivors_;
  index_flags used_;
  dense1D<unsigned> places_;        // of survivors, among the nodes here
  dense1D<unsigned char> survive_;  // nodes that triangles of any rank use
  dense1D<std::uint64_t> others_;   // survivors that other ranks have, by name
  dense1D<numbered_node> received_;
  dense1D<std::uint64_t> numbers_;
};

}  // namespace

int join_pieces(team& ranks, piece& read, mesh_part& part) {
  const double height = smallest_height(ranks, read.triangles.least_squared_height());
  if (height == 0) return keep_raw(ranks, read, part);
  dense1D<std::uint64_t> names;
  survivors found;
  const bool room = read.triangles.hand_out_blocks() && name_nodes(read, names);
  const node_set nodes{3, read.coords, names, 3 * io::triangle_soup::block_size};
  const double tol = 0.05 * std::sqrt(height);
  int code = room ? 0 : out_of_memory;
  code = std::isinf(tol) ? find_survivors_anywhere(ranks, code, nodes, found.ids)
                         : find_survivors(ranks, code, nodes, tol, false, found);
  return code < 0 ? code : mesh_maker(ranks, read, names, found.ids).make(part);
}

}  // namespace qel::gridwork::detail::parallel
