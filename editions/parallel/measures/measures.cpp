// Qualities and extents of the whole mesh. Sums are of integers, so that they do not depend on the order of summing.
#include <cmath>

#include "communication/team.h"
#include "core/result.h"
#include "parts/checks.h"
#include "qel/gridwork/quality.h"
#include "qel/histogram.h"

namespace qel::gridwork::mpi {

using namespace detail::parallel;
using detail::out_of_memory;

namespace {

constexpr int quality_bits = 52;

/// Qualities of a part's elements; what is wrong anywhere.
int measure(team& ranks, part_agreement& agreed, const mesh_part& part, element_type type, dense1D<double>& qualities) {
  const int code = agreed.conclude(0);
  if (code < 0 || agreed.shape().rows == 0) return code;
  if (part.connectivity.empty()) return ranks.agree(0);
  return ranks.agree(shape_qualities(part.coords, part.connectivity, type, qualities));
}

/// An exact sum of qualities in steps of 2^-52: three digits of 26 bits, the highest one larger.
class exact_sum {
 public:
  void add(double quality) noexcept {
    const auto steps = static_cast<std::int64_t>(std::nearbyint(std::ldexp(quality, quality_bits)));
    digits_[0] += steps & lowest_bits;
    digits_[1] += steps >> digit_bits;
    ++count_;
  }

  /// Collective. Digits are carried before they are summed, so that none overflows on any number of ranks, and after it,
  /// as those that were carried depend on who has which elements.
  double mean(team& ranks) noexcept {
    carry();
    ranks.add(digits_, 3);
    ranks.add(&count_, 1);
    carry();
    if (count_ == 0) return 0;
    double sum = 0;
    for (int k = 3; k-- > 0;) sum = std::ldexp(sum, digit_bits) + static_cast<double>(digits_[k]);
    return std::ldexp(sum / static_cast<double>(count_), -quality_bits);
  }

 private:
  static constexpr int digit_bits = 26;
  static constexpr std::int64_t lowest_bits = (std::int64_t{1} << digit_bits) - 1;

  void carry() noexcept {
    for (int k = 0; k < 2; ++k) {
      digits_[k + 1] += digits_[k] >> digit_bits;
      digits_[k] &= lowest_bits;
    }
  }

  std::int64_t digits_[3] = {};  // the lowest first
  std::int64_t count_ = 0;
};

}  // namespace

int min_quality(MPI_Comm comm, const mesh_part& part, element_type type, double& qmin, std::uint64_t& element) {
  qmin = 1;
  element = ~std::uint64_t{0};
  team ranks(comm);
  part_agreement agreed(ranks, part);
  agreed.same(static_cast<std::uint64_t>(type), -3);
  dense1D<double> qualities;
  const int code = measure(ranks, agreed, part, type, qualities);
  if (code < 0) return code;
  double least = 1;
  for (const double q : qualities) least = q < least ? q : least;
  ranks.lower(&least, 1);
  std::uint64_t first = ~std::uint64_t{0};
  for (std::uint64_t e = qualities.size(); least < 1 && e-- > 0;) {
    if (qualities[e] == least) first = part.element_IDs[e];
  }
  ranks.lower(&first, 1);
  qmin = least;
  element = first;
  return ranks.agree(0);
}

int quality_histogram(MPI_Comm comm, const mesh_part& part, element_type type, double lower, double upper,
                      dense1D<std::uint64_t>& bins, double& mean) {
  mean = 0;
  team ranks(comm);
  part_agreement agreed(ranks, part);
  agreed.same(static_cast<std::uint64_t>(type), -3);
  agreed.same_number(lower, -4);
  agreed.same_number(upper, -5);
  agreed.same(bins.size(), -6);
  misc::histogram counts(lower, upper, static_cast<unsigned>(bins.size()));
  dense1D<double> qualities;
  int code = measure(ranks, agreed, part, type, qualities);
  if (code == 0) code = ranks.agree(counts.bins() == bins.size() ? 0 : lower < upper ? out_of_memory : -5);
  if (code < 0) return code;
  exact_sum sum;
  for (const double q : qualities) counts.process(q), sum.add(q);
  for (unsigned k = 0; k < counts.bins(); ++k) bins[k] = counts.bin(k);
  ranks.add(bins.data(), static_cast<int>(bins.size()));
  mean = sum.mean(ranks);
  return ranks.agree(0);
}

int bounding_box(MPI_Comm comm, const mesh_part& part, vector_fixed<double, 3>& Pmin, vector_fixed<double, 3>& Pmax) {
  team ranks(comm);
  part_agreement agreed(ranks, part);
  const int code = agreed.conclude(0);
  double ends[6];  // the lowest, and the highest from above
  std::fill_n(ends, 6, HUGE_VAL);
  for (std::uint64_t i = 0; code == 0 && i < part.coords.cols(); ++i) {
    for (unsigned a = 0; a < 3; ++a) {
      const double x = a < part.coords.rows() ? part.coords(a, i) : 0;
      ends[a] = x < ends[a] ? x : ends[a];
      ends[3 + a] = -x < ends[3 + a] ? -x : ends[3 + a];
    }
  }
  if (code == 0) ranks.lower(ends, 6);
  for (unsigned a = 0; a < 3; ++a) Pmin[a] = ends[a], Pmax[a] = -ends[3 + a];
  return code < 0 ? code : ranks.agree(0);
}

}  // namespace qel::gridwork::mpi
