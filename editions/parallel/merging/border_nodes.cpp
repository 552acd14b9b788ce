#include "merging/border_nodes.h"

#include <algorithm>

#include "core/limits.h"
#include "search/geometry.h"
#include "search/merging/coincident_nodes.h"

namespace qel::gridwork::detail::parallel {
namespace {

template <unsigned Dim>
bool meet(const bounding_box<Dim>& one, const bounding_box<Dim>& other) noexcept {
  bool do_meet = true;
  for (unsigned a = 0; a < Dim; ++a) do_meet &= one.lower[a] <= other.upper[a] && other.lower[a] <= one.upper[a];
  return do_meet;
}

template <unsigned Dim>
bounding_box<Dim> widened(const bounding_box<Dim>& box, double by) noexcept {
  bounding_box<Dim> wider;
  for (unsigned a = 0; a < Dim; ++a) wider.lower[a] = box.lower[a] - by, wider.upper[a] = box.upper[a] + by;
  return wider;
}

/// What two near nodes are apart at most along an axis, in numbers up to the largest one, with some ulps for the rounding of
/// boxes around nodes and of sums with this.
double reach_of(double tol, double largest) noexcept {
  constexpr double rounding = 1e-15;
  return tol > 0 ? tol + rounding * (largest + tol) : 0;
}

/// A box around these nodes, those that are finite. Numbers that are none change no box, so that only infinite ones, which
/// make the box infinite, have to be looked for.
template <unsigned Dim>
bounding_box<Dim> box_around(const dense2D<double>& coords, std::uint64_t first, std::uint64_t last) noexcept {
  bounding_box<Dim> box, finite;
  for (std::uint64_t j = first; j < last; ++j) box.include(coords.column(j));
  if (is_finite<Dim>(box.lower) && is_finite<Dim>(box.upper)) return box;
  for (std::uint64_t j = first; j < last; ++j) {
    if (is_finite<Dim>(coords.column(j))) finite.include(coords.column(j));
  }
  return finite;
}

}  // namespace

/// Boxes around this rank's nodes. False when memory ran out.
template <unsigned Dim>
bool border_nodes<Dim>::find_boxes(const dense2D<double>& coords) {
  for (std::uint64_t first = 0; first < coords.cols(); first += limits::nodes_per_box) {
    const auto box = box_around<Dim>(coords, first, std::min(coords.cols(), first + limits::nodes_per_box));
    if (!boxes_.push_back(box)) return false;
    if (box.lower[0] > box.upper[0]) continue;  // none is finite
    own_box_.include(box.lower);
    own_box_.include(box.upper);
  }
  return true;
}

/// The boxes of other ranks, those that this one's nodes come near to.
template <unsigned Dim>
int border_nodes<Dim>::find_close_ranks(team& ranks, int code, double tol) {
  const auto size = static_cast<std::uint64_t>(ranks.size());
  dense1D<bounding_box<Dim>> boxes;
  if (code == 0 && !(boxes.resize(size) && close_ranks_.reserve(size))) code = out_of_memory;
  code = ranks.agree(code);
  if (code < 0) return code;
  static_assert(sizeof own_box_ == 2 * Dim * sizeof(double));
  ranks.gather(reinterpret_cast<const double*>(&own_box_), 2 * Dim, reinterpret_cast<double*>(boxes.data()));
  double largest = 0;
  for (const bounding_box<Dim>& box : boxes) {
    for (unsigned a = 0; a < Dim && box.lower[0] <= box.upper[0]; ++a) largest = std::max(largest, box.largest(a));
  }
  const double reach = reach_of(tol, largest);
  for (std::uint64_t r = 0; r < size; ++r) {
    const close_rank other{{widened(boxes[r], 3 * reach), widened(boxes[r], reach), boxes[r]}};
    const bool is_other = r != static_cast<std::uint64_t>(ranks.rank());
    if (is_other && meet(other.boxes[0], own_box_) && !close_ranks_.push_back(other)) return out_of_memory;
  }
  return 0;
}

/// The innermost zone that a box, or a node, reaches.
template <unsigned Dim>
zone border_nodes<Dim>::zone_of(const bounding_box<Dim>& box) const noexcept {
  unsigned boxes = 0;
  for (const close_rank& other : close_ranks_) {
    while (boxes < 3 && meet(other.boxes[boxes], box)) ++boxes;
  }
  return static_cast<zone>(boxes);
}

template <unsigned Dim>
bool border_nodes<Dim>::list_nodes(const dense2D<double>& coords) {
  for (std::uint64_t b = 0; b < boxes_.size(); ++b) {
    if (zone_of(boxes_[b]) == zone::apart) continue;
    const std::uint64_t first = b * limits::nodes_per_box;
    const std::uint64_t last = std::min(coords.cols(), first + limits::nodes_per_box);
    for (std::uint64_t j = first; j < last; ++j) {
      if (!is_finite<Dim>(coords.column(j))) continue;
      bounding_box<Dim> place;
      place.include(coords.column(j));
      const zone where = zone_of(place);
      if (where == zone::apart) continue;
      if (!nodes_.push_back(static_cast<unsigned>(j)) || !zones_.push_back(where)) return false;
    }
  }
  return true;
}

template <unsigned Dim>
bool border_nodes<Dim>::part_followers(const dense2D<double>& coords, bool keep_second) {
  ranked_positions<Dim> positions;
  coincident_nodes<Dim> groups;
  dense1D<unsigned> followed;  // by the first one at a position
  if (!positions.gather(coords, {nodes_.data(), nodes_.size()}) || !groups.build(positions)) return false;
  if (groups.leader_count() == nodes_.size()) return true;
  if (!followed.resize(nodes_.size(), none)) return false;
  std::uint64_t kept = 0;
  for (std::uint64_t k = 0; k < nodes_.size(); ++k) {
    const unsigned node = nodes_[k], leader = groups.leaders()[k];
    const bool is_first = leader == k;
    if (is_first || (keep_second && followed[leader] == none)) {
      if (!is_first || !keep_second) followed[leader] = node;
      nodes_[kept] = node;
      zones_[kept++] = zones_[k];
    } else if (!followers_.push_back({node, followed[leader]})) {
      return false;
    }
  }
  return nodes_.resize(kept) && zones_.resize(kept);
}

template <unsigned Dim>
int border_nodes<Dim>::find(team& ranks, int code, const dense2D<double>& coords, double tol) {
  if (code == 0 && !find_boxes(coords)) code = out_of_memory;
  code = find_close_ranks(ranks, code, tol);
  return code < 0 || (list_nodes(coords) && part_followers(coords, tol > 0)) ? code : out_of_memory;
}

template class border_nodes<2>;
template class border_nodes<3>;

}  // namespace qel::gridwork::detail::parallel
