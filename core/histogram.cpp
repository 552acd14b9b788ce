#include "qel/histogram.h"

#include <algorithm>
#include <cmath>

namespace qel::misc {

histogram::histogram(double lower, double upper, unsigned bins) : lower_(lower), upper_(upper) {
  // An infinite width would leave no sample a place.
  if (lower < upper && std::isfinite(upper - lower)) counts_ = dense1D<std::uint64_t>(bins);
}

histogram::histogram(const histogram& other) : lower_(other.lower_), upper_(other.upper_) { *this = other; }

histogram& histogram::operator=(const histogram& other) {
  if (this == &other) return *this;
  dense1D<std::uint64_t> counts;
  if (!counts.copy(other.counts_)) counts.clear();
  lower_ = other.lower_;
  upper_ = other.upper_;
  below_ = other.below_;
  inside_ = other.inside_;
  above_ = other.above_;
  not_a_number_ = other.not_a_number_;
  min_ = other.min_;
  max_ = other.max_;
  sum_ = other.sum_;
  counts_.shallow_copy(counts);
  return *this;
}

histogram::~histogram() = default;

void histogram::process(double v) {
  if (std::isnan(v)) {
    ++not_a_number_;
    return;
  }
  min_ = count() == 0 || v < min_ ? v : min_;
  max_ = count() == 0 || v > max_ ? v : max_;
  sum_ += v;
  if (v < lower_) {
    ++below_;
  } else if (v > upper_) {
    ++above_;
  } else {
    ++inside_;
    if (!counts_.empty()) ++counts_[bin_of(v)];
  }
}

void histogram::clear() {
  below_ = inside_ = above_ = not_a_number_ = 0;
  min_ = max_ = sum_ = 0;
  counts_ = std::uint64_t{0};
}

double histogram::bin_lower(unsigned k) const {
  return k == bins() ? upper_ : lower_ + (upper_ - lower_) * (static_cast<double>(k) / bins());
}

/// The quotient may round to the bin beside the right one; the ends of the bins decide.
unsigned histogram::bin_of(double v) const noexcept {
  const unsigned last = bins() - 1;
  unsigned k = std::min(last, static_cast<unsigned>((v - lower_) / (upper_ - lower_) * bins()));
  while (k > 0 && v < bin_lower(k)) --k;
  while (k < last && v >= bin_lower(k + 1)) ++k;
  return k;
}

}  // namespace qel::misc
