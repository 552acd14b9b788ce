// A partition by a curve that fills space.
#include <algorithm>
#include <cmath>

#include "core/result.h"
#include "parts/checks.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::none;
using detail::out_of_memory;

namespace {

constexpr unsigned key_bits = 63;

struct point {
  double x[3];
};

/// The mean of an element's nodes, summed in their order.
point centroid(const mesh_part& part, std::uint64_t e) noexcept {
  point sum{};
  unsigned count = 0;
  for (std::uint64_t i = 0; i < part.connectivity.rows(); ++i) {
    const unsigned node = part.connectivity(i, e);
    if (node == none) continue;
    for (std::uint64_t a = 0; a < std::min<std::uint64_t>(3, part.coords.rows()); ++a) sum.x[a] += part.coords(a, node);
    ++count;
  }
  for (double& x : sum.x) x = count != 0 ? x / count : 0;
  return sum;
}

/// The box around all centroids, along each axis parted into equal cells.
class cells {
 public:
  cells(team& ranks, const mesh_part& part, unsigned dim) noexcept : dim_(dim), bits_(key_bits / std::max(1U, dim)) {
    double ends[6];  // lowest, and highest from above
    std::fill_n(ends, 6, HUGE_VAL);
    for (std::uint64_t e = 0; e < part.connectivity.cols(); ++e) {
      const point c = centroid(part, e);
      for (unsigned a = 0; a < dim; ++a) {
        if (!std::isfinite(c.x[a])) continue;
        ends[a] = std::min(ends[a], c.x[a]);
        ends[3 + a] = std::min(ends[3 + a], -c.x[a]);
      }
    }
    ranks.lower(ends, 6);
    for (unsigned a = 0; a < dim; ++a) {
      lowest_[a] = ends[a];
      per_length_[a] = std::ldexp(1.0, static_cast<int>(bits_)) / (-ends[3 + a] - ends[a]);
    }
  }

  /// Bits of the cell's places along the axes by turns, the highest first: Morton's order.
  std::uint64_t key(const point& p) const noexcept {
    std::uint64_t places[3] = {};
    const std::uint64_t last = (std::uint64_t{1} << bits_) - 1;
    for (unsigned a = 0; a < dim_; ++a) {
      const double place = (p.x[a] - lowest_[a]) * per_length_[a];  // NaN where all lie at one place: the first cell
      places[a] = place > 0 ? (place < static_cast<double>(last) ? static_cast<std::uint64_t>(place) : last) : 0;
    }
    std::uint64_t key = 0;
    for (unsigned bit = bits_; bit-- > 0;) {
      for (unsigned a = 0; a < dim_; ++a) key = key << 1 | (places[a] >> bit & 1U);
    }
    return key;
  }

 private:
  unsigned dim_;
  unsigned bits_;
  double lowest_[3] = {};
  double per_length_[3] = {};
};

/// The keys at which parts begin, but for the first part: the largest of which no more elements lie before than are due.
/// All of them grow bit by bit.
int find_cuts(team& ranks, const dense1D<std::uint64_t>& sorted, std::uint64_t parts, dense1D<std::uint64_t>& cuts) {
  const std::uint64_t total = ranks.number(sorted.size()).total;
  dense1D<std::uint64_t> before;
  const int code = ranks.agree(cuts.resize(parts - 1, 0) && before.resize(parts - 1) ? 0 : out_of_memory);
  if (code < 0) return code;
  for (std::uint64_t bit = std::uint64_t{1} << (key_bits - 1); bit != 0; bit >>= 1) {
    for (std::uint64_t i = 0; i < cuts.size(); ++i) {
      const auto* first = std::lower_bound(sorted.begin(), sorted.end(), cuts[i] | bit);
      before[i] = static_cast<std::uint64_t>(first - sorted.begin());
    }
    ranks.add(before.data(), static_cast<int>(before.size()));
    for (std::uint64_t i = 0; i < cuts.size(); ++i) {
      const std::uint64_t due = total / parts * (i + 1) + total % parts * (i + 1) / parts;
      if (before[i] <= due) cuts[i] |= bit;
    }
  }
  return ranks.agree(0);
}

int cut_curve(team& ranks, const mesh_part& part, int parts, dense1D<int>& targets) {
  part_agreement agreed(ranks, part);
  agreed.same(static_cast<std::uint64_t>(parts), -3);
  int code = agreed.conclude(parts > 0 ? 0 : -3);
  if (code < 0) return code;
  const cells boxes(ranks, part, std::min(3U, agreed.shape().dim));
  dense1D<std::uint64_t> keys, sorted, cuts;
  const std::uint64_t count = part.element_IDs.size();
  const bool room = keys.resize(count) && sorted.resize(count) && targets.resize(count);
  for (std::uint64_t e = 0; room && e < count; ++e) sorted[e] = keys[e] = boxes.key(centroid(part, e));
  if (room) std::sort(sorted.begin(), sorted.end());
  code = ranks.agree(room ? 0 : out_of_memory);
  if (code == 0) code = find_cuts(ranks, sorted, static_cast<std::uint64_t>(parts), cuts);
  if (code < 0) return code;
  for (std::uint64_t e = 0; e < count; ++e) {
    targets[e] = static_cast<int>(std::upper_bound(cuts.begin(), cuts.end(), keys[e]) - cuts.begin());
  }
  return 0;
}

}  // namespace

int partition_by_curve(MPI_Comm comm, const mesh_part& part, int parts, dense1D<int>& targets) {
  targets.clear();
  team ranks(comm);
  const int code = cut_curve(ranks, part, parts, targets);
  if (code < 0) targets.clear();
  return code;
}

}  // namespace qel::gridwork::mpi
