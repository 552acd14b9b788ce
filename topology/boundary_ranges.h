// Ranges of boundaries, such that boundaries with the same nodes lie in one range and few in each.
#ifndef QEL_GRIDWORK_TOPOLOGY_BOUNDARY_RANGES_H
#define QEL_GRIDWORK_TOPOLOGY_BOUNDARY_RANGES_H

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "core/limits.h"
#include "core/position_table.h"
#include "core/result.h"
#include "topology/boundary_slots.h"

namespace qel::gridwork::detail {

/// Calls visit(boundary, k) for the boundaries of an element.
template <class Columns, class Visit>
void visit_boundaries(const unsigned* nodes, Visit visit) {
  const shape& s = Columns::of(nodes);
  for (unsigned k = 0; k < s.boundaries; ++k) visit(boundary_of<Columns>(s, nodes, k), k);
}

/// Parts boundaries into ranges of equal width of their smallest node. Most boundaries of an element stay together.
///
/// Where one range takes far more than others, the sum of the nodes stands for the smallest one (of a fan, one node is the
/// smallest of very many boundaries); and where it does so still, as with nodes numbered in clusters that lie far apart,
/// the sums are scattered.
template <class Columns>
class boundary_ranges {
 public:
  explicit boundary_ranges(std::uint64_t ranges) noexcept : last_(ranges - 1) {}

  /// Some elements tell enough of all.
  [[nodiscard]] bool prepare(const dense2D<unsigned>& connectivity) {
    if (last_ == 0) return true;
    dense1D<std::uint64_t> places;
    if (!places.reserve(std::min(connectivity.cols(), limits::range_sample) * Columns::largest.boundaries))
      return false;
    for (const measure by : {measure::smallest, measure::sum, measure::scattered_sum}) {
      by_ = by;
      sample(connectivity, places);
      set_bounds(places);
      if (!is_lopsided(places)) break;
    }
    return true;
  }

  std::uint64_t operator()(const boundary_nodes& boundary) const noexcept { return range_of(sort_value(boundary)); }

 private:
  enum class measure { smallest, sum, scattered_sum };

  std::uint64_t sort_value(const boundary_nodes& boundary) const noexcept {
    const unsigned* end = boundary.nodes + boundary.size;
    if (by_ == measure::smallest) {
      return std::accumulate(boundary.nodes, end, none, [](unsigned a, unsigned b) { return std::min(a, b); });
    }
    const auto sum = std::accumulate(boundary.nodes, end, std::uint64_t{0});
    return by_ == measure::sum ? sum : sum * 0x9e3779b97f4a7c15U >> 32;
  }

  /// What lies outside of the bounds, on either side, belongs to the last range.
  std::uint64_t range_of(std::uint64_t place) const noexcept { return std::min((place - first_) >> shift_, last_); }

  /// One element of each few, but not always the same of them: meshes repeat themselves.
  void sample(const dense2D<unsigned>& connectivity, dense1D<std::uint64_t>& places) const {
    const std::uint64_t step = connectivity.cols() / limits::range_sample + 1;
    places.clear();
    for (std::uint64_t e = 0; e + step <= connectivity.cols(); e += step) {
      visit_boundaries<Columns>(connectivity.column(e + mix_bits(e) % step),
                                [&](const boundary_nodes& boundary, unsigned) {
                                  (void)places.push_back(sort_value(boundary));  // there is room
                                });
    }
  }

  static std::uint64_t quantile(dense1D<std::uint64_t>& places, std::uint64_t rank) noexcept {
    std::nth_element(places.begin(), places.begin() + rank, places.end());
    return places[rank];
  }

  /// The bounds hold what lies between two quantiles and a little more: no few places far from all others widen them.
  void set_bounds(dense1D<std::uint64_t>& places) noexcept {
    const auto [least, largest] = std::minmax_element(places.begin(), places.end());
    const std::uint64_t all[] = {*least, *largest};
    const std::uint64_t tail = places.size() / limits::places_per_outlier, low = quantile(places, tail),
                        high = quantile(places, places.size() - 1 - tail), margin = (high - low) / limits::range_margin;
    first_ = std::max(all[0], low - std::min(low, margin));
    const std::uint64_t last_place = std::min(all[1], high + margin);
    for (shift_ = 0; (last_place - first_) >> shift_ > last_;) ++shift_;
  }

  bool is_lopsided(const dense1D<std::uint64_t>& places) const noexcept {
    unsigned counts[limits::most_ranges] = {};
    for (const std::uint64_t place : places) ++counts[range_of(place)];
    return *std::max_element(counts, counts + last_ + 1) > limits::lopsided * (places.size() / (last_ + 1) + 1);
  }

  std::uint64_t first_ = 0, last_, shift_ = 0;
  measure by_ = measure::smallest;
};

}  // namespace qel::gridwork::detail

#endif
